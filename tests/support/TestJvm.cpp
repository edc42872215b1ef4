#include "TestJvm.hpp"

#include <KorJVM.hpp>
#include <KorJVMStartup.hpp>

#include <jvmti.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <type_traits>
#include <utility>

namespace {

std::mutex outputLock;
std::string pendingLine;
jniNativeInterface original; // the JVM's table, before the interposed entries

jint JNICALL countingVfprintf(FILE* stream, const char* format, va_list args) {
  char buffer[8192];
  const int length = std::vsnprintf(buffer, sizeof buffer, format, args);
  std::fputs(buffer, stream);
  std::lock_guard<std::mutex> guard(outputLock);
  pendingLine += buffer;
  for (auto end = pendingLine.find('\n'); end != std::string::npos; end = pendingLine.find('\n')) {
    const std::string line = pendingLine.substr(0, end);
    const bool warning = line.find("WARNING") != std::string::npos || line.rfind("Warning:", 0) == 0;
    TestJvm::iWarnings += warning && line.find("exceeds capacity") == std::string::npos ? 1 : 0;
    pendingLine.erase(0, end + 1);
  }
  return length;
}

// True when this call is the one to fail; its exception, if it raises, is then pending.
bool failHere(JNIEnv* env, bool raises) {
  if (TestJvm::iFailAt == 0 || ++TestJvm::iCallsCounted != TestJvm::iFailAt) {
    return false;
  }
  if (raises) { // through the JVM's own table, so that the count stays as it is
    jclass cls = original.FindClass(env, TestJvm::iFaultClass);
    original.ThrowNew(env, cls, "injected JNI failure");
    original.DeleteLocalRef(env, cls);
  }
  return true;
}

template <typename Function> struct Failable;
template <typename R, typename... Args> struct Failable<R(JNICALL*)(JNIEnv*, Args...)> {
  template <R (JNICALL* jniNativeInterface::*slot)(JNIEnv*, Args...)>
  static R JNICALL call(JNIEnv* env, Args... args) {
    if (failHere(env, true)) {
      return R();
    }
    return (original.*slot)(env, args...);
  }
};

// Makes the table's entries fail, when their turn comes, with the exception pending.
template <auto... slots> void makeFailable(jniNativeInterface& table) {
  ((table.*slots = &Failable<std::remove_reference_t<decltype(original.*slots)>>::template call<slots>), ...);
}

void interposeJniFunctions(JavaVM* vm) {
  jvmtiEnv* jvmti = nullptr;
  jniNativeInterface* table = nullptr;
  ASSERT_EQ(vm->GetEnv(reinterpret_cast<void**>(&jvmti), JVMTI_VERSION_1_2), JNI_OK);
  ASSERT_EQ(jvmti->GetJNIFunctionTable(&table), JVMTI_ERROR_NONE);
  original = *table;
  table->PushLocalFrame = [](JNIEnv* env, jint capacity) {
    const jint result = failHere(env, true) ? JNI_ENOMEM : original.PushLocalFrame(env, capacity);
    TestJvm::iFrameDepth += result == JNI_OK ? 1 : 0;
    return result;
  };
  table->PopLocalFrame = [](JNIEnv* env, jobject result) {
    --TestJvm::iFrameDepth;
    return original.PopLocalFrame(env, result);
  };
  // HotSpot's NewGlobalRef answers null without raising when it runs out.
  table->NewGlobalRef = [](JNIEnv* env, jobject object) {
    jobject global = failHere(env, false) ? nullptr : original.NewGlobalRef(env, object);
    TestJvm::iLiveGlobals += global != nullptr ? 1 : 0;
    return global;
  };
  table->DeleteGlobalRef = [](JNIEnv* env, jobject global) {
    TestJvm::iLiveGlobals -= global != nullptr ? 1 : 0;
    original.DeleteGlobalRef(env, global);
  };
  // Under -Xcheck:jni the checked functions reach the table below them through their V variants
  // (NewObject through NewObjectV, Call...Method through Call...MethodV), so those are interposed, with
  // the A variants.
  table->NewObjectV = [](JNIEnv* env, jclass cls, jmethodID constructor, va_list args) {
    const bool fails = std::exchange(TestJvm::iNullNextNewObject, false) || failHere(env, true);
    return fails ? nullptr : original.NewObjectV(env, cls, constructor, args);
  };
  using T = jniNativeInterface;
  makeFailable<&T::NewObjectA, &T::NewString, &T::GetStringRegion, &T::NewObjectArray,
               &T::GetObjectArrayElement, &T::SetObjectArrayElement, &T::CallObjectMethodV,
               &T::CallObjectMethodA, &T::CallBooleanMethodV, &T::CallBooleanMethodA, &T::CallVoidMethodV,
               &T::CallVoidMethodA, &T::CallIntMethodV, &T::CallIntMethodA, &T::CallLongMethodV,
               &T::CallLongMethodA, &T::CallStaticObjectMethodV, &T::CallStaticObjectMethodA,
               &T::CallStaticVoidMethodV, &T::CallStaticVoidMethodA>(*table);
  ASSERT_EQ(jvmti->SetJNIFunctionTable(table), JVMTI_ERROR_NONE);
  jvmti->Deallocate(reinterpret_cast<unsigned char*>(table));
}

void createJvm() {
  KorJVMOptions options;
  options.classPath = {LEGIORRUG_TEST_CLASSPATH};
  options.options = {"-Xcheck:jni", "-Xmx256m", "-XX:+UseSerialGC", "-Djava.awt.headless=true"};
  options.vfprintfHook = countingVfprintf;
  KorJVMStartup::create(options);
  interposeJniFunctions(KorJVMStartup::javaVM());
}

} // namespace

JNIEnv* TestJvm::env() {
  static std::once_flag created;
  std::call_once(created, createJvm);
  return KorJVM::getEnvironment();
}

jobject TestJvm::callStatic(const char* className, const char* method, const char* signature, ...) {
  JNIEnv* jni = env();
  jclass cls = jni->FindClass(className);
  jmethodID id = cls != nullptr ? jni->GetStaticMethodID(cls, method, signature) : nullptr;
  jobject result = nullptr;
  va_list args;
  va_start(args, signature);
  if (id != nullptr && std::strrchr(signature, ')')[1] == 'V') {
    jni->CallStaticVoidMethodV(cls, id, args);
  } else if (id != nullptr) {
    result = jni->CallStaticObjectMethodV(cls, id, args);
  }
  va_end(args);
  if (jni->ExceptionCheck()) { // also when the class or the method is not found
    jni->ExceptionDescribe();
    jni->ExceptionClear();
    ADD_FAILURE() << "Java exception from " << className << "." << method << signature;
  }
  jni->DeleteLocalRef(cls);
  return result;
}

jstring TestJvm::string(const std::string& utf8) {
  return env()->NewStringUTF(utf8.c_str());
}

std::string TestJvm::utf8(jobject string) {
  const char* chars = env()->GetStringUTFChars(static_cast<jstring>(string), nullptr);
  std::string result(chars);
  env()->ReleaseStringUTFChars(static_cast<jstring>(string), chars);
  return result;
}

void TestJvm::clearReferenceRegistry() {
  jobject adapter =
      callStatic("com/vantor/broker/isr/ISRAdapter", "getInstance", "()Lcom/vantor/broker/isr/ISRAdapter;");
  jclass cls = env()->GetObjectClass(adapter);
  env()->CallVoidMethod(adapter, env()->GetMethodID(cls, "clear", "()V"));
  EXPECT_FALSE(env()->ExceptionCheck());
  env()->DeleteLocalRef(cls);
  env()->DeleteLocalRef(adapter);
}
