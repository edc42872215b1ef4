#pragma once

#include <jni.h>

#include <string>

// The broker sets these up itself; a host of its own, or a test, sets them
// here before the library's first use of Java.
class KorJNISetup {
public:
  // The loader the registry lookup goes through; null restores the default,
  // the system class loader. The platform keeps its own global reference.
  static void setISRClassLoader(JNIEnv* env, jobject classLoader);

  // The class whose instances are fatal, for managers made from now on
  // (java/lang/Error by default).
  static void setFatalClassName(const std::string& className);
  // Whether managers made from now on print their debug lines.
  static void setDebugPrint(bool on);
};
