#include "KorISRAdapterJniManager.hpp"

#include "KorJniCallScope.hpp"
#include "KorMutex.hpp"
#include "KorTracedRaise.hpp"

#include "KorLocalRef.hpp"
#include <KorJNI.hpp>
#include <KorJVM.hpp>
#include <KorJniReturn.hpp>
#include <KorLocalJavaStackFrame.hpp>
#include <KorLog.hpp>

#include <atomic>
#include <cstdio>

namespace {

KorMutex initLock;
std::atomic<KorISRAdapterJniManager*> singleCSJniManager{nullptr};

const char* const sourceFile = "src/registry/KorISRAdapterJniManager";
const char* const checkLabel = "KorISRAdapterJniManager::checkForKnownExceptions";
const char* const processLabel = "KorISRAdapterJniManager::processKnownException";

std::int32_t lowWord(jlong value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

// Describes and clears a pending exception; true when there was one.
bool clearedException(JNIEnv* env) {
  if (!env->ExceptionCheck()) {
    return false;
  }
  env->ExceptionDescribe();
  env->ExceptionClear();
  return true;
}

} // namespace

KorISRAdapterJniManager* KorISRAdapterJniManager::instance() {
  KorISRAdapterJniManager* manager = singleCSJniManager.load(std::memory_order_acquire);
  if (manager != nullptr) {
    return manager;
  }
  KorMutexLock lock(initLock);
  manager = singleCSJniManager.load(std::memory_order_relaxed);
  if (manager == nullptr) {
    manager = new KorISRAdapterJniManager();
    singleCSJniManager.store(manager, std::memory_order_release);
  }
  return manager;
}

KorISRAdapterJniManager::KorISRAdapterJniManager() : KorJniManager(nullptr, nullptr) {
  initialise();
}

// The singleton lives as long as the process; so do its class references.
KorISRAdapterJniManager::~KorISRAdapterJniManager() = default;

void KorISRAdapterJniManager::initialise() {
  const char* const function = "KorISRAdapterJniManager::initialise";
  KorLogToken token = KorLog::iEffectiveLogFilter > 2 ? KorLog::entry(function) : 0;

  // A class without method rows gets null, not an empty table.
  auto rowsOrNull = [](const KorJNI::MethodInfo* rows) {
    return rows->methodSlot != nullptr ? rows : nullptr;
  };
  // clang-format off
#define KOR_JAVA_CLASS(slots, name) const KorJNI::MethodInfo slots##Methods[] = {
#define KOR_JAVA_METHOD(slots, slot, isStatic, name, signature) {&(slots).slot, isStatic, name, signature},
#define KOR_JAVA_END {}};
#include "KorJavaTable.def"
#undef KOR_JAVA_CLASS
#undef KOR_JAVA_METHOD
#undef KOR_JAVA_END
#define KOR_JAVA_CLASS(slots, name) {&(slots).cls, name, rowsOrNull(slots##Methods), nullptr, nullptr, nullptr},
#define KOR_JAVA_METHOD(slots, slot, isStatic, name, signature)
#define KOR_JAVA_END
  const KorJNI::ClassInfo classes[] = {
#include "KorJavaTable.def"
      {}};
#undef KOR_JAVA_CLASS
#undef KOR_JAVA_METHOD
#undef KOR_JAVA_END
  // clang-format on

  try {
    KorJNI::findClassesAndMethodsUsingISRClassLoader(classes, KorJVM::getEnvironment());
    if (debugPrint()) {
      std::fputs("KorISRAdapterJniManager::initialise : findClassesAndMethods OK\n", stdout);
      std::fflush(stdout);
    }
  } catch (const KorJNI::Failure& failure) {
    if (KorLog::iEffectiveLogFilter > 3) {
      if (failure.kind == 0) {
        KorLog::debugTrace(function, token, {"Unable to locate Java class", failure.className});
      } else {
        KorLog::debugTrace(function, token,
                           {"Unable to locate Java method or field", failure.memberName, failure.className});
      }
    }
  }
  if (KorLog::iEffectiveLogFilter > 2) {
    KorLog::exit(function, token);
  }
}

bool KorISRAdapterJniManager::checkForKnownExceptions(JNIEnv* env, jthrowable throwable,
                                                      KorJniReturn& outcome) const {
  KorLogToken token = KorLog::iEffectiveLogFilter > 2 ? KorLog::entry(checkLabel) : 0;
  jclass known = lxRecoverableException_.cls;
  if (known == nullptr || !env->IsInstanceOf(throwable, known)) {
    return false;
  }
  auto notKnown = [env, token](const char* note) {
    clearedException(env);
    if (KorLog::iEffectiveLogFilter > 2) {
      KorLog::exit(checkLabel, token, {note});
    }
    return false;
  };
  // LxException's rows resolve before LxRecoverableException's.
  jmethodID getNumber = lxException_.getNativeMessageNumber;
  // The holder array is a local of the calling operation's frame.
  jobjectArray holder = env->NewObjectArray(1, elementClass(), nullptr);
  if (env->ExceptionCheck() || holder == nullptr) {
    return notKnown("");
  }
  env->SetObjectArrayElement(holder, 0, throwable);
  if (env->ExceptionCheck()) {
    return notKnown("");
  }
  jlong number = env->CallLongMethod(throwable, getNumber);
  if (env->ExceptionCheck()) {
    return notKnown("");
  }
  jobject global = env->NewGlobalRef(holder);
  if (global == nullptr || env->ExceptionCheck()) {
    return notKnown("KorISRAdapterJniManager could not make the global reference to the known exception");
  }
  outcome.recordKnownException(global, lowWord(number));
  return true;
}

bool KorISRAdapterJniManager::processKnownException(JNIEnv* env, jobject exception, int& messageNumber,
                                                    KorWstring& text, std::vector<KorWstring>& inserts,
                                                    bool& /*nested*/) const {
  KorLogToken token = KorLog::iEffectiveLogFilter > 2 ? KorLog::entry(processLabel) : 0;
  KorLocalJavaStackFrame frame;
  if (!frame.pushed()) {
    korRaisePushFailure(env, *this, sourceFile, __LINE__, processLabel, token);
  }
  auto unpackFailed = [env, token](const char* note) {
    clearedException(env);
    if (KorLog::iEffectiveLogFilter > 2) {
      KorLog::exit(processLabel, token, {note});
    }
    return false;
  };
  auto insertFailed = [token](const char* note, int line) {
    KorFatalException error(sourceFile, line, processLabel, KorLog::iDefaultLogSource, korMessageNumber(4374),
                            token);
    error << note;
    korTracedRaise(error);
  };
  const LxExceptionClass& lx = lxException_;
  if (exception == nullptr) {
    return unpackFailed("Known Exception was NULL");
  }
  // The lookup resolves LxException's rows before LxRecoverableException's
  // and Object's after it, so Object's row stands for all three.
  if (object_.toString == nullptr) {
    return unpackFailed("Failed to get MessageNumber");
  }
  jlong number = env->CallLongMethod(exception, lx.getNativeMessageNumber);
  if (env->ExceptionCheck()) {
    return unpackFailed("Failed to get MessageNumber");
  }
  messageNumber = lowWord(number);

  auto traceText = static_cast<jstring>(env->CallObjectMethod(exception, lx.getTraceText));
  if (env->ExceptionCheck()) {
    return unpackFailed("Failed to getDeveloperText");
  }
  if (!javaStringToKorWstring(env, traceText, text)) {
    return unpackFailed("Failed to getDeveloperText");
  }

  auto array = static_cast<jobjectArray>(env->CallObjectMethod(exception, lx.getInserts));
  if (env->ExceptionCheck()) {
    return unpackFailed("Failed to get Insert Count");
  }
  jsize count = array != nullptr ? env->GetArrayLength(array) : 0;
  for (jsize i = 0; i < count; ++i) {
    // Each insert is released at once: an exception may carry many.
    KorLocalRef<> element(env, env->GetObjectArrayElement(array, i));
    if (clearedException(env)) {
      insertFailed("GetObjectArrayElement() failed", __LINE__);
    }
    if (!element) {
      continue;
    }
    KorLocalRef<jstring> rendered(
        env, static_cast<jstring>(env->CallObjectMethod(element.get(), object_.toString)));
    if (clearedException(env)) {
      insertFailed("CallObjectMethod() failed", __LINE__);
    }
    KorWstring insert;
    if (!javaStringToKorWstring(env, rendered.get(), insert)) {
      clearedException(env);
      insertFailed("CallObjectMethod() failed", __LINE__);
    }
    inserts.push_back(std::move(insert));
  }
  if (KorLog::iEffectiveLogFilter > 2) {
    KorLog::exit(processLabel, token);
  }
  return true;
}
