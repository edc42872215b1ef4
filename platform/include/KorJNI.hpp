#pragma once

#include <jni.h>

#include <cstdint>

// Resolution of Java classes and methods through the integration registry's
// class loader.
class KorJNI {
public:
  struct MethodInfo {
    jmethodID* methodSlot;
    std::int32_t isStatic;
    const char* name;
    const char* signature;
  };

  struct ClassInfo {
    jclass* classSlot;
    const char* className;     // internal form, with '/'
    const MethodInfo* methods; // null when the class has no method rows
    const void* reserved1;
    const void* reserved2;
    const void* reserved3;
  };

  // Raised by the lookup; kind 0 when a class was not found, another value
  // when a method or field was not found.
  struct Failure {
    std::int32_t kind;
    const char* className;
    const char* memberName;
  };

  // Walks the table until its all-zero row. Class slots receive global
  // references. Stops at the first class or member it cannot resolve, clears
  // the Java exception and throws Failure; earlier slots keep their values.
  static void findClassesAndMethodsUsingISRClassLoader(const ClassInfo* table, JNIEnv* env);
};
