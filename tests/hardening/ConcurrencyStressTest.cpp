#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorException.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

const int threadCount = 8;
const auto runTime = std::chrono::seconds(3);

// The reference registry's message numbers (RegistryMessages).
const std::uint32_t btdMissing = 5101;
const std::uint32_t btdPresent = 5102;

KorWstring text(const std::string& utf8) {
  return KorWstring::fromUtf8(utf8);
}

// What one thread has stored under its own names; no other thread touches
// them, so every answer about them is known in advance.
struct Model {
  std::map<std::string, std::string> btds;     // name -> content
  std::map<std::string, std::string> policies; // name -> document
  std::map<std::string, std::string> services; // name -> document
};

// Runs one thread's share of mixed operations; returns how many it made.
// Listings hold every thread's names, so only this thread's are compared.
long stress(KorISRAdapter& adapter, int thread, Clock::time_point deadline) {
  const std::string prefix = "t" + std::to_string(thread) + "-";
  const KorWstring type = text("Type" + prefix);
  const std::string btdUri = "/apiv1/business/businesstransactions/";
  Model model;
  long operations = 0;
  unsigned random = 2463534242U + static_cast<unsigned>(thread);
  auto next = [&random](unsigned bound) {
    random ^= random << 13;
    random ^= random >> 17;
    random ^= random << 5;
    return random % bound;
  };
  auto expectKnown = [](const KorRecoverableException& error, std::uint32_t number) {
    EXPECT_EQ(error.messageNumber(), number);
  };
  for (long round = 0; Clock::now() < deadline && !::testing::Test::HasFailure(); ++round) {
    const std::string name = prefix + std::to_string(next(4));
    const KorWstring key = text(name);
    const std::string content = "<c r='" + std::to_string(round) + "'/>";
    const bool stored = model.btds.count(name) != 0;
    KorWstring uri, got, names;
    switch (next(9)) {
    case 0:
      try {
        adapter.createBTD(key, text(content), uri);
        EXPECT_FALSE(stored);
        EXPECT_EQ(uri.toUtf8(), btdUri + name);
        model.btds[name] = content;
      } catch (const KorRecoverableException& error) {
        EXPECT_TRUE(stored);
        expectKnown(error, btdPresent);
      }
      break;
    case 1:
      try {
        adapter.getBTD(key, got, uri);
        EXPECT_TRUE(stored);
        EXPECT_EQ(got.toUtf8(), model.btds[name]);
        EXPECT_EQ(uri.toUtf8(), btdUri + name);
      } catch (const KorRecoverableException& error) {
        EXPECT_FALSE(stored);
        expectKnown(error, btdMissing);
      }
      break;
    case 2:
      try {
        adapter.updateBTD(key, text(content), uri);
        EXPECT_TRUE(stored);
        model.btds[name] = content;
      } catch (const KorRecoverableException& error) {
        EXPECT_FALSE(stored);
        expectKnown(error, btdMissing);
      }
      break;
    case 3:
      try {
        adapter.deleteBTD(key);
        EXPECT_TRUE(stored);
        model.btds.erase(name);
      } catch (const KorRecoverableException& error) {
        EXPECT_FALSE(stored);
        expectKnown(error, btdMissing);
      }
      break;
    case 4:
      EXPECT_EQ(adapter.btdExists(key), stored);
      break;
    case 5: {
      // A policy is created when absent, else read back and deleted.
      const bool present = model.policies.count(name) != 0;
      EXPECT_EQ(adapter.policyExists(type, key), present);
      if (present) {
        adapter.getPolicy(type, key, got, uri);
        EXPECT_EQ(got.toUtf8(), model.policies[name]);
        adapter.deletePolicy(type, key);
        model.policies.erase(name);
      } else {
        adapter.createPolicy(type, key, text(content), uri);
        model.policies[name] = content;
      }
      std::string expected;
      for (const auto& entry : model.policies) {
        expected += (expected.empty() ? "" : " ") + entry.first;
      }
      EXPECT_EQ(adapter.getPolicyNames(type, names).size(), model.policies.size());
      EXPECT_EQ(names.toUtf8(), expected);
      break;
    }
    case 6: {
      // A service is created when absent, else read back and deleted.
      KorISRService service;
      const bool present = model.services.count(name) != 0;
      EXPECT_EQ(adapter.getService(key, service), present);
      EXPECT_EQ(adapter.serviceExists(key, text("urn:" + prefix)), present);
      if (present) {
        EXPECT_EQ(service.document.toUtf8(), model.services[name]);
        adapter.deleteService(key);
        model.services.erase(name);
      } else {
        adapter.createService(key, text("urn:" + prefix), text(content));
        model.services[name] = content;
      }
      break;
    }
    case 7: {
      std::vector<KorWstring> uris;
      adapter.listBTDs(uris);
      std::vector<std::string> own;
      for (const auto& listed : uris) {
        if (listed.toUtf8().rfind(btdUri + prefix, 0) == 0) {
          own.push_back(listed.toUtf8());
        }
      }
      std::vector<std::string> expected;
      for (const auto& entry : model.btds) {
        expected.push_back(btdUri + entry.first);
      }
      EXPECT_EQ(own, expected);
      break;
    }
    default: {
      std::vector<std::string> own;
      for (const auto& listed : adapter.getBTDNames(names)) {
        if (listed.toUtf8().rfind(prefix, 0) == 0) {
          own.push_back(listed.toUtf8());
        }
      }
      std::vector<std::string> expected;
      for (const auto& entry : model.btds) {
        expected.push_back(entry.first);
      }
      EXPECT_EQ(own, expected);
      break;
    }
    }
    ++operations;
  }
  return operations;
}

class ConcurrencyStress : public JvmTest {};

TEST_F(ConcurrencyStress, ThreadsOnOneJavaBackedAdapterEachSeeTheirOwnData) {
  KorISRAdapterImpl adapter(text("stress"));
  std::atomic<long> operations{0};
  const auto deadline = Clock::now() + runTime;
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

} // namespace
