#include "KorISRAdapterImpl.hpp"
#include "KorISRAdapterJniManager.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>
#include <KorJniRef.hpp>

#include <gtest/gtest.h>

#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <set>
#include <thread>
#include <vector>

namespace {

const int threadCount = 8;

KorWstring text(const std::string& utf8) {
  return KorWstring::fromUtf8(utf8);
}

// Runs body(t) on threadCount threads released together.
void onThreads(const std::function<void(int)>& body) {
  std::atomic<int> waiting{threadCount};
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([&, t] {
      for (--waiting; waiting.load() > 0;) {
        std::this_thread::yield();
      }
      body(t);
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
}

// Threads on one adapter, each on names of its own, see their own data; no
// global reference is left behind.
using ConcurrencyStress = JvmTest;
TEST_F(ConcurrencyStress, ThreadsOnOneJavaBackedAdapterEachSeeTheirOwnData) {
  KorISRAdapterImpl adapter(text("stress"));
  const long globals = TestJvm::liveGlobalReferences();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  onThreads([&](int t) {
    const int frames = TestJvm::localFrameDepth();
    const KorWstring type = text("Type" + std::to_string(t));
    for (int round = 0; std::chrono::steady_clock::now() < deadline && !testing::Test::HasFailure();
         ++round) {
      const std::string name = "t" + std::to_string(t) + "-" + std::to_string(round % 4);
      const KorWstring key = text(name), content = text("<c r='" + std::to_string(round) + "'/>");
      KorWstring uri, got, names;
      try {
        adapter.createBTD(key, content, uri);
        EXPECT_EQ(uri.toUtf8(), "/apiv1/business/businesstransactions/" + name);
        adapter.createPolicy(type, key, content, uri);
        adapter.getBTD(key, got, uri);
        EXPECT_EQ(got, content);
        std::vector<KorWstring> listed = adapter.getBTDNames(names);
        EXPECT_EQ(std::count(listed.begin(), listed.end(), key), 1);
        EXPECT_EQ(adapter.getPolicyNames(type, names), std::vector<KorWstring>{key});
        adapter.deletePolicy(type, key);
        adapter.deleteBTD(key);
        EXPECT_FALSE(adapter.btdExists(key) || adapter.policyExists(type, key));
        adapter.getBTD(key, got, uri);
        ADD_FAILURE() << "a deleted BTD was found";
      } catch (const KorException& error) {
        // The reference registry's own number for a missing BTD.
        EXPECT_EQ(error.messageNumber(), 5101U) << "thread " << t << ": " << error.what();
      }
    }
    EXPECT_EQ(TestJvm::localFrameDepth(), frames);
  });
  EXPECT_EQ(TestJvm::liveGlobalReferences(), globals);
}

// In fresh processes (this test run again), threads released at once all ask
// for the JNI manager; each must get the one fully built manager.
TEST(FirstUseRace, ManyFreshProcesses) {
  if (std::getenv("LEGIORRUG_FIRST_USE_CHILD") != nullptr) {
    TestJvm::env();
    std::vector<KorISRAdapterJniManager*> seen(threadCount);
    onThreads([&](int t) {
      KorISRAdapterJniManager* manager = seen[t] = KorISRAdapterJniManager::instance();
      // Rows the library reads without a lock after creation.
      EXPECT_NE(manager->lxException().getInserts, nullptr);
      EXPECT_NE(manager->messageFlowProxy().stopMessageFlow, nullptr);
      const auto& adapter = manager->isrAdapter();
      EXPECT_NE(adapter.btdExists, nullptr);
      JNIEnv* env = TestJvm::env();
      EXPECT_NE(KorLocalRef<>(env, env->CallStaticObjectMethod(adapter.cls, adapter.getInstance)).get(),
                nullptr);
      EXPECT_FALSE(env->ExceptionCheck());
    });
    EXPECT_EQ(std::set<KorISRAdapterJniManager*>(seen.begin(), seen.end()).size(), 1U);
    return;
  }
  setenv("LEGIORRUG_FIRST_USE_CHILD", "1", 1);
  std::string program = "/proc/self/exe", filter = "--gtest_filter=FirstUseRace.*";
  char* arguments[] = {program.data(), filter.data(), nullptr};
  for (int run = 0; run < 25; ++run) {
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "run " << run << ": status " << status;
  }
  unsetenv("LEGIORRUG_FIRST_USE_CHILD");
}

} // namespace
