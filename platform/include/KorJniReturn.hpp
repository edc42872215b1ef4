#pragma once

#include "KorWstring.hpp"

#include <jni.h>

#include <cstdint>

class KorJniManager;
class KorRecoverableException;

// The outcome of one JNI call: whether a Java exception was pending, and
// how it is classified (fatal, known, or neither).
class KorJniReturn {
public:
  KorJniReturn(JNIEnv* env, const KorJniManager* manager) noexcept : env_(env), manager_(manager) {}
  KorJniReturn(const KorJniReturn&) = delete;
  KorJniReturn& operator=(const KorJniReturn&) = delete;
  ~KorJniReturn();

  // Describes, clears, logs and classifies a pending exception.
  bool exceptionThrown();
  // Writes the exception to the trace, fills text 1 (its class) and text 2
  // (its message) and asks the manager whether it is a known one.
  void logJavaExceptionToBrokerTrace(jthrowable& throwable);
  // Fills error with the held exception's number, text and inserts. When they cannot
  // be read, sets nested so that the caller adds its generic item.
  void processRootKnownException(KorRecoverableException& error);

  bool fatal() const noexcept { return fatal_; }
  bool known() const noexcept { return known_ == 1; }
  std::int32_t messageNumber() const noexcept { return messageNumber_; }
  const KorWstring& text1() const noexcept { return text1_; }
  const KorWstring& text2() const noexcept { return text2_; }
  bool nested() const noexcept { return nested_; }

  // Set by the manager's checkForKnownExceptions only.
  void recordKnownException(jobject holderGlobalRef, std::int32_t messageNumber) noexcept;

private:
  JNIEnv* env_;
  bool exceptionSeen_ = false;
  bool fatal_ = false;
  const KorJniManager* manager_;
  KorWstring text1_;
  KorWstring text2_;
  std::int32_t messageNumber_ = 0;
  bool nested_ = false;
  jobject knownExceptionHolder_ = nullptr;
  std::int32_t known_ = 0;
};
