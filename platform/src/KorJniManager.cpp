#include "KorJniManager.hpp"

#include "KorException.hpp"
#include "KorJNISetup.hpp"
#include "KorJVM.hpp"
#include "KorJniRef.hpp"
#include "KorLog.hpp"
#include "KorWstringText.hpp"
#include "KorWstringWriter.hpp"

#include <climits>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace {

std::mutex defaultsLock;
std::string defaultFatalClassName = "java/lang/Error";
bool defaultDebugPrint = false;

const char* const defaultElementClassName = "java/lang/Throwable";

[[noreturn]] void raiseMissing(JNIEnv* env, int line, const std::string& what) {
  env->ExceptionClear();
  KorFatalException error("platform/KorJniManager", line, "KorJniManager::KorJniManager",
                          KorLog::iDefaultLogSource, korMessageNumber(3702), 0);
  error << KorWstringText::fromUtf8("Fatal Error Making JNI Call: FindClass") << "FindClass"
        << KorWstringText::fromUtf8(what);
  error.throwThis();
}

jclass globalClass(JNIEnv* env, const std::string& name) {
  KorJniLocalRef<jclass> local(env, env->FindClass(name.c_str()));
  if (!local) {
    raiseMissing(env, __LINE__, name);
  }
  auto global = static_cast<jclass>(env->NewGlobalRef(local.get()));
  if (global == nullptr) {
    raiseMissing(env, __LINE__, name);
  }
  return global;
}

jmethodID method(JNIEnv* env, jclass cls, const char* name, const char* signature) {
  jmethodID id = env->GetMethodID(cls, name, signature);
  if (id == nullptr) {
    raiseMissing(env, __LINE__, name);
  }
  return id;
}

// Fills text, which holds nothing, with string's units; a failed read leaves
// it holding nothing. Inline at each use: a listed text pays no call for it.
[[gnu::always_inline]] inline bool readInto(JNIEnv* env, jstring string, KorWstring& text) {
  const jsize length = env->GetStringLength(string);
  env->GetStringRegion(string, 0, length,
                       reinterpret_cast<jchar*>(KorWstringWriter::resizeForOverwrite(text, length)));
  // The buffer was sized, not filled: a failed read must not hand it out.
  if (env->ExceptionCheck()) {
    text = KorWstring();
    return false;
  }
  return true;
}

} // namespace

KorJniManager::KorJniManager(const char* fatalClassName, const char* elementClassName) {
  JNIEnv* env = KorJVM::getEnvironment();
  std::string fatalName;
  {
    std::lock_guard<std::mutex> guard(defaultsLock);
    fatalName = fatalClassName != nullptr ? fatalClassName : defaultFatalClassName;
    debugPrint_ = defaultDebugPrint;
  }
  fatalClass_ = globalClass(env, fatalName);
  elementClass_ = globalClass(env, elementClassName != nullptr ? elementClassName : defaultElementClassName);

  KorJniLocalRef<jclass> classClass(env, env->FindClass("java/lang/Class"));
  KorJniLocalRef<jclass> throwableClass(env, env->FindClass("java/lang/Throwable"));
  if (!classClass || !throwableClass) {
    raiseMissing(env, __LINE__, "java/lang/Class");
  }
  classGetName_ = method(env, classClass.get(), "getName", "()Ljava/lang/String;");
  throwableGetMessage_ = method(env, throwableClass.get(), "getMessage", "()Ljava/lang/String;");
}

// The manager lives as long as the process; its class references with it.
KorJniManager::~KorJniManager() = default;

bool KorJniManager::checkForKnownExceptions(JNIEnv*, jthrowable, KorJniReturn&) const {
  return false;
}

bool KorJniManager::processKnownException(JNIEnv*, jobject, int&, KorWstring&, std::vector<KorWstring>&,
                                          bool&) const {
  return false;
}

jstring KorJniManager::KorWstringTojavaString(JNIEnv* env, const KorWstring& text) const {
  static const jchar noUnits = 0;
  if (text.length() > static_cast<std::size_t>(INT_MAX)) {
    throw std::length_error("text too long for a Java string");
  }
  const auto* units = text.empty() ? &noUnits : reinterpret_cast<const jchar*>(text.data());
  return env->NewString(units, static_cast<jsize>(text.length()));
}

KorWstring KorJniManager::javaStringToKorWstringInternal(JNIEnv* env, jstring string) const {
  KorWstring text;
  javaStringToKorWstring(env, string, text);
  return text;
}

bool KorJniManager::javaStringToKorWstring(JNIEnv* env, jstring string, KorWstring& text) const {
  // A failed read leaves a text that holds nothing as it was, so such a text
  // (a new list element or record field) is read into without a temporary.
  if (KorWstringWriter::holdsNothing(text)) {
    return string == nullptr || readInto(env, string, text);
  }
  KorWstring read;
  if (string != nullptr && !readInto(env, string, read)) {
    return false;
  }
  text = std::move(read);
  return true;
}

void KorJNISetup::setFatalClassName(const std::string& className) {
  std::lock_guard<std::mutex> guard(defaultsLock);
  defaultFatalClassName = className;
}

void KorJNISetup::setDebugPrint(bool on) {
  std::lock_guard<std::mutex> guard(defaultsLock);
  defaultDebugPrint = on;
}
