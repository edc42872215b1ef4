#include "RegistryTestSupport.hpp"

#include <KorMutex.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// lock(timeoutMs) from a thread of its own, which unlocks again when it got
// the mutex.
int lockElsewhere(KorMutex& mutex, int timeoutMs) {
  return std::async(std::launch::async,
                    [&mutex, timeoutMs] {
                      const int result = mutex.lock(timeoutMs);
                      if (result == 1) {
                        mutex.unlock();
                      }
                      return result;
                    })
      .get();
}

// Holds the mutex on a thread of its own until release() is called.
class Holder {
public:
  explicit Holder(KorMutex& mutex)
      : thread_([this, &mutex] {
          locked_.set_value(mutex.lock(-1));
          release_.get_future().wait();
          mutex.unlock();
        }) {
    EXPECT_EQ(locked_.get_future().get(), 1);
  }
  ~Holder() {
    release();
    thread_.join();
  }
  void release() {
    if (!released_) {
      released_ = true;
      release_.set_value();
    }
  }

private:
  std::promise<int> locked_;
  std::promise<void> release_;
  bool released_ = false;
  std::thread thread_;
};

class KorMutexTest : public KorTraceFixture {
protected:
  KorMutex mutex;
};

TEST_F(KorMutexTest, OwnerRelocksAndMustUnlockAsOften) {
  EXPECT_EQ(mutex.lock(-1), 1);
  // Without recursion the owner would wait on itself: fail before a lock(-1) could hang.
  ASSERT_EQ(mutex.lock(0), 1);
  EXPECT_EQ(mutex.lock(-1), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 0);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 0);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 1);
}

TEST_F(KorMutexTest, TimedLockGivesUpAfterItsLimit) {
  Holder holder(mutex);
  const auto start = Clock::now();
  EXPECT_EQ(mutex.lock(400), 0);
  // The deadline is wall-clock time; allow for the two clocks' granularity.
  EXPECT_GE(Clock::now() - start, milliseconds(350));
}

TEST_F(KorMutexTest, TimedLockSucceedsWhenReleasedInTime) {
  Holder holder(mutex);
  auto waiter = std::async(std::launch::async, [this] {
    const int result = mutex.lock(20000);
    if (result == 1) {
      mutex.unlock();
    }
    return result;
  });
  std::this_thread::sleep_for(milliseconds(200));
  holder.release();
  ASSERT_EQ(waiter.wait_for(std::chrono::seconds(15)), std::future_status::ready);
  EXPECT_EQ(waiter.get(), 1);
}

TEST_F(KorMutexTest, UnlockByANonOwnerFailsLoggedAndChangesNothing) {
  EXPECT_EQ(mutex.unlock(), 0); // free: nobody owns it
  EXPECT_EQ(mutex.lock(-1), 1);
  const int foreignUnlock = std::async(std::launch::async, [this] { return mutex.unlock(); }).get();
  EXPECT_EQ(foreignUnlock, 0);
  EXPECT_EQ(lockElsewhere(mutex, 0), 0);
  EXPECT_EQ(mutex.unlock(), 1);
  EXPECT_EQ(lockElsewhere(mutex, 0), 1);

  const std::vector<KorLogRecord> records = capture->records();
  ASSERT_EQ(records.size(), 2U);
  for (const KorLogRecord& record : records) {
    EXPECT_EQ(record.kind, KorLogKind::systemError);
    ASSERT_FALSE(record.inserts.empty());
    EXPECT_EQ(record.inserts.front().toUtf8(), "include/KorMutex");
    EXPECT_NE(describe(record).find("\"Relayed by KorMutex::unlock\""), std::string::npos)
        << describe(record);
  }
}

TEST_F(KorMutexTest, ScopedLockHoldsForItsScope) {
  {
    KorMutexLock lock(mutex);
    EXPECT_EQ(lockElsewhere(mutex, 0), 0);
    KorMutexLock nested(mutex);
  }
  EXPECT_EQ(lockElsewhere(mutex, 0), 1);
}

} // namespace
