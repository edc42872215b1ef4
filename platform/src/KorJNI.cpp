#include "KorJNI.hpp"

#include "KorJniRef.hpp"

#include <mutex>
#include <string>

namespace {

std::mutex loaderLock;
jobject registryLoader = nullptr; // global reference; null means the system loader

[[noreturn]] void fail(JNIEnv* env, std::int32_t kind, const char* className, const char* memberName) {
  env->ExceptionClear();
  throw KorJNI::Failure{kind, className, memberName};
}

jobject systemClassLoader(JNIEnv* env) {
  jclass loaderClass = env->FindClass("java/lang/ClassLoader");
  if (loaderClass == nullptr) {
    return nullptr;
  }
  KorLocalRef<jclass> guard(env, loaderClass);
  jmethodID getSystem =
      env->GetStaticMethodID(loaderClass, "getSystemClassLoader", "()Ljava/lang/ClassLoader;");
  return getSystem == nullptr ? nullptr : env->CallStaticObjectMethod(loaderClass, getSystem);
}

// A new local reference to the class, or null with a Java exception pending.
jclass loadClass(JNIEnv* env, jobject loader, const char* internalName) {
  std::string binaryName(internalName);
  for (char& c : binaryName) {
    if (c == '/') {
      c = '.';
    }
  }
  KorLocalRef<jstring> name(env, env->NewStringUTF(binaryName.c_str()));
  jclass loaderClass = env->GetObjectClass(loader);
  KorLocalRef<jclass> loaderClassGuard(env, loaderClass);
  jmethodID load = env->GetMethodID(loaderClass, "loadClass", "(Ljava/lang/String;)Ljava/lang/Class;");
  if (name.get() == nullptr || load == nullptr) {
    return nullptr;
  }
  return static_cast<jclass>(env->CallObjectMethod(loader, load, name.get()));
}

} // namespace

void KorJNI::findClassesAndMethodsUsingISRClassLoader(const ClassInfo* table, JNIEnv* env) {
  jobject loader = nullptr;
  {
    std::lock_guard<std::mutex> guard(loaderLock);
    loader = registryLoader != nullptr ? env->NewLocalRef(registryLoader) : systemClassLoader(env);
  }
  if (loader == nullptr) {
    fail(env, 0, table->className, nullptr);
  }
  KorLocalRef<> loaderGuard(env, loader);

  for (const ClassInfo* row = table; row->classSlot != nullptr; ++row) {
    jclass local = loadClass(env, loader, row->className);
    if (local == nullptr || env->ExceptionCheck()) {
      fail(env, 0, row->className, nullptr);
    }
    KorLocalRef<jclass> localGuard(env, local);
    auto global = static_cast<jclass>(env->NewGlobalRef(local));
    if (global == nullptr) {
      fail(env, 0, row->className, nullptr);
    }
    *row->classSlot = global;

    for (const MethodInfo* method = row->methods; method != nullptr && method->methodSlot != nullptr;
         ++method) {
      jmethodID id = method->isStatic == 1 ? env->GetStaticMethodID(global, method->name, method->signature)
                                           : env->GetMethodID(global, method->name, method->signature);
      if (id == nullptr) {
        fail(env, 1, row->className, method->name);
      }
      *method->methodSlot = id;
    }
  }
}

void KorJNI::setISRClassLoader(JNIEnv* env, jobject classLoader) {
  std::lock_guard<std::mutex> guard(loaderLock);
  if (registryLoader != nullptr) {
    env->DeleteGlobalRef(registryLoader);
  }
  registryLoader = classLoader != nullptr ? env->NewGlobalRef(classLoader) : nullptr;
}
