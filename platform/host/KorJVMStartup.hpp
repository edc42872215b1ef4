/// @file
/// Starting the JVM for a host of its own. Threads: create() and setLibrary()
/// belong on one thread before any use of Java; javaVM() may be called from any thread.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

struct JavaVM_;

/// How KorJVMStartup::create starts the JVM.
struct KorJVMOptions {
  /// The class path entries: the registry's jars at least.
  std::vector<std::string> classPath;
  /// JVM options, such as "-Xcheck:jni" or "-Xmx256m".
  std::vector<std::string> options; // for example "-Xcheck:jni"
  /// Receives everything the JVM prints, when set (the "vfprintf" option);
  /// returns the count of characters written, as vfprintf does.
  int (*vfprintfHook)(FILE* stream, const char* format, va_list args) = nullptr;
  /// Called instead of the JVM's own exit, when set (the "exit" option).
  void (*exitHook)(int code) = nullptr;
  /// Called before the JVM aborts, when set (the "abort" option).
  void (*abortHook)() = nullptr;
};

/// Starting the process's JVM, for a host that has none yet (a test, the
/// shell, a program of its own). Inside the broker the JVM runs already and
/// the library only finds it. Needs no JDK headers.
class KorJVMStartup {
public:
  /// Creates the JVM and attaches the calling thread. Throws
  /// KorFatalException when a JVM exists already or cannot be created.
  static void create(const KorJVMOptions& options);

  /// The libjvm to load, tried before JAVA_HOME's; set before the first use.
  static void setLibrary(const std::string& path);

  /// The process's JVM, or null while it has none; throws KorFatalException
  /// when no libjvm can be loaded.
  static JavaVM_* javaVM();
};
