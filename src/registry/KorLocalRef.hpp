#pragma once

#include <jni.h>

// An owning local reference, for a loop that must not let references pile
// up in the frame. A plain jobject is always borrowed.
template <typename T = jobject> class KorLocalRef {
public:
  KorLocalRef(JNIEnv* env, T ref) noexcept : env_(env), ref_(ref) {}
  KorLocalRef(const KorLocalRef&) = delete;
  KorLocalRef& operator=(const KorLocalRef&) = delete;
  ~KorLocalRef() {
    if (ref_ != nullptr) {
      env_->DeleteLocalRef(ref_);
    }
  }

  T get() const noexcept { return ref_; }
  explicit operator bool() const noexcept { return ref_ != nullptr; }

private:
  JNIEnv* env_;
  T ref_;
};
