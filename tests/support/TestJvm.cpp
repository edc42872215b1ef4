#include "TestJvm.hpp"

#include <KorJVM.hpp>

#include <jvmti.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <sstream>
#include <type_traits>

namespace {

std::atomic<int> unexpectedWarnings{0};
std::mutex outputLock;
std::string pendingLine;

bool isUnexpectedWarning(const std::string& line) {
  bool warning = line.find("WARNING") != std::string::npos || line.rfind("Warning:", 0) == 0;
  return warning && line.find("exceeds capacity") == std::string::npos;
}

jint JNICALL countingVfprintf(FILE* stream, const char* format, va_list args) {
  char buffer[8192];
  int length = std::vsnprintf(buffer, sizeof buffer, format, args);
  std::fputs(buffer, stream);
  std::lock_guard<std::mutex> guard(outputLock);
  pendingLine += buffer;
  for (auto end = pendingLine.find('\n'); end != std::string::npos; end = pendingLine.find('\n')) {
    if (isUnexpectedWarning(pendingLine.substr(0, end))) {
      ++unexpectedWarnings;
    }
    pendingLine.erase(0, end + 1);
  }
  return length;
}

// The JNI function table as the JVM had it, and the interposed entries.
jniNativeInterface original;
thread_local int frameDepth = 0;
thread_local bool nullNextNewObject = false;
jvmtiEnv* jvmti = nullptr;

// The armed fault of this thread: the failAt-th failable call fails.
thread_local int failAt = 0;
thread_local int callsCounted = 0;
thread_local jclass faultClass = nullptr;
std::atomic<long> injected{0};
std::atomic<long> liveGlobals{0};

// True when this call is the one to fail; its exception is then pending.
bool failHere(JNIEnv* env, bool raises) {
  if (failAt == 0 || ++callsCounted != failAt) {
    return false;
  }
  if (raises) {
    original.ThrowNew(env, faultClass, "injected JNI failure");
  }
  ++injected;
  return true;
}

template <typename Function> struct Failable;
template <typename R, typename... Args> struct Failable<R(JNICALL*)(JNIEnv*, Args...)> {
  template <R (JNICALL* jniNativeInterface::*slot)(JNIEnv*, Args...)>
  static R JNICALL call(JNIEnv* env, Args... args) {
    if (failHere(env, true)) {
      if constexpr (!std::is_void_v<R>) {
        return R{};
      } else {
        return;
      }
    }
    return (original.*slot)(env, args...);
  }
};

// Makes a table entry fail, when its turn comes, with the exception pending.
template <auto slot> void makeFailable(jniNativeInterface& table) {
  using Function = std::remove_reference_t<decltype(original.*slot)>;
  table.*slot = &Failable<Function>::template call<slot>;
}

jint JNICALL pushLocalFrame(JNIEnv* env, jint capacity) {
  if (failHere(env, true)) {
    return JNI_ENOMEM;
  }
  jint result = original.PushLocalFrame(env, capacity);
  if (result == JNI_OK) {
    ++frameDepth;
  }
  return result;
}

// HotSpot's NewGlobalRef answers null without raising when it runs out.
jobject JNICALL newGlobalRef(JNIEnv* env, jobject object) {
  if (failHere(env, false)) {
    return nullptr;
  }
  jobject global = original.NewGlobalRef(env, object);
  if (global != nullptr) {
    ++liveGlobals;
  }
  return global;
}

void JNICALL deleteGlobalRef(JNIEnv* env, jobject global) {
  if (global != nullptr) {
    --liveGlobals;
  }
  original.DeleteGlobalRef(env, global);
}

jobject JNICALL popLocalFrame(JNIEnv* env, jobject result) {
  --frameDepth;
  return original.PopLocalFrame(env, result);
}

// Under -Xcheck:jni the checked functions reach the table below them through
// their V variants (NewObject through NewObjectV, Call...Method through
// Call...MethodV), so those are interposed, with the A variants.
jobject JNICALL newObjectV(JNIEnv* env, jclass cls, jmethodID constructor, va_list args) {
  if (nullNextNewObject) {
    nullNextNewObject = false;
    return nullptr;
  }
  if (failHere(env, true)) {
    return nullptr;
  }
  return original.NewObjectV(env, cls, constructor, args);
}

jobject JNICALL newObject(JNIEnv* env, jclass cls, jmethodID constructor, ...) {
  va_list args;
  va_start(args, constructor);
  jobject object = newObjectV(env, cls, constructor, args);
  va_end(args);
  return object;
}

void interposeJniFunctions(JavaVM* vm) {
  ASSERT_EQ(vm->GetEnv(reinterpret_cast<void**>(&jvmti), JVMTI_VERSION_1_2), JNI_OK);
  jniNativeInterface* table = nullptr;
  ASSERT_EQ(jvmti->GetJNIFunctionTable(&table), JVMTI_ERROR_NONE);
  original = *table;
  table->PushLocalFrame = pushLocalFrame;
  table->PopLocalFrame = popLocalFrame;
  table->NewObject = newObject;
  table->NewObjectV = newObjectV;
  using T = jniNativeInterface;
  makeFailable<&T::NewObjectA>(*table);
  makeFailable<&T::NewString>(*table);
  makeFailable<&T::GetStringRegion>(*table);
  makeFailable<&T::NewObjectArray>(*table);
  makeFailable<&T::GetObjectArrayElement>(*table);
  makeFailable<&T::SetObjectArrayElement>(*table);
  table->NewGlobalRef = newGlobalRef;
  table->DeleteGlobalRef = deleteGlobalRef;
  makeFailable<&T::CallObjectMethodV>(*table);
  makeFailable<&T::CallObjectMethodA>(*table);
  makeFailable<&T::CallBooleanMethodV>(*table);
  makeFailable<&T::CallBooleanMethodA>(*table);
  makeFailable<&T::CallVoidMethodV>(*table);
  makeFailable<&T::CallVoidMethodA>(*table);
  makeFailable<&T::CallIntMethodV>(*table);
  makeFailable<&T::CallIntMethodA>(*table);
  makeFailable<&T::CallLongMethodV>(*table);
  makeFailable<&T::CallLongMethodA>(*table);
  makeFailable<&T::CallStaticObjectMethodV>(*table);
  makeFailable<&T::CallStaticObjectMethodA>(*table);
  makeFailable<&T::CallStaticVoidMethodV>(*table);
  makeFailable<&T::CallStaticVoidMethodA>(*table);
  ASSERT_EQ(jvmti->SetJNIFunctionTable(table), JVMTI_ERROR_NONE);
  jvmti->Deallocate(reinterpret_cast<unsigned char*>(table));
}

void createJvm() {
  KorJVMOptions options;
  std::stringstream classPath(LEGIORRUG_TEST_CLASSPATH);
  for (std::string entry; std::getline(classPath, entry, ':');) {
    options.classPath.push_back(entry);
  }
  options.options = {"-Xcheck:jni", "-Xmx256m", "-XX:+UseSerialGC", "-Djava.awt.headless=true"};
  options.vfprintfHook = countingVfprintf;
  KorJVM::create(options);
  interposeJniFunctions(KorJVM::javaVM());
}

} // namespace

JNIEnv* TestJvm::env() {
  static std::once_flag created;
  std::call_once(created, createJvm);
  return KorJVM::getEnvironment();
}

int TestJvm::unexpectedJniWarnings() {
  return unexpectedWarnings;
}

int TestJvm::localFrameDepth() {
  return frameDepth;
}

void TestJvm::failNextNewObject() {
  nullNextNewObject = true;
}

long TestJvm::liveGlobalReferences() {
  return liveGlobals;
}

void TestJvm::failNthCall(int n, const char* exceptionClass) {
  failAt = 0;
  // One global reference per class for the life of the process, so that
  // arming a fault leaves the global reference count alone.
  static std::mutex classesLock;
  static std::map<std::string, jclass> classes;
  std::lock_guard<std::mutex> guard(classesLock);
  jclass& cls = classes[exceptionClass];
  if (cls == nullptr) {
    JNIEnv* jni = env();
    jclass local = jni->FindClass(exceptionClass);
    ASSERT_NE(local, nullptr) << exceptionClass;
    cls = static_cast<jclass>(jni->NewGlobalRef(local));
    jni->DeleteLocalRef(local);
  }
  faultClass = cls;
  callsCounted = 0;
  failAt = n;
}

int TestJvm::stopFailingCalls() {
  failAt = 0;
  return callsCounted;
}

long TestJvm::faultsInjected() {
  return injected;
}

jobject TestJvm::callStatic(const char* className, const char* method, const char* signature, ...) {
  JNIEnv* jni = env();
  jclass cls = jni->FindClass(className);
  EXPECT_NE(cls, nullptr) << className;
  jmethodID id = cls != nullptr ? jni->GetStaticMethodID(cls, method, signature) : nullptr;
  EXPECT_NE(id, nullptr) << className << "." << method << signature;
  jobject result = nullptr;
  if (id != nullptr) {
    va_list args;
    va_start(args, signature);
    const char* returnType = std::strrchr(signature, ')') + 1;
    if (*returnType == 'V') {
      jni->CallStaticVoidMethodV(cls, id, args);
    } else {
      result = jni->CallStaticObjectMethodV(cls, id, args);
    }
    va_end(args);
  }
  if (jni->ExceptionCheck()) {
    jni->ExceptionDescribe();
    jni->ExceptionClear();
    ADD_FAILURE() << "Java exception from " << className << "." << method;
  }
  jni->DeleteLocalRef(cls);
  return result;
}

std::string TestJvm::utf8(jobject string) {
  JNIEnv* jni = env();
  const char* chars = jni->GetStringUTFChars(static_cast<jstring>(string), nullptr);
  std::string result(chars);
  jni->ReleaseStringUTFChars(static_cast<jstring>(string), chars);
  return result;
}

void TestJvm::clearReferenceRegistry() {
  JNIEnv* jni = env();
  jobject adapter =
      callStatic("com/vantor/broker/isr/ISRAdapter", "getInstance", "()Lcom/vantor/broker/isr/ISRAdapter;");
  jclass cls = jni->GetObjectClass(adapter);
  jni->CallVoidMethod(adapter, jni->GetMethodID(cls, "clear", "()V"));
  EXPECT_FALSE(jni->ExceptionCheck());
  jni->DeleteLocalRef(cls);
  jni->DeleteLocalRef(adapter);
}

jstring TestJvm::string(const std::string& utf8) {
  return env()->NewStringUTF(utf8.c_str());
}

void JvmTest::SetUp() {
  env = TestJvm::env();
  warningsBefore_ = TestJvm::unexpectedJniWarnings();
  framesBefore_ = TestJvm::localFrameDepth();
}

void JvmTest::TearDown() {
  EXPECT_FALSE(env->ExceptionCheck()) << "a Java exception was left pending";
  EXPECT_EQ(TestJvm::localFrameDepth(), framesBefore_) << "local frames pushed and popped do not match";
  EXPECT_EQ(TestJvm::unexpectedJniWarnings(), warningsBefore_) << "the JVM printed JNI warnings";
}
