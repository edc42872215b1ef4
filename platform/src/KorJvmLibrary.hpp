#pragma once

#include <jni.h>

#include <string>

// The JVM's invocation functions, from the libjvm that the process has
// loaded already or that the first use loads. Nothing links libjvm, so a
// host that never uses Java runs where no JDK is installed.
struct KorJvmLibrary {
  jint(JNICALL* createJavaVM)(JavaVM** vm, void** env, void* args);
  jint(JNICALL* getCreatedJavaVMs)(JavaVM** vms, jsize size, jsize* count);

  // Loaded once. Tried in order: the path the host named, JAVA_HOME's, then
  // LEGIORRUG_LIBJVM or, when that is unset, the JDK the build used. Throws
  // KorFatalException naming every path tried when none loads.
  static const KorJvmLibrary& get();
  static void setPath(const std::string& path);
};
