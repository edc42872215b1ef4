#include "KorJniReturn.hpp"

#include "KorException.hpp"
#include "KorJniManager.hpp"
#include "KorJniRef.hpp"
#include "KorLog.hpp"

#include <vector>

namespace {

// The text a Java string-returning call gives, or empty when it or the read
// of its text raised.
KorWstring describe(JNIEnv* env, const KorJniManager& manager, jobject target, jmethodID method) {
  KorJniLocalRef<jstring> string(env, static_cast<jstring>(env->CallObjectMethod(target, method)));
  if (env->ExceptionCheck()) {
    env->ExceptionClear();
    return {};
  }
  KorWstring text = manager.javaStringToKorWstringInternal(env, string.get());
  if (env->ExceptionCheck()) {
    env->ExceptionClear();
    return {};
  }
  return text;
}

} // namespace

KorJniReturn::~KorJniReturn() {
  if (knownExceptionHolder_ != nullptr) {
    env_->DeleteGlobalRef(knownExceptionHolder_);
    if (env_->ExceptionOccurred() != nullptr) {
      env_->ExceptionDescribe();
      env_->ExceptionClear();
    }
    knownExceptionHolder_ = nullptr;
  }
}

bool KorJniReturn::exceptionThrown() {
  if (!env_->ExceptionCheck()) {
    return exceptionSeen_;
  }
  exceptionSeen_ = true;
  jthrowable throwable = env_->ExceptionOccurred();
  env_->ExceptionDescribe();
  env_->ExceptionClear();
  if (throwable == nullptr) {
    fatal_ = true;
    return true;
  }
  KorJniLocalRef<jthrowable> owner(env_, throwable);
  if (env_->IsInstanceOf(throwable, manager_->fatalClass())) {
    fatal_ = true;
  }
  logJavaExceptionToBrokerTrace(throwable);
  return true;
}

void KorJniReturn::logJavaExceptionToBrokerTrace(jthrowable& throwable) {
  KorJniLocalRef<jclass> throwableClass(env_, env_->GetObjectClass(throwable));
  text1_ = describe(env_, *manager_, throwableClass.get(), manager_->classGetName_);
  text2_ = describe(env_, *manager_, throwable, manager_->throwableGetMessage_);
  if (KorLog::iEffectiveLogFilter > 2) {
    KorLog::trace("KorJniReturn::logJavaExceptionToBrokerTrace", 0, {"Java exception", text1_, text2_});
  }
  manager_->checkForKnownExceptions(env_, throwable, *this);
}

void KorJniReturn::processRootKnownException(KorRecoverableException& error) {
  error.setMessageNumber(static_cast<std::uint32_t>(messageNumber_));
  KorJniLocalRef<> exception(
      env_, env_->GetObjectArrayElement(static_cast<jobjectArray>(knownExceptionHolder_), 0));
  if (env_->ExceptionCheck()) {
    env_->ExceptionDescribe();
    env_->ExceptionClear();
    nested_ = true;
    return;
  }
  int number = messageNumber_;
  KorWstring text;
  std::vector<KorWstring> inserts;
  bool nested = false;
  bool unpacked = manager_->processKnownException(env_, exception.get(), number, text, inserts, nested);
  // Without the Java side's text the caller's generic item says which call failed.
  nested_ = nested || !unpacked;
  // The number the unpacking read wins over the one recorded at the call.
  messageNumber_ = number;
  error.setMessageNumber(static_cast<std::uint32_t>(number));
  if (unpacked) {
    error << text;
    for (const auto& insert : inserts) {
      error << insert;
    }
  }
}

void KorJniReturn::recordKnownException(jobject holderGlobalRef, std::int32_t messageNumber) noexcept {
  knownExceptionHolder_ = holderGlobalRef;
  messageNumber_ = messageNumber;
  known_ = 1;
}
