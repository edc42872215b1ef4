#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorMutex.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <new>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

// lock(timeoutMs) on a thread of its own, which unlocks again when it got the mutex.
int lockElsewhere(KorMutex& mutex, int timeoutMs) {
  auto attempt = [&mutex, timeoutMs] {
    const int result = mutex.lock(timeoutMs);
    return result == 1 ? mutex.unlock() : result;
  };
  return std::async(std::launch::async, attempt).get();
}

// The owner relocks and must unlock as often; an unlock by another thread
// fails, is logged and changes nothing.
TEST(KorMutexTest, OnlyTheOwnerRelocksAndUnlocks) {
  auto capture = std::make_shared<KorLogCapture>();
  KorLogSink::install(capture);
  KorMutex mutex;
  EXPECT_EQ(mutex.unlock(), 0);
  EXPECT_EQ(mutex.lock(-1), 1);
  ASSERT_EQ(mutex.lock(0), 1) << "the owner relocks at once";
  EXPECT_EQ(std::async(std::launch::async, [&mutex] { return mutex.unlock(); }).get(), 0);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 0);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 1);
  KorLogSink::install(nullptr);
  ASSERT_EQ(capture->records().size(), 2U);
  for (const KorLogRecord& record : capture->records()) {
    EXPECT_EQ(record.kind, KorLogKind::systemError);
    EXPECT_NE(toString(record).find("\"include/KorMutex\""), std::string::npos) << toString(record);
    EXPECT_NE(toString(record).find("\"Relayed by KorMutex::unlock\""), std::string::npos);
  }
}

// A memory dump tells a destroyed mutex from a live one.
TEST(KorMutexTest, DestructionMarksTheEyeCatcher) {
  alignas(KorMutex) char storage[sizeof(KorMutex)];
  auto* mutex = new (storage) KorMutex;
  const std::string_view bytes(storage, sizeof storage);
  EXPECT_NE(bytes.find(">DRXDDIM"), std::string_view::npos);
  mutex->~KorMutex();
  EXPECT_NE(bytes.find("0DRXDDIM"), std::string_view::npos);
}

TEST(KorMutexTest, TimedLockGivesUpAfterItsLimitOrGetsTheReleasedMutex) {
  KorMutex mutex;
  std::future<int> waiter;
  {
    KorMutexLock lock(mutex);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(lockElsewhere(mutex, 400), 0);
    // The deadline is wall-clock time; allow for the two clocks' granularity.
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, milliseconds(350));
    EXPECT_LT(waited, std::chrono::seconds(3)) << "a generous bound, for a loaded machine";
    waiter = std::async(std::launch::async, [&mutex] { return lockElsewhere(mutex, 20000); });
    std::this_thread::sleep_for(milliseconds(200));
  }
  EXPECT_EQ(waiter.get(), 1);
}

// Threads take the mutex, a third of the time with a short limit, each time
// to a recursive depth of its own; the holder must be alone inside.
TEST(KorMutexStress, RecursiveHoldsTimedWaitsAndManyWaiters) {
  KorMutex mutex;
  int inside = 0; // guarded by mutex
  std::vector<std::thread> threads(12);
  for (int t = 0; t < 12; ++t) {
    threads[t] = std::thread([&, t] {
      for (int round = 0; round < 2000; ++round) {
        const int timeoutMs = (t + round) % 3 == 0 ? 1 : -1, depth = 1 + (t + round) % 4;
        const int result = mutex.lock(timeoutMs);
        ASSERT_TRUE(result == 1 || (result == 0 && timeoutMs != -1)) << result; // only a timed lock gives up
        if (result == 1) {
          ASSERT_EQ(++inside, 1) << "two holders at once";
          for (int level = 1; level < depth; ++level) {
            ASSERT_EQ(mutex.lock(timeoutMs), 1) << "the owner relocks at once";
          }
          if (round % 64 == 0) {
            std::this_thread::sleep_for(milliseconds(2)); // so that the timed waiters meanwhile give up
          }
          --inside;
          for (int level = 0; level < depth; ++level) {
            ASSERT_EQ(mutex.unlock(), 1);
          }
        }
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(lockElsewhere(mutex, 0), 1) << "free again at the end";
}

} // namespace
