#include "KorJNI.hpp"

#include "KorJNISetup.hpp"

#include "KorJniRef.hpp"
#include "KorLog.hpp"
#include "KorWstringWriter.hpp"

#include <mutex>
#include <string>

namespace {

std::mutex loaderLock;
jobject registryLoader = nullptr; // global reference; null means the system loader

// The failure carries names only; the Java error's own text (a class that
// would not load says why) goes to the trace.
void traceJavaError(JNIEnv* env, jthrowable error) {
  KorJniLocalRef<jclass> errorClass(env, env->GetObjectClass(error));
  jmethodID toString = env->GetMethodID(errorClass.get(), "toString", "()Ljava/lang/String;");
  KorJniLocalRef<jstring> text(
      env, toString != nullptr ? static_cast<jstring>(env->CallObjectMethod(error, toString)) : nullptr);
  KorWstring insert;
  if (text && !env->ExceptionCheck()) {
    const jsize length = env->GetStringLength(text.get());
    env->GetStringRegion(text.get(), 0, length,
                         reinterpret_cast<jchar*>(KorWstringWriter::resizeForOverwrite(insert, length)));
  }
  if (!env->ExceptionCheck()) {
    KorLog::debugTrace("KorJNI::findClassesAndMethodsUsingISRClassLoader", 0, {"Java error", insert});
  }
  env->ExceptionClear();
}

[[noreturn]] void fail(JNIEnv* env, std::int32_t kind, const char* className, const char* memberName) {
  KorJniLocalRef<jthrowable> error(env, env->ExceptionOccurred());
  env->ExceptionClear();
  if (error && KorLog::iEffectiveLogFilter > 3) {
    traceJavaError(env, error.get());
  }
  throw KorJNI::Failure{kind, className, memberName};
}

// Each helper returns null with the Java exception still pending when a
// JNI call fails, and makes no further JNI call after it.
jobject systemClassLoader(JNIEnv* env) {
  KorJniLocalRef<jclass> loaderClass(env, env->FindClass("java/lang/ClassLoader"));
  if (!loaderClass) {
    return nullptr;
  }
  jmethodID getSystem =
      env->GetStaticMethodID(loaderClass.get(), "getSystemClassLoader", "()Ljava/lang/ClassLoader;");
  if (getSystem == nullptr) {
    return nullptr;
  }
  jobject loader = env->CallStaticObjectMethod(loaderClass.get(), getSystem);
  return env->ExceptionCheck() ? nullptr : loader;
}

// A new local reference to the class.
jclass loadClass(JNIEnv* env, jobject loader, const char* internalName) {
  std::string binaryName(internalName);
  for (char& c : binaryName) {
    if (c == '/') {
      c = '.';
    }
  }
  KorJniLocalRef<jstring> name(env, env->NewStringUTF(binaryName.c_str()));
  if (!name) {
    return nullptr;
  }
  KorJniLocalRef<jclass> loaderClass(env, env->GetObjectClass(loader));
  jmethodID load = env->GetMethodID(loaderClass.get(), "loadClass", "(Ljava/lang/String;)Ljava/lang/Class;");
  if (load == nullptr) {
    return nullptr;
  }
  jobject cls = env->CallObjectMethod(loader, load, name.get());
  return env->ExceptionCheck() ? nullptr : static_cast<jclass>(cls);
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
  KorJniLocalRef<> loaderGuard(env, loader);

  for (const ClassInfo* row = table; row->classSlot != nullptr; ++row) {
    jclass local = loadClass(env, loader, row->className);
    if (local == nullptr) {
      fail(env, 0, row->className, nullptr);
    }
    KorJniLocalRef<jclass> localGuard(env, local);
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

void KorJNISetup::setISRClassLoader(JNIEnv* env, jobject classLoader) {
  std::lock_guard<std::mutex> guard(loaderLock);
  if (registryLoader != nullptr) {
    env->DeleteGlobalRef(registryLoader);
  }
  registryLoader = classLoader != nullptr ? env->NewGlobalRef(classLoader) : nullptr;
}
