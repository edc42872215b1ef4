#include "KorLocalJavaStackFrame.hpp"

#include "KorException.hpp"
#include "KorJVM.hpp"
#include "KorLog.hpp"

namespace {
const jint frameCapacity = 10;
}

KorLocalJavaStackFrame::KorLocalJavaStackFrame() : env_(KorJVM::getEnvironment()) {
  if (env_->PushLocalFrame(frameCapacity) < 0) {
    // The frame was not pushed, so the destructor must not pop the caller's.
    env_->ExceptionDescribe();
    env_->ExceptionClear();
    KorFatalException error("platform/KorLocalJavaStackFrame", __LINE__, "KorLocalJavaStackFrame",
                            KorLog::iDefaultLogSource, korMessageNumber(3702), 0);
    error << "Fatal Error Making JNI Call: PushLocalFrame"
          << "PushLocalFrame";
    error.throwThis();
  }
}
