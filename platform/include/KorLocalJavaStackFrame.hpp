#pragma once

#include <jni.h>

// One local reference frame of capacity 10 on the calling thread, popped on
// every way out of the scope.
class KorLocalJavaStackFrame {
public:
  KorLocalJavaStackFrame();
  KorLocalJavaStackFrame(const KorLocalJavaStackFrame&) = delete;
  KorLocalJavaStackFrame& operator=(const KorLocalJavaStackFrame&) = delete;
  ~KorLocalJavaStackFrame() {
    if (pushed_) {
      env_->PopLocalFrame(nullptr);
    }
  }

  JNIEnv* env() const noexcept { return env_; }
  // False when the push failed: its Java exception is pending and the
  // caller reports it as its own failure; nothing is popped then.
  bool pushed() const noexcept { return pushed_; }

private:
  JNIEnv* env_;
  bool pushed_;
};
