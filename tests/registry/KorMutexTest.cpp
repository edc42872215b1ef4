#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorMutex.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
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
// fails, is logged and changes nothing, and so does a negative limit other
// than -1 whose deadline falls to negative nanoseconds.
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
  for (timeval now{}; gettimeofday(&now, nullptr) == 0 && now.tv_usec > 400000;) {
    std::this_thread::sleep_for(milliseconds(50));
  }
  EXPECT_EQ(lockElsewhere(mutex, -500), -1);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 1);
  KorLogSink::install(nullptr);
  const auto& records = capture->records();
  ASSERT_EQ(records.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(records[i].kind, KorLogKind::systemError);
    EXPECT_NE(toString(records[i]).find("\"include/KorMutex\""), std::string::npos) << toString(records[i]);
    EXPECT_NE(toString(records[i])
                  .find(i < 2 ? "\"Relayed by KorMutex::unlock\"" : "\"Relayed by KorMutex::lock\""),
              std::string::npos);
  }
}

std::vector<std::int32_t> fieldsAfter(const char* eyeCatcher, int count) {
  std::vector<std::int32_t> fields(count);
  return std::memcpy(fields.data(), eyeCatcher + 8, count * sizeof(std::int32_t)), fields;
}

// A memory dump reads the headers of the mutex and of the scoped lock, and
// tells a destroyed mutex from a live one.
TEST(KorMutexTest, DumpFields) {
  alignas(KorMutex) char storage[sizeof(KorMutex)];
  auto* mutex = new (storage) KorMutex;
  const std::string_view bytes(storage, sizeof storage);
  ASSERT_NE(bytes.find(">DRXDDIM"), std::string_view::npos);
  EXPECT_EQ(fieldsAfter(storage + bytes.find(">DRXDDIM"), 3),
            (std::vector<std::int32_t>{8, sizeof(KorMutex), 1}));
  alignas(KorMutexLock) char lockStorage[sizeof(KorMutexLock)];
  auto* lock = new (lockStorage) KorMutexLock(*mutex);
  EXPECT_EQ(std::string_view(lockStorage, 8), ">DRXDDII");
  EXPECT_EQ(fieldsAfter(lockStorage, 2), (std::vector<std::int32_t>{0, 32}));
  lock->~KorMutexLock();
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
