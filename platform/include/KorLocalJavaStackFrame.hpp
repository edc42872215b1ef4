#pragma once

#include <jni.h>

// One local reference frame of capacity 10 on the calling thread, popped on
// every way out of the scope.
class KorLocalJavaStackFrame {
public:
  // Throws KorFatalException when the frame cannot be pushed; nothing is
  // popped then.
  KorLocalJavaStackFrame();
  KorLocalJavaStackFrame(const KorLocalJavaStackFrame&) = delete;
  KorLocalJavaStackFrame& operator=(const KorLocalJavaStackFrame&) = delete;
  ~KorLocalJavaStackFrame() { env_->PopLocalFrame(nullptr); }

  JNIEnv* env() const noexcept { return env_; }

private:
  JNIEnv* env_;
};
