#include "KorJVM.hpp"

#include "KorException.hpp"
#include "KorJVMStartup.hpp"
#include "KorJvmLibrary.hpp"
#include "KorLog.hpp"
#include "KorWstringText.hpp"

#include <atomic>
#include <mutex>
#include <string>
#include <type_traits>

namespace {

const char* const sourceFile = "platform/KorJVM";
const jint jniVersion = JNI_VERSION_1_8;

std::mutex createLock;
std::atomic<JavaVM*> processVm{nullptr};

// Detaches, when the thread ends, a thread that getEnvironment attached. A
// thread the JVM or the host attached is left alone.
struct ThreadAttachment {
  JavaVM* vm = nullptr;
  ~ThreadAttachment() {
    if (vm != nullptr) {
      vm->DetachCurrentThread();
    }
  }
};

// Initial-exec: read in one instruction on every operation's way into Java,
// where the general model calls __tls_get_addr. Eight bytes of the static
// TLS block that the C library keeps for libraries like this one.
__attribute__((tls_model("initial-exec"))) thread_local JNIEnv* threadEnv = nullptr;
thread_local ThreadAttachment threadAttachment;

// The reason is in the first insert as well, since what() shows only that
// one and a host with no JVM must read why.
[[noreturn]] void raise(int line, const char* call, const std::string& reason) {
  KorFatalException error(sourceFile, line, "KorJVM", KorLog::iDefaultLogSource, korMessageNumber(3702), 0);
  error << KorWstringText::fromUtf8(std::string("Fatal Error Making JNI Call: ") + call + " (" + reason + ")")
        << call << KorWstringText::fromUtf8(reason);
  error.throwThis();
}

JavaVM* findVm() {
  JavaVM* vm = processVm.load(std::memory_order_acquire);
  if (vm != nullptr) {
    return vm;
  }
  jsize count = 0;
  if (KorJvmLibrary::get().getCreatedJavaVMs(&vm, 1, &count) != JNI_OK || count == 0) {
    return nullptr;
  }
  processVm.store(vm, std::memory_order_release);
  return vm;
}

// Once a thread: out of line, so that the common path has no frame to set up.
[[gnu::noinline, gnu::cold]] JNIEnv* attachCurrentThread() {
  JavaVM* vm = findVm();
  if (vm == nullptr) {
    raise(__LINE__, "JNI_GetCreatedJavaVMs", "the process has no Java virtual machine");
  }
  void* env = nullptr;
  jint rc = vm->GetEnv(&env, jniVersion);
  if (rc == JNI_EDETACHED) {
    rc = vm->AttachCurrentThreadAsDaemon(&env, nullptr);
    if (rc != JNI_OK) {
      raise(__LINE__, "AttachCurrentThread", "error " + std::to_string(rc));
    }
    threadAttachment.vm = vm;
  } else if (rc != JNI_OK) {
    raise(__LINE__, "GetEnv", "error " + std::to_string(rc));
  }
  threadEnv = static_cast<JNIEnv*>(env);
  return threadEnv;
}

std::string joinClassPath(const std::vector<std::string>& entries) {
  std::string joined;
  for (const auto& entry : entries) {
    if (!joined.empty()) {
      joined += ':';
    }
    joined += entry;
  }
  return joined;
}

// The hooks' types as the host sees them, without jni.h, are the JVM's own.
static_assert(std::is_same_v<jint, int>);

} // namespace

void KorJVMStartup::create(const KorJVMOptions& options) {
  std::lock_guard<std::mutex> guard(createLock);
  if (findVm() != nullptr) {
    raise(__LINE__, "JNI_CreateJavaVM", "the process has a Java virtual machine already");
  }
  std::vector<std::string> texts;
  if (!options.classPath.empty()) {
    texts.push_back("-Djava.class.path=" + joinClassPath(options.classPath));
  }
  texts.insert(texts.end(), options.options.begin(), options.options.end());

  std::vector<JavaVMOption> vmOptions;
  vmOptions.reserve(texts.size() + 3);
  for (auto& text : texts) {
    vmOptions.push_back({text.data(), nullptr});
  }
  if (options.vfprintfHook != nullptr) {
    vmOptions.push_back({const_cast<char*>("vfprintf"), reinterpret_cast<void*>(options.vfprintfHook)});
  }
  if (options.exitHook != nullptr) {
    vmOptions.push_back({const_cast<char*>("exit"), reinterpret_cast<void*>(options.exitHook)});
  }
  if (options.abortHook != nullptr) {
    vmOptions.push_back({const_cast<char*>("abort"), reinterpret_cast<void*>(options.abortHook)});
  }
  JavaVMInitArgs args{};
  args.version = jniVersion;
  args.nOptions = static_cast<jint>(vmOptions.size());
  args.options = vmOptions.data();
  args.ignoreUnrecognized = JNI_FALSE;

  JavaVM* vm = nullptr;
  void* env = nullptr;
  jint rc = KorJvmLibrary::get().createJavaVM(&vm, &env, &args);
  if (rc != JNI_OK) {
    raise(__LINE__, "JNI_CreateJavaVM", "error " + std::to_string(rc));
  }
  processVm.store(vm, std::memory_order_release);
  threadEnv = static_cast<JNIEnv*>(env);
}

JNIEnv* KorJVM::getEnvironment() {
  JNIEnv* env = threadEnv;
  return env != nullptr ? env : attachCurrentThread();
}

JavaVM* KorJVMStartup::javaVM() {
  return findVm();
}

void KorJVMStartup::setLibrary(const std::string& path) {
  KorJvmLibrary::setPath(path);
}
