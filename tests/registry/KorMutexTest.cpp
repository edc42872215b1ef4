#include <KorLog.hpp>
#include <KorMutex.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

namespace {

using std::chrono::milliseconds;

// lock(timeoutMs) on a thread of its own, which unlocks again when it got the mutex.
int lockElsewhere(KorMutex& mutex, int timeoutMs) {
  return std::async(std::launch::async,
                    [&mutex, timeoutMs] {
                      const int result = mutex.lock(timeoutMs);
                      return result == 1 ? mutex.unlock() : result;
                    })
      .get();
}

// Holds the mutex on a thread of its own until released.
std::future<void> holdElsewhere(KorMutex& mutex, const std::shared_future<void>& release) {
  std::promise<void> locked;
  auto held = locked.get_future();
  auto holder = std::async(std::launch::async, [&mutex, release, locked = std::move(locked)]() mutable {
    mutex.lock(-1);
    locked.set_value();
    release.wait();
    mutex.unlock();
  });
  held.wait();
  return holder;
}

TEST(KorMutexTest, OwnerRelocksAndMustUnlockAsOften) {
  KorMutex mutex;
  EXPECT_EQ(mutex.lock(-1), 1);
  ASSERT_EQ(mutex.lock(0), 1) << "the owner relocks at once";
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 0);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 1);
  {
    KorMutexLock lock(mutex);
    EXPECT_EQ(lockElsewhere(mutex, 0), 0);
  }
  EXPECT_EQ(lockElsewhere(mutex, 0), 1);
}

TEST(KorMutexTest, TimedLockGivesUpAfterItsLimitOrGetsTheReleasedMutex) {
  KorMutex mutex;
  std::promise<void> release;
  auto holder = holdElsewhere(mutex, release.get_future().share());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(mutex.lock(400), 0);
  // The deadline is wall-clock time; allow for the two clocks' granularity.
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, milliseconds(350));
  EXPECT_LT(waited, std::chrono::seconds(3)) << "a generous bound, for a loaded machine";
  auto waiter = std::async(std::launch::async, [&mutex] { return lockElsewhere(mutex, 20000); });
  std::this_thread::sleep_for(milliseconds(200));
  release.set_value();
  EXPECT_EQ(waiter.get(), 1);
}

TEST(KorMutexTest, UnlockByANonOwnerFailsLoggedAndChangesNothing) {
  auto capture = std::make_shared<KorLogCapture>();
  KorLog::setSink(capture);
  KorMutex mutex;
  EXPECT_EQ(mutex.unlock(), 0);
  EXPECT_EQ(mutex.lock(-1), 1);
  EXPECT_EQ(std::async(std::launch::async, [&mutex] { return mutex.unlock(); }).get(), 0);
  EXPECT_EQ(lockElsewhere(mutex, 0), 0);
  EXPECT_EQ(mutex.unlock(), 1);
  KorLog::setSink(nullptr);
  ASSERT_EQ(capture->records().size(), 2U);
  for (const KorLogRecord& record : capture->records()) {
    EXPECT_EQ(record.kind, KorLogKind::systemError);
    EXPECT_NE(toString(record).find("\"include/KorMutex\""), std::string::npos) << toString(record);
    EXPECT_NE(toString(record).find("\"Relayed by KorMutex::unlock\""), std::string::npos);
  }
}

} // namespace
