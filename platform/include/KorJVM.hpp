#pragma once

#include <jni.h>

#include <string>
#include <vector>

/// How KorJVM::create starts the JVM.
struct KorJVMOptions {
  /// The class path entries: the registry's jars at least.
  std::vector<std::string> classPath;
  /// JVM options, such as "-Xcheck:jni" or "-Xmx256m".
  std::vector<std::string> options; // for example "-Xcheck:jni"
  /// Receives everything the JVM prints, when set (the "vfprintf" option).
  jint (*vfprintfHook)(FILE* stream, const char* format, va_list args) = nullptr;
  /// Called instead of the JVM's own exit, when set (the "exit" option).
  void (*exitHook)(jint code) = nullptr;
  /// Called before the JVM aborts, when set (the "abort" option).
  void (*abortHook)() = nullptr;
};

/// The process's Java virtual machine. Inside the broker the JVM already runs
/// and is found; a host of its own (a test, the shell) creates it first.
/// libjvm is loaded at the first use, never linked: the one the process has,
/// else the one given to setLibrary(), $JAVA_HOME's, or LEGIORRUG_LIBJVM's
/// (the build's JDK's when unset).
///
/// Threads: create() and setLibrary() belong before the first use of Java,
/// on one thread; getEnvironment() and javaVM() may be called from any
/// thread.
class KorJVM {
public:
  /// Creates the JVM and attaches the calling thread. Throws
  /// KorFatalException when a JVM exists already or cannot be created.
  static void create(const KorJVMOptions& options);

  /// The calling thread's JNIEnv. A thread that is not attached yet is
  /// attached once (as a daemon) and detached when it ends. Throws
  /// KorFatalException when the process has no JVM: "DRX3702: Fatal Error
  /// Making JNI Call: JNI_GetCreatedJavaVMs (the process has no Java virtual
  /// machine)".
  static JNIEnv* getEnvironment();

  /// The process's JVM, or null when it has none; throws KorFatalException
  /// when no libjvm can be loaded.
  static JavaVM* javaVM();

  /// The libjvm to load, tried before JAVA_HOME's; set before the first use.
  static void setLibrary(const std::string& path);
};
