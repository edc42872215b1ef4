#pragma once

#include <gtest/gtest.h>
#include <jni.h>

#include <string>

// The test process's JVM: created once, on first use, under -Xcheck:jni,
// with the class path the test executable was built with. Everything the
// JVM prints passes through a hook that counts JNI warnings.
class TestJvm {
public:
  static JNIEnv* env();

  // JNI warnings so far, except "exceeds capacity" ones, which the listings
  // cause by design.
  static int unexpectedJniWarnings();

  // PushLocalFrame minus PopLocalFrame calls made on this thread.
  static int localFrameDepth();

  // Global references made through JNI and not deleted yet, on all threads;
  // unlike the heap roots, the JVM's own do not count.
  static long liveGlobalReferences();

  // Makes the next NewObject call on this thread return null with no
  // exception pending, as no real JVM does but a broken one could.
  static void failNextNewObject();

  // From now on counts this thread's calls of the JNI functions that can
  // fail (allocations, method calls, array and string access, frame pushes)
  // and makes the nth of them fail as the JVM would: null, 0 or JNI_ENOMEM,
  // with an exception of exceptionClass pending (NewGlobalRef: null only).
  static void failNthCall(int n, const char* exceptionClass);
  // Stops counting; returns the calls counted since failNthCall.
  static int stopFailingCalls();
  // Faults injected so far in this process.
  static long faultsInjected();

  // A static Java call for test setup; the class is found by the system
  // class loader. Any Java exception fails the test.
  static jobject callStatic(const char* className, const char* method, const char* signature, ...);
  static jstring string(const std::string& utf8);

  // Empties the reference Java registry, for a test that starts from nothing.
  static void clearReferenceRegistry();
  static std::string utf8(jobject string);
};

// Base of the tests that use the JVM: each test must leave no Java
// exception pending, no unexpected JNI warning and the thread's local frame
// depth where it found it.
class JvmTest : public ::testing::Test {
protected:
  void SetUp() override;
  void TearDown() override;

  JNIEnv* env = nullptr;

private:
  int warningsBefore_ = 0;
  int framesBefore_ = 0;
};
