#pragma once

#include <jni.h>

// The stand-in's owning local reference, for its own code and for hosts and
// tools that call JNI themselves: code that runs outside a local frame or in
// a loop that must not let references pile up. The library, built apart from
// the platform, has its own. A plain jobject is always borrowed.
template <typename T = jobject> class KorJniLocalRef {
public:
  KorJniLocalRef(JNIEnv* env, T ref) noexcept : env_(env), ref_(ref) {}
  KorJniLocalRef(const KorJniLocalRef&) = delete;
  KorJniLocalRef& operator=(const KorJniLocalRef&) = delete;
  ~KorJniLocalRef() {
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
