#pragma once

#include "KorISRAdapterJniManager.hpp"

#include <KorJniReturn.hpp>
#include <KorLocalJavaStackFrame.hpp>
#include <KorLog.hpp>
#include <KorWstring.hpp>

#include <jni.h>

#include <type_traits>

// Names one Java call in failure messages, and remembers the line of the
// call site, which the raised exception reports.
class KorCallLabel {
public:
  // NOLINTNEXTLINE(google-explicit-constructor): call sites pass a bare literal.
  KorCallLabel(const char* text, int line = __builtin_LINE()) noexcept : text_(text), line_(line) {}
  const char* text() const noexcept { return text_; }
  int line() const noexcept { return line_; }

private:
  const char* text_;
  int line_;
};

// Raises a failed push of function's local frame, whose Java exception is
// pending, as function's own DRX3702 with its "Throwing exception" record.
[[noreturn]] void korRaisePushFailure(JNIEnv* env, const KorJniManager& manager, const char* sourceFile,
                                      int line, const char* function, KorLogToken token);

// One operation's way into Java. It opens the operation's local frame and
// pops it on every way out; every Java call made through it is checked for a
// pending Java exception and, where the call must return an object, for
// null, and each failure leaves as the one native exception it stands for:
// DRX3702 (fatal), the Java side's own number (known), DRX3701 (any other
// exception) or DRX3703 (null). A call whose class or method was never
// resolved fails as DRX3702 without reaching JNI.
class KorJniCallScope {
public:
  // line: the opening operation's own, which a failed push reports.
  KorJniCallScope(const char* function, KorLogToken token, int line = __builtin_LINE());
  KorJniCallScope(const KorJniCallScope&) = delete;
  KorJniCallScope& operator=(const KorJniCallScope&) = delete;

  const KorISRAdapterJniManager& manager() const noexcept { return *manager_; }

  // A failed conversion gives null and leaves its exception pending, and no
  // JNI function is called with it pending: later conversions give null
  // untried, and the next call reports it under that call's label.
  jstring string(const KorWstring& text) {
    if (conversionFailed_) {
      return nullptr;
    }
    jstring string = manager_->KorWstringTojavaString(env_, text);
    conversionFailed_ = string == nullptr;
    unchecked_ = true;
    return string;
  }
  // Reads string into out; a null string is the empty text, and a failed
  // read raises under label and leaves out as it was. The conversion's own
  // exception check is the outcome check of a read that succeeds. Reading
  // into the caller's text spares a temporary and its move.
  void text(const KorCallLabel& label, jobject string, KorWstring& out) {
    if (!manager_->javaStringToKorWstring(env_, static_cast<jstring>(string), out)) {
      check(label);
    }
  }
  KorWstring text(const KorCallLabel& label, jobject string) {
    KorWstring result;
    text(label, string, result);
    return result;
  }

  // An instance method returning void, bool or jobject.
  template <typename R, typename... Args>
  R call(const KorCallLabel& label, jobject receiver, jmethodID method, Args... args) {
    prepare(label, receiver != nullptr && method != nullptr);
    return finish<R>(label, [&] {
      if constexpr (std::is_void_v<R>) {
        env_->CallVoidMethod(receiver, method, args...);
      } else if constexpr (std::is_same_v<R, bool>) {
        return env_->CallBooleanMethod(receiver, method, args...) != JNI_FALSE;
      } else {
        static_assert(std::is_same_v<R, jobject>, "void, bool or jobject");
        return env_->CallObjectMethod(receiver, method, args...);
      }
    });
  }

  template <typename R, typename... Args>
  R callStatic(const KorCallLabel& label, jclass cls, jmethodID method, Args... args) {
    prepare(label, cls != nullptr && method != nullptr);
    return finish<R>(label, [&] {
      if constexpr (std::is_void_v<R>) {
        env_->CallStaticVoidMethod(cls, method, args...);
      } else {
        static_assert(std::is_same_v<R, jobject>, "void or jobject");
        return env_->CallStaticObjectMethod(cls, method, args...);
      }
    });
  }

  // A new Java object; null is an error.
  template <typename... Args>
  jobject construct(const KorCallLabel& label, jclass cls, jmethodID constructor, Args... args) {
    prepare(label, cls != nullptr && constructor != nullptr);
    return nonNull(label, finish<jobject>(label, [&] { return env_->NewObject(cls, constructor, args...); }));
  }

  // A text read from receiver: null raises DRX3703, or reads as empty.
  template <typename... Args>
  void requiredText(KorWstring& out, const KorCallLabel& label, jobject receiver, jmethodID method,
                    Args... args) {
    text(label, nonNull(label, call<jobject>(label, receiver, method, args...)), out);
  }
  template <typename... Args>
  KorWstring optionalText(const KorCallLabel& label, jobject receiver, jmethodID method, Args... args) {
    return text(label, call<jobject>(label, receiver, method, args...));
  }
  template <typename... Args>
  void optionalText(KorWstring& out, const KorCallLabel& label, jobject receiver, jmethodID method,
                    Args... args) {
    text(label, call<jobject>(label, receiver, method, args...), out);
  }

  jobject nonNull(const KorCallLabel& label, jobject result) {
    if (result == nullptr) {
      raiseNull(label);
    }
    return result;
  }

  // A null array has no elements.
  jsize length(jobject array) const {
    return array != nullptr ? env_->GetArrayLength(static_cast<jobjectArray>(array)) : 0;
  }
  jobject element(const KorCallLabel& label, jobject array, jsize index) {
    return finish<jobject>(
        label, [&] { return env_->GetObjectArrayElement(static_cast<jobjectArray>(array), index); });
  }

  // A global reference to object; failing to make one is an error.
  jobject globalRef(const KorCallLabel& label, jobject object) {
    return nonNull(label, finish<jobject>(label, [&] { return env_->NewGlobalRef(object); }));
  }
  void deleteGlobalRef(const KorCallLabel& label, jobject global) {
    finish<void>(label, [&] { env_->DeleteGlobalRef(global); });
  }

private:
  void prepare(const KorCallLabel& label, bool resolved) {
    if (!resolved) {
      raiseUnresolved(label);
    }
    // Every call is checked after it returns, so only a conversion since
    // then, or what was pending when the scope opened, needs a check here.
    if (unchecked_) {
      check(label);
    }
  }

  template <typename R, typename Call> R finish(const KorCallLabel& label, Call&& javaCall) {
    if constexpr (std::is_void_v<R>) {
      javaCall();
      check(label);
    } else {
      R result = javaCall();
      check(label);
      return result;
    }
  }

  // The outcome check. Testing for a pending exception before building the
  // outcome object gives the same outcome and keeps the common path to one
  // JNI call.
  void check(const KorCallLabel& label) {
    if (env_->ExceptionCheck()) {
      KorJniReturn outcome(env_, manager_);
      outcome.exceptionThrown();
      raiseFailure(label, outcome);
    }
    unchecked_ = false;
  }

  [[noreturn]] void raiseFailure(const KorCallLabel& label, KorJniReturn& outcome) const;
  [[noreturn]] void raiseNull(const KorCallLabel& label) const;
  [[noreturn]] void raiseUnresolved(const KorCallLabel& label) const;

  const char* function_;
  KorLogToken token_;
  // Before the frame: building the manager must not meet a failed push's
  // pending exception.
  const KorISRAdapterJniManager* manager_;
  KorLocalJavaStackFrame frame_;
  JNIEnv* env_;
  bool unchecked_ = true;
  bool conversionFailed_ = false;
};
