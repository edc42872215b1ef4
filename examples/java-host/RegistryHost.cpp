// The native part of the Java host: the Java-backed adapter, created once on
// the Java thread that calls in, then used from threads of its own. Each
// thread is attached to the JVM on its first call and detached when it ends.
#include <KorException.hpp>
#include <KorISRAdapter.hpp>
#include <KorStartParametersSetup.hpp>
#include <KorWstringText.hpp>

#include <jni.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

// Creates, reads and deletes BTDs of names of its own; the last read asks for
// one never created, which the Java registry raises and the adapter turns
// into a KorRecoverableException with the Java side's message number.
void work(KorISRAdapter& registry, int thread, int rounds, std::atomic<int>& found, std::string& failure) {
  try {
    for (int round = 0; round < rounds; ++round) {
      const KorWstring name =
          KorWstringText::fromUtf8("btd-" + std::to_string(thread) + "-" + std::to_string(round));
      KorWstring uri;
      registry.createBTD(name, KorWstringText::fromUtf8("<btd/>"), uri);
      KorWstring content;
      registry.getBTD(name, content, uri);
      found += content == KorWstringText::fromUtf8("<btd/>") ? 1 : 0;
      registry.deleteBTD(name);
    }
    KorWstring content;
    KorWstring uri;
    registry.getBTD(KorWstringText::fromUtf8("never-created"), content, uri);
    failure = "a missing BTD was found";
  } catch (const KorRecoverableException&) {
    // The missing BTD.
  } catch (const std::exception& error) {
    failure = error.what();
  }
}

} // namespace

extern "C" JNIEXPORT jstring JNICALL Java_Host_useRegistry(JNIEnv* env, jclass, jint threads, jint rounds) {
  try {
    // The first isrAdapter call returns before any other thread calls it.
    KorStartParametersSetup::setContainerInfo(KorContainerInfo{0});
    KorISRAdapter& registry = *KorISRAdapter::isrAdapter(KorWstringText::fromUtf8("java-host"));
    std::atomic<int> found{0};
    std::vector<std::string> failures(static_cast<std::size_t>(threads));
    std::vector<std::thread> workers;
    for (int thread = 0; thread < threads; ++thread) {
      workers.emplace_back(work, std::ref(registry), thread, rounds, std::ref(found),
                           std::ref(failures[static_cast<std::size_t>(thread)]));
    }
    for (std::thread& worker : workers) {
      worker.join();
    }
    for (const std::string& failure : failures) {
      if (!failure.empty()) {
        throw std::runtime_error(failure);
      }
    }
    if (found != threads * rounds) {
      throw std::runtime_error(std::to_string(found.load()) + " BTDs read back");
    }
    const std::string seen = std::to_string(threads) + " threads, " + std::to_string(found.load()) + " of " +
                             std::to_string(threads * rounds) + " BTDs read back";
    return env->NewStringUTF(seen.c_str());
  } catch (const std::exception& error) {
    // No C++ exception may cross into the JVM.
    env->ThrowNew(env->FindClass("java/lang/IllegalStateException"), error.what());
    return nullptr;
  }
}
