#pragma once

#include <gtest/gtest.h>
#include <jni.h>

#include <atomic>
#include <string>

// The test process's JVM, made on first use under -Xcheck:jni with the test's class path;
// its JNI function table is interposed to count and to fail calls.
class TestJvm {
public:
  static JNIEnv* env();
  // JNI warnings printed so far, but for "exceeds capacity", which listings cause by design.
  static int unexpectedJniWarnings() { return iWarnings; }
  // PushLocalFrame minus PopLocalFrame calls on this thread.
  static int localFrameDepth() { return iFrameDepth; }
  // Global references made through JNI and not deleted yet, on all threads.
  static long liveGlobalReferences() { return iLiveGlobals; }
  // The next NewObject on this thread returns null with no exception, as only a broken JVM does.
  static void failNextNewObject() { iNullNextNewObject = true; }
  // Counts this thread's failable JNI calls (allocations, method calls, array and string access, frame
  // pushes), fails the nth as the JVM would, with an exceptionClass pending (NewGlobalRef: null only).
  static void failNthCall(int n, const char* exceptionClass) {
    iFaultClass = exceptionClass;
    iCallsCounted = 0;
    iFailAt = n;
  }
  static int stopFailingCalls() { return iFailAt = 0, iCallsCounted; } // answers the calls counted
  // A static Java call for test setup; a Java exception fails the test.
  static jobject callStatic(const char* className, const char* method, const char* signature, ...);
  static jstring string(const std::string& utf8);
  static std::string utf8(jobject string);
  static void clearReferenceRegistry();

  // What the interposed JNI functions count, and the call to fail (iFailAt, 0 for none).
  static inline std::atomic<int> iWarnings{0};
  static inline std::atomic<long> iLiveGlobals{0};
  static inline thread_local bool iNullNextNewObject = false;
  static inline thread_local int iFrameDepth = 0, iFailAt = 0, iCallsCounted = 0;
  static inline thread_local const char* iFaultClass = nullptr;
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
