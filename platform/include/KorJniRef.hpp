#pragma once

#include <jni.h>

#include <utility>

// Owning JNI references. A plain jobject is always borrowed; these types own
// the reference they hold and delete it on every way out of their scope.

// A local reference, for code that runs outside a local frame or in a loop
// that must not let references pile up.
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

// A global reference; valid on every thread until deleted.
template <typename T = jobject> class KorGlobalRef {
public:
  KorGlobalRef() noexcept = default;
  // Null, with the JVM's exception pending, when it cannot be made.
  KorGlobalRef(JNIEnv* env, T local) noexcept
      : env_(env), ref_(local != nullptr ? static_cast<T>(env->NewGlobalRef(local)) : nullptr) {}
  KorGlobalRef(const KorGlobalRef&) = delete;
  KorGlobalRef& operator=(const KorGlobalRef&) = delete;
  KorGlobalRef(KorGlobalRef&& other) noexcept : env_(other.env_), ref_(std::exchange(other.ref_, nullptr)) {}
  KorGlobalRef& operator=(KorGlobalRef&& other) noexcept {
    std::swap(env_, other.env_);
    std::swap(ref_, other.ref_);
    return *this;
  }
  ~KorGlobalRef() { reset(); }

  void reset() noexcept {
    if (ref_ != nullptr) {
      env_->DeleteGlobalRef(ref_);
      ref_ = nullptr;
    }
  }

  T get() const noexcept { return ref_; }
  explicit operator bool() const noexcept { return ref_ != nullptr; }

private:
  JNIEnv* env_ = nullptr;
  T ref_ = nullptr;
};
