#include "KorISRAdapterJniManager.hpp"
#include "TestJvm.hpp"

#include <gtest/gtest.h>

#include <spawn.h>
#include <sys/wait.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

const int processes = 25;
const int threadCount = 8;
const char* const childVariable = "LEGIORRUG_FIRST_USE_CHILD";

// In a fresh process (started by the test below), threads released at once
// all ask for the JNI manager; each must get the one fully built manager.
TEST(FirstUseRace, Child) {
  if (std::getenv(childVariable) == nullptr) {
    GTEST_SKIP() << "runs only in a process started by FirstUseRace.ManyFreshProcesses";
  }
  TestJvm::env();
  std::atomic<int> waiting{threadCount};
  std::vector<KorISRAdapterJniManager*> seen(threadCount);
  std::vector<std::thread> threads;
  threads.reserve(threadCount);
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([&, t] {
      for (--waiting; waiting.load() > 0;) {
        std::this_thread::yield();
      }
      KorISRAdapterJniManager* manager = KorISRAdapterJniManager::instance();
      seen[t] = manager;
      // Every row the library needs, read without a lock after creation.
      const auto& adapter = manager->isrAdapter();
      EXPECT_NE(adapter.cls, nullptr);
      EXPECT_NE(adapter.btdExists, nullptr);
      EXPECT_NE(manager->lxException().getInserts, nullptr);
      EXPECT_NE(manager->messageFlowProxy().stopMessageFlow, nullptr);
      JNIEnv* env = TestJvm::env();
      jobject instance = env->CallStaticObjectMethod(adapter.cls, adapter.getInstance);
      EXPECT_FALSE(env->ExceptionCheck());
      EXPECT_NE(instance, nullptr);
      env->DeleteLocalRef(instance);
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  for (KorISRAdapterJniManager* manager : seen) {
    EXPECT_EQ(manager, seen[0]);
  }
}

TEST(FirstUseRace, ManyFreshProcesses) {
  if (std::getenv(childVariable) != nullptr) {
    GTEST_SKIP();
  }
  setenv(childVariable, "1", 1);
  std::string program = "/proc/self/exe";
  std::string filter = "--gtest_filter=FirstUseRace.Child";
  char* arguments[] = {program.data(), filter.data(), nullptr};
  for (int run = 0; run < processes; ++run) {
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "run " << run << ": status " << status;
  }
  unsetenv(childVariable);
}

} // namespace
