#include "GlobalReferences.hpp"

#include <jvmti.h>

#include <atomic>

namespace {

std::atomic<long> live{noCount};
jniNativeInterface original;

jobject JNICALL newGlobalRef(JNIEnv* env, jobject object) {
  jobject global = original.NewGlobalRef(env, object);
  live += global != nullptr ? 1 : 0;
  return global;
}

void JNICALL deleteGlobalRef(JNIEnv* env, jobject global) {
  live -= global != nullptr ? 1 : 0;
  original.DeleteGlobalRef(env, global);
}

} // namespace

bool countGlobalReferences(JavaVM* vm) {
  jvmtiEnv* jvmti = nullptr;
  jniNativeInterface* table = nullptr;
  if (vm->GetEnv(reinterpret_cast<void**>(&jvmti), JVMTI_VERSION_1_2) != JNI_OK ||
      jvmti->GetJNIFunctionTable(&table) != JVMTI_ERROR_NONE) {
    return false;
  }
  original = *table;
  table->NewGlobalRef = newGlobalRef;
  table->DeleteGlobalRef = deleteGlobalRef;
  live = 0;
  const bool replaced = jvmti->SetJNIFunctionTable(table) == JVMTI_ERROR_NONE;
  if (!replaced) {
    live = noCount;
  }
  jvmti->Deallocate(reinterpret_cast<unsigned char*>(table));
  return replaced;
}

long liveGlobalReferences() {
  return live;
}
