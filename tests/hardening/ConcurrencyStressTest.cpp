#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <map>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
const int threadCount = 8;
const std::string btdUri = "/apiv1/business/businesstransactions/";

KorWstring text(const std::string& utf8) {
  return KorWstring::fromUtf8(utf8);
}

// One thread's mixed operations on names of its own, whose answers its
// model of them foretells; returns how many it made.
long stress(KorISRAdapter& adapter, int thread, Clock::time_point deadline) {
  const std::string prefix = "t" + std::to_string(thread) + "-";
  const KorWstring type = text("Type" + prefix);
  std::map<std::string, std::string> btds;
  std::map<std::string, std::string> policies;
  const int frames = TestJvm::localFrameDepth();
  long operations = 0;
  for (unsigned random = 2463534242U + thread; Clock::now() < deadline && !testing::Test::HasFailure();) {
    random ^= random << 13;
    random ^= random >> 17;
    random ^= random << 5;
    const std::string name = prefix + std::to_string(random % 4);
    const KorWstring key = text(name);
    const std::string content = "<c r='" + std::to_string(operations) + "'/>";
    const bool stored = btds.count(name) != 0;
    KorWstring uri, got, names;
    try {
      switch (random / 4 % 6) {
      case 0:
        adapter.createBTD(key, text(content), uri);
        EXPECT_EQ(uri.toUtf8(), btdUri + name);
        EXPECT_FALSE(stored);
        btds[name] = content;
        break;
      case 1:
        adapter.getBTD(key, got, uri);
        EXPECT_EQ(got.toUtf8(), btds[name]);
        break;
      case 2:
        adapter.deleteBTD(key);
        EXPECT_TRUE(stored);
        btds.erase(name);
        break;
      case 3:
        EXPECT_EQ(adapter.btdExists(key), stored);
        break;
      case 4: {
        const bool present = policies.count(name) != 0;
        EXPECT_EQ(adapter.policyExists(type, key), present);
        if (present) {
          adapter.deletePolicy(type, key);
          policies.erase(name);
        } else {
          adapter.createPolicy(type, key, text(content), uri);
          policies[name] = content;
        }
        EXPECT_EQ(adapter.getPolicyNames(type, names).size(), policies.size());
        break;
      }
      default: {
        std::string own;
        for (const auto& listed : adapter.getBTDNames(names)) {
          own += listed.toUtf8().rfind(prefix, 0) == 0 ? listed.toUtf8() + " " : "";
        }
        std::string expected;
        for (const auto& entry : btds) {
          expected += entry.first + " ";
        }
        EXPECT_EQ(own, expected);
      }
      }
    } catch (const KorRecoverableException& error) {
      // The reference registry's own numbers for a missing or present BTD.
      EXPECT_EQ(error.messageNumber(), stored ? 5102U : 5101U) << error.what();
    }
    ++operations;
  }
  EXPECT_EQ(TestJvm::localFrameDepth(), frames);
  return operations;
}

class ConcurrencyStress : public JvmTest {};

// Threads on one adapter each see their own data; no global reference is left behind.
TEST_F(ConcurrencyStress, ThreadsOnOneJavaBackedAdapterEachSeeTheirOwnData) {
  KorISRAdapterImpl adapter(text("stress"));
  const long globals = TestJvm::liveGlobalReferences();
  {
    std::atomic<long> operations{0};
    const auto deadline = Clock::now() + std::chrono::seconds(3);
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int t = 0; t < threadCount; ++t) {
      threads.emplace_back([&, t] {
        try {
          operations += stress(adapter, t, deadline);
        } catch (const KorException& error) {
          ADD_FAILURE() << "thread " << t << ": " << error.what();
        }
      });
    }
    for (auto& thread : threads) {
      thread.join();
    }
    EXPECT_GT(operations.load(), threadCount);
    std::printf("stress: %d threads, %ld operations\n", threadCount, operations.load());
  }
  EXPECT_EQ(TestJvm::liveGlobalReferences(), globals);
}

} // namespace
