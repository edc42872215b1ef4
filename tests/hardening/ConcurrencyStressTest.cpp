#include "KorISRAdapterImpl.hpp"
#include "KorISRAdapterJniManager.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>
#include <KorLocalRef.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>
#include <vector>

namespace {

const int threadCount = 8;

// Runs body(t) on threadCount threads released together.
void onThreads(const std::function<void(int)>& body) {
  std::atomic<int> waiting{threadCount};
  std::vector<std::thread> threads(threadCount);
  for (int t = 0; t < threadCount; ++t) {
    threads[t] = std::thread([&, t] {
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

// Threads on one adapter see their own data; no global reference is left behind.
using ConcurrencyStress = JvmTest;
TEST_F(ConcurrencyStress, ThreadsOnOneJavaBackedAdapterEachSeeTheirOwnData) {
  KorISRAdapterImpl adapter(KorWstringText::fromUtf8("stress"));
  const long globals = TestJvm::liveGlobalReferences();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  onThreads([&](int t) {
    const int frames = TestJvm::localFrameDepth();
    for (int round = 0; std::chrono::steady_clock::now() < deadline && !testing::Test::HasFailure();
         ++round) {
      const std::string name = "t" + std::to_string(t) + "-" + std::to_string(round % 4);
      const KorWstring key = KorWstringText::fromUtf8(name),
                       content = KorWstringText::fromUtf8("<c r='" + std::to_string(round) + "'/>");
      KorWstring uri, got, names;
      try {
        adapter.createBTD(key, content, uri);
        EXPECT_EQ(KorWstringText::toUtf8(uri), "/apiv1/business/businesstransactions/" + name);
        adapter.getBTD(key, got, uri);
        EXPECT_EQ(got, content);
        std::vector<KorWstring> listed = adapter.getBTDNames(names);
        EXPECT_EQ(std::count(listed.begin(), listed.end(), key), 1);
        adapter.deleteBTD(key);
        EXPECT_FALSE(adapter.btdExists(key));
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

// In fresh processes (this test again), threads that ask for the JNI manager at once get one, fully built.
TEST(FirstUseRace, ManyFreshProcesses) {
  if (std::getenv("LEGIORRUG_FIRST_USE_CHILD") != nullptr) {
    TestJvm::env();
    std::vector<KorISRAdapterJniManager*> seen(threadCount);
    onThreads([&](int t) {
      KorISRAdapterJniManager* manager = seen[t] = KorISRAdapterJniManager::instance();
      // Rows the library reads without a lock after creation.
      EXPECT_NE(manager->messageFlowProxy().stopMessageFlow, nullptr);
      const auto& adapter = manager->isrAdapter();
      EXPECT_NE(adapter.btdExists, nullptr);
      JNIEnv* env = TestJvm::env();
      EXPECT_NE(KorLocalRef<>(env, env->CallStaticObjectMethod(adapter.cls, adapter.getInstance)).get(),
                nullptr);
    });
    EXPECT_EQ(std::set<KorISRAdapterJniManager*>(seen.begin(), seen.end()).size(), 1U);
    return;
  }
  const std::string child = "LEGIORRUG_FIRST_USE_CHILD=1 " +
                            std::filesystem::read_symlink("/proc/self/exe").string() +
                            " --gtest_filter=FirstUseRace.*";
  for (int run = 0; run < 25; ++run) {
    ASSERT_EQ(std::system(child.c_str()), 0) << "run " << run;
  }
}

} // namespace
