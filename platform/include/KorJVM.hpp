#pragma once

#include <jni.h>

#include <string>
#include <vector>

struct KorJVMOptions {
  std::vector<std::string> classPath;
  std::vector<std::string> options; // for example "-Xcheck:jni"
  // Receives everything the JVM prints, when set (the "vfprintf" option).
  jint (*vfprintfHook)(FILE* stream, const char* format, va_list args) = nullptr;
  // Called instead of the JVM's own exit, when set (the "exit" option).
  void (*exitHook)(jint code) = nullptr;
  // Called before the JVM aborts, when set (the "abort" option).
  void (*abortHook)() = nullptr;
};

// The process's Java virtual machine. Inside the broker the JVM already runs
// and is found; a host of its own (a test, the shell) creates it first.
// libjvm is loaded at the first use, never linked.
class KorJVM {
public:
  // Creates the JVM and attaches the calling thread. Throws
  // KorFatalException when a JVM exists already or cannot be created.
  static void create(const KorJVMOptions& options);

  // The calling thread's JNIEnv. A thread that is not attached yet is
  // attached once (as a daemon) and detached when it ends. Throws
  // KorFatalException when the process has no JVM.
  static JNIEnv* getEnvironment();

  static JavaVM* javaVM();

  // The libjvm to load, tried before JAVA_HOME's; set before the first use.
  static void setLibrary(const std::string& path);
};
