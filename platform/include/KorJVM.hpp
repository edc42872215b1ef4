#pragma once

#include <jni.h>

// The process's Java virtual machine, as the library reaches it. Inside the
// broker the JVM already runs; a host of its own starts it first (see
// KorJVMStartup.hpp). libjvm is loaded at the first use, never linked.
class KorJVM {
public:
  // The calling thread's JNIEnv. A thread that is not attached yet is
  // attached once (as a daemon) and detached when it ends. Throws
  // KorFatalException when the process has no JVM.
  static JNIEnv* getEnvironment();
};
