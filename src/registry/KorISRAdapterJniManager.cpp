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

  auto& a = isrAdapter_;
  const KorJNI::MethodInfo isrAdapterMethods[] = {
      {&a.getInstance, 1, "getInstance", "()Lcom/vantor/broker/isr/ISRAdapter;"},
      {&a.createPolicy, 0, "createPolicy", "(Lcom/vantor/broker/isr/ISRPolicy;)V"},
      {&a.policyExists, 0, "policyExists", "(Lcom/vantor/broker/isr/ISRPolicy;)Z"},
      {&a.getPolicy, 0, "getPolicy", "(Lcom/vantor/broker/isr/ISRPolicy;)V"},
      {&a.getPoliciesWithoutDoc, 0, "getPoliciesWithoutDoc",
       "(Ljava/lang/String;)[Lcom/vantor/broker/isr/ISRPolicy;"},
      {&a.deletePolicy, 0, "deletePolicy", "(Lcom/vantor/broker/isr/ISRPolicy;)V"},
      {&a.updatePolicy, 0, "updatePolicy", "(Lcom/vantor/broker/isr/ISRPolicy;)V"},
      {&a.setRepositoryDetails, 0, "setRepositoryDetails",
       "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;ZLjava/lang/String;Ljava/lang/String;I)V"},
      {&a.getPolicyNames, 0, "getPolicyNames", "(Ljava/lang/String;)Ljava/lang/String;"},
      {&a.getServicesWithoutDoc, 0, "getServicesWithoutDoc", "()[Lcom/vantor/broker/isr/ISRService;"},
      {&a.getService, 0, "getService", "(Ljava/lang/String;)Lcom/vantor/broker/isr/ISRService;"},
      {&a.deleteService, 0, "deleteService", "(Ljava/lang/String;)V"},
      {&a.serviceExists, 0, "serviceExists", "(Lcom/vantor/broker/isr/ISRService;)Z"},
      {&a.createService, 0, "createService", "(Lcom/vantor/broker/isr/ISRService;)V"},
      {&a.createBTD, 0, "createBTD", "(Lcom/vantor/broker/isr/BTDDocument;)V"},
      {&a.updateBTD, 0, "updateBTD", "(Lcom/vantor/broker/isr/BTDDocument;)V"},
      {&a.deleteBTD, 0, "deleteBTD", "(Ljava/lang/String;)V"},
      {&a.getBTD, 0, "getBTD", "(Lcom/vantor/broker/isr/BTDDocument;)V"},
      {&a.getBTDs, 0, "getBTDs", "()[Lcom/vantor/broker/isr/BTDDocument;"},
      {&a.btdExists, 0, "btdExists", "(Ljava/lang/String;)Z"},
      {}};
  auto& p = isrPolicy_;
  const KorJNI::MethodInfo isrPolicyMethods[] = {
      {&p.init, 0, "<init>", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"},
      {&p.getName, 0, "getName", "()Ljava/lang/String;"},
      {&p.getUri, 0, "getUri", "()Ljava/lang/String;"},
      {&p.getDocument, 0, "getDocument", "()Ljava/lang/String;"},
      {&p.validateContent, 0, "validateContent", "()V"},
      {}};
  auto& b = btdDocument_;
  const KorJNI::MethodInfo btdDocumentMethods[] = {
      {&b.init, 0, "<init>", "(Ljava/lang/String;Ljava/lang/String;)V"},
      {&b.getName, 0, "getName", "()Ljava/lang/String;"},
      {&b.getUri, 0, "getUri", "()Ljava/lang/String;"},
      {&b.getContent, 0, "getContent", "()Ljava/lang/String;"},
      {}};
  auto& s = isrService_;
  const KorJNI::MethodInfo isrServiceMethods[] = {
      {&s.initWithDocument, 0, "<init>", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"},
      {&s.init, 0, "<init>", "(Ljava/lang/String;Ljava/lang/String;)V"},
      {&s.getUri, 0, "getUri", "()Ljava/lang/String;"},
      {&s.getDocument, 0, "getDocument", "()Ljava/lang/String;"},
      {&s.getName, 0, "getName", "()Ljava/lang/String;"},
      {&s.getNamespace, 0, "getNamespace", "()Ljava/lang/String;"},
      {}};
  auto& m = isrMigration_;
  const KorJNI::MethodInfo isrMigrationMethods[] = {
      {&m.getInstance, 1, "getInstance", "()Lcom/vantor/broker/isr/migration/ISRMigration;"},
      {&m.migrateISR, 0, "migrateISR", "()Z"},
      {}};
  auto& x = lxException_;
  const KorJNI::MethodInfo lxExceptionMethods[] = {
      {&x.getFileName, 0, "getFileName", "()Ljava/lang/String;"},
      {&x.getLineNumber, 0, "getLineNumber", "()I"},
      {&x.getMethodName, 0, "getMethodName", "()Ljava/lang/String;"},
      {&x.getNativeMessageNumber, 0, "getNativeMessageNumber", "()J"},
      {&x.getTraceText, 0, "getTraceText", "()Ljava/lang/String;"},
      {&x.getInserts, 0, "getInserts", "()[Ljava/lang/Object;"},
      {&x.getNestedExceptions, 0, "getNestedExceptions", "()[Lcom/vantor/broker/plugin/LxException;"},
      {&x.getNativeExceptionHandle, 0, "getNativeExceptionHandle", "()J"},
      {&x.toLogString, 0, "toLogString", "(Ljava/lang/Object;)Ljava/lang/String;"},
      {&x.isInternal, 0, "isInternal", "()Z"},
      {&x.getMessageSource, 0, "getMessageSource", "()Ljava/lang/String;"},
      {&x.getMessageKey, 0, "getMessageKey", "()Ljava/lang/String;"},
      {&x.getClassName, 0, "getClassName", "()Ljava/lang/String;"},
      {}};
  const KorJNI::MethodInfo objectMethods[] = {{&object_.toString, 0, "toString", "()Ljava/lang/String;"}, {}};
  const KorJNI::MethodInfo messageFlowProxyMethods[] = {
      {&messageFlowProxy_.stopMessageFlow, 1, "stopMessageFlow",
       "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"},
      {}};
  const KorJNI::ClassInfo classes[] = {
      {&a.cls, "com/vantor/broker/isr/ISRAdapter", isrAdapterMethods, nullptr, nullptr, nullptr},
      {&p.cls, "com/vantor/broker/isr/ISRPolicy", isrPolicyMethods, nullptr, nullptr, nullptr},
      {&b.cls, "com/vantor/broker/isr/BTDDocument", btdDocumentMethods, nullptr, nullptr, nullptr},
      {&s.cls, "com/vantor/broker/isr/ISRService", isrServiceMethods, nullptr, nullptr, nullptr},
      {&m.cls, "com/vantor/broker/isr/migration/ISRMigration", isrMigrationMethods, nullptr, nullptr,
       nullptr},
      {&x.cls, "com/vantor/broker/plugin/LxException", lxExceptionMethods, nullptr, nullptr, nullptr},
      {&lxRecoverableException_.cls, "com/vantor/broker/plugin/LxRecoverableException", nullptr, nullptr,
       nullptr, nullptr},
      {&object_.cls, "java/lang/Object", objectMethods, nullptr, nullptr, nullptr},
      {&messageFlowProxy_.cls, "com/vantor/broker/config/proxy/MessageFlowProxy", messageFlowProxyMethods,
       nullptr, nullptr, nullptr},
      {}};

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
