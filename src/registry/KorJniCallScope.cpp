#include "KorJniCallScope.hpp"

#include "KorTracedRaise.hpp"

#include <KorException.hpp>

#include <initializer_list>

namespace {

const char* const sourceFile = "src/registry/KorISRAdapterImpl";

// Prefixes and call labels are ASCII literals; only failures build texts
// from them.
KorWstring asciiText(std::initializer_list<const char*> parts) {
  KorWstring text;
  for (const char* part : parts) {
    for (; *part != '\0'; ++part) {
      const auto unit = static_cast<KorWstring::CodeUnit>(*part);
      text.append(&unit, 1);
    }
  }
  return text;
}

KorWstring messageText(const char* prefix, const KorCallLabel& label) {
  return asciiText({prefix, label.text()});
}

template <typename Exception>
Exception generic(const char* function, const KorCallLabel& label, unsigned drx, const char* prefix,
                  KorLogToken token, const KorWstring& text1, const KorWstring& text2) {
  Exception error(sourceFile, label.line(), function, KorLog::iDefaultLogSource, korMessageNumber(drx),
                  token);
  error << messageText(prefix, label) << label.text() << text1 << text2;
  return error;
}

const char* const recoverablePrefix = "Error Making JNI Call: ";
const char* const fatalPrefix = "Fatal Error Making JNI Call: ";

} // namespace

void korRaisePushFailure(JNIEnv* env, const KorJniManager& manager, const char* sourceFile, int line,
                         const char* function, KorLogToken token) {
  KorJniReturn outcome(env, &manager);
  outcome.exceptionThrown();
  KorFatalException error(sourceFile, line, function, KorLog::iDefaultLogSource, korMessageNumber(3702),
                          token);
  error << asciiText({fatalPrefix, "PushLocalFrame"}) << "PushLocalFrame" << outcome.text1()
        << outcome.text2();
  korTracedRaise(error);
}

KorJniCallScope::KorJniCallScope(const char* function, KorLogToken token, int line)
    : function_(function), token_(token), manager_(KorISRAdapterJniManager::instance()), env_(frame_.env()) {
  if (!frame_.pushed()) {
    korRaisePushFailure(env_, *manager_, sourceFile, line, function_, token_);
  }
}

void KorJniCallScope::raiseFailure(const KorCallLabel& label, KorJniReturn& outcome) const {
  if (outcome.fatal()) {
    korTracedRaise(generic<KorFatalException>(function_, label, 3702, fatalPrefix, token_, outcome.text1(),
                                              outcome.text2()));
  }
  if (outcome.known()) {
    KorRecoverableException error(sourceFile, label.line(), function_, KorLog::iDefaultLogSource,
                                  static_cast<std::uint32_t>(outcome.messageNumber()), 0);
    outcome.processRootKnownException(error);
    if (outcome.nested()) {
      error << generic<KorRecoverableException>(function_, label, 3701, recoverablePrefix, 0, outcome.text1(),
                                                outcome.text2());
    }
    error.throwThis();
  }
  korTracedRaise(generic<KorRecoverableException>(function_, label, 3701, recoverablePrefix, token_,
                                                  outcome.text1(), outcome.text2()));
}

void KorJniCallScope::raiseNull(const KorCallLabel& label) const {
  KorRecoverableException error(sourceFile, label.line(), function_, KorLog::iDefaultLogSource,
                                korMessageNumber(3703), token_);
  error << messageText("Unexpected NULL returned from JNI Call in: ", label) << label.text();
  korTracedRaise(error);
}

void KorJniCallScope::raiseUnresolved(const KorCallLabel& label) const {
  korTracedRaise(generic<KorFatalException>(function_, label, 3702, fatalPrefix, token_,
                                            asciiText({"Java class or method not resolved"}), KorWstring()));
}
