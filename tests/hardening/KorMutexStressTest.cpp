#include <KorMutex.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

const int threadCount = 12;
const int roundsPerThread = 2000;

// Many threads take the mutex, some without limit and some with a short
// limit, each to a recursive depth of its own; whoever holds it must be
// alone inside, and every increment made inside must count.
TEST(KorMutexStress, RecursiveHoldsTimedWaitsAndManyWaiters) {
  KorMutex mutex;
  long counter = 0; // guarded by mutex
  int inside = 0;   // guarded by mutex
  std::atomic<long> acquired{0};
  std::atomic<long> timedOut{0};
  std::vector<std::thread> threads;
  threads.reserve(threadCount);
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < roundsPerThread; ++round) {
        const int timeoutMs = (t + round) % 3 == 0 ? 1 : -1;
        const int result = mutex.lock(timeoutMs);
        ASSERT_NE(result, -1);
        if (result == 0) {
          ASSERT_NE(timeoutMs, -1) << "only a timed lock gives up";
          ++timedOut;
          continue;
        }
        ++acquired;
        ASSERT_EQ(++inside, 1) << "two holders at once";
        const int depth = 1 + (t + round) % 4;
        for (int level = 1; level < depth; ++level) {
          ASSERT_EQ(mutex.lock(timeoutMs), 1) << "the owner relocks at once";
        }
        ++counter;
        if (round % 64 == 0) {
          // A longer hold, so that the timed waiters meanwhile give up.
          std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        for (int level = 1; level < depth; ++level) {
          ASSERT_EQ(mutex.unlock(), 1);
        }
        --inside;
        ASSERT_EQ(mutex.unlock(), 1);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(counter, acquired.load());
  EXPECT_EQ(acquired.load() + timedOut.load(), long{threadCount} * roundsPerThread);
  EXPECT_EQ(mutex.lock(0), 1) << "free again at the end";
  EXPECT_EQ(mutex.unlock(), 1);
  std::printf("mutex stress: %d threads, %ld holds, %ld timed waits gave up\n", threadCount, acquired.load(),
              timedOut.load());
}

} // namespace
