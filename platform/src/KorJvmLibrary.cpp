#include "KorJvmLibrary.hpp"

#include "KorException.hpp"
#include "KorLog.hpp"
#include "KorWstringText.hpp"

#include <dlfcn.h>

#include <cstdlib>
#include <mutex>
#include <vector>

namespace {

std::mutex loadLock;
std::string hostPath;
bool loaded = false;
KorJvmLibrary functions{};

bool bind(void* handle) {
  void* create = dlsym(handle, "JNI_CreateJavaVM");
  void* created = dlsym(handle, "JNI_GetCreatedJavaVMs");
  if (create == nullptr || created == nullptr) {
    return false;
  }
  functions.createJavaVM = reinterpret_cast<decltype(functions.createJavaVM)>(create);
  functions.getCreatedJavaVMs = reinterpret_cast<decltype(functions.getCreatedJavaVMs)>(created);
  return true;
}

std::vector<std::string> candidates() {
  std::vector<std::string> paths;
  if (!hostPath.empty()) {
    paths.push_back(hostPath);
  }
  if (const char* home = std::getenv("JAVA_HOME"); home != nullptr && *home != '\0') {
    paths.push_back(std::string(home) + "/lib/server/libjvm.so");
  }
  const char* chosen = std::getenv("LEGIORRUG_LIBJVM");
  paths.emplace_back(chosen != nullptr ? chosen : LEGIORRUG_BUILD_LIBJVM);
  return paths;
}

} // namespace

const KorJvmLibrary& KorJvmLibrary::get() {
  std::lock_guard<std::mutex> guard(loadLock);
  // A JVM in the process already (the broker's, a launcher's) is the one to use.
  if (loaded || bind(RTLD_DEFAULT)) {
    loaded = true;
    return functions;
  }
  std::string tried;
  for (const std::string& path : candidates()) {
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (handle != nullptr && bind(handle)) {
      loaded = true;
      return functions;
    }
    // dlerror names the path.
    tried += (tried.empty() ? "" : "; ") + (handle == nullptr ? dlerror() : path + ": no JNI_CreateJavaVM");
  }
  KorFatalException error("platform/KorJvmLibrary", __LINE__, "KorJvmLibrary::get", KorLog::iDefaultLogSource,
                          korMessageNumber(3702), 0);
  error << "Fatal Error Making JNI Call: dlopen"
        << "dlopen" << KorWstringText::fromUtf8("no libjvm could be loaded, tried: " + tried);
  error.throwThis();
}

void KorJvmLibrary::setPath(const std::string& path) {
  std::lock_guard<std::mutex> guard(loadLock);
  hostPath = path;
}
