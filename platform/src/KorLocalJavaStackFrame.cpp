#include "KorLocalJavaStackFrame.hpp"

#include "KorJVM.hpp"

namespace {
const jint frameCapacity = 10;
}

KorLocalJavaStackFrame::KorLocalJavaStackFrame()
    : env_(KorJVM::getEnvironment()), pushed_(env_->PushLocalFrame(frameCapacity) == JNI_OK) {}
