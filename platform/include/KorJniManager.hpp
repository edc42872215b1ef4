#pragma once

#include "KorWstring.hpp"

#include <jni.h>

#include <vector>

class KorJniReturn;

// Base of a component's JNI manager: the classes that sort Java exceptions
// and the text conversions.
class KorJniManager {
public:
  // Null names take the process defaults: the fatal class java/lang/Error
  // (or what the host chose) and the element class
  // java/lang/Throwable. Throws KorFatalException when a class is missing.
  KorJniManager(const char* fatalClassName, const char* elementClassName);
  KorJniManager(const KorJniManager&) = delete;
  KorJniManager& operator=(const KorJniManager&) = delete;
  virtual ~KorJniManager();

  // Slot order matters to hosts built separately: unpack, then record.
  // Unpacks a known exception; the base knows none.
  virtual bool processKnownException(JNIEnv* env, jobject exception, int& messageNumber, KorWstring& text,
                                     std::vector<KorWstring>& inserts, bool& nested) const;
  // Records a known exception in the outcome; the base knows none.
  virtual bool checkForKnownExceptions(JNIEnv* env, jthrowable throwable, KorJniReturn& outcome) const;

  // A new local reference; null (with the JVM's exception pending) when the
  // JVM cannot allocate it.
  jstring KorWstringTojavaString(JNIEnv* env, const KorWstring& text) const;
  // A null string gives the empty text, and so does a failed read, which
  // leaves its Java exception pending.
  KorWstring javaStringToKorWstringInternal(JNIEnv* env, jstring string) const;
  // Sets text only when the read succeeds; false leaves text as it was and
  // the Java exception pending.
  bool javaStringToKorWstring(JNIEnv* env, jstring string, KorWstring& text) const;

  jclass fatalClass() const noexcept { return fatalClass_; }
  jclass elementClass() const noexcept { return elementClass_; }
  bool debugPrint() const noexcept { return debugPrint_; }

private:
  friend class KorJniReturn;

  jclass fatalClass_ = nullptr;
  jclass elementClass_ = nullptr;
  bool debugPrint_ = false;
  // What the outcome object reads to describe any exception.
  jmethodID classGetName_ = nullptr;
  jmethodID throwableGetMessage_ = nullptr;
};
