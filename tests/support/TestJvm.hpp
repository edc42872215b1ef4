#pragma once

#include <gtest/gtest.h>
#include <jni.h>

#include <string>

// The test process's JVM, made on first use under -Xcheck:jni with the test's class path;
// its JNI function table is interposed to count and to fail calls.
class TestJvm {
public:
  static JNIEnv* env();
  // JNI warnings printed so far, but for "exceeds capacity", which listings cause by design.
  static int unexpectedJniWarnings();
  // PushLocalFrame minus PopLocalFrame calls on this thread.
  static int localFrameDepth();
  // Global references made through JNI and not deleted yet, on all threads.
  static long liveGlobalReferences();
  // The next NewObject on this thread returns null with no exception, as only a broken JVM does.
  static void failNextNewObject();
  // Counts this thread's failable JNI calls (allocations, method calls, array and string access, frame
  // pushes), fails the nth as the JVM would, with an exceptionClass pending (NewGlobalRef: null only).
  static void failNthCall(int n, const char* exceptionClass);
  static int stopFailingCalls(); // answers the calls counted
  static long faultsInjected();
  // A static Java call for test setup; a Java exception fails the test.
  static jobject callStatic(const char* className, const char* method, const char* signature, ...);
  static jstring string(const std::string& utf8);
  static std::string utf8(jobject string);
  static void clearReferenceRegistry();
};

// A test that leaves no Java exception pending, no JNI warning and the local frame depth as it found it.
class JvmTest : public ::testing::Test {
protected:
  void SetUp() override {
    env = TestJvm::env();
    warnings_ = TestJvm::unexpectedJniWarnings();
    frames_ = TestJvm::localFrameDepth();
  }
  void TearDown() override {
    EXPECT_FALSE(env->ExceptionCheck()) << "a Java exception was left pending";
    EXPECT_EQ(TestJvm::localFrameDepth(), frames_) << "local frames pushed and popped do not match";
    EXPECT_EQ(TestJvm::unexpectedJniWarnings(), warnings_) << "the JVM printed JNI warnings";
  }

  JNIEnv* env = nullptr;

private:
  int warnings_ = 0;
  int frames_ = 0;
};
