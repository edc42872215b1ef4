#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorISRAdapterStub.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

#include <malloc.h>

#include <algorithm>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

// Each listing keeps one text and drops the rest, on a fresh thread: what the heap then holds beyond the
// start is what that text costs (nothing in memory, where it shares the stored one; one allocation from
// Java), plus whatever the listing left behind. The allowance is what the allocator caches for the thread
// (glibc's tcache counts as in use) and for Java the JVM's handle blocks, about 40 KB for 2,000 BTDs; texts
// kept together, or scratch kept for the thread, would hold 100 KB and more. Under -Xcheck:jni every local
// reference past a frame's capacity prints a warning with a stack, so the Java listing is shorter.
void expectKeptTextHoldsOnlyItself(KorISRAdapter& registry, int count, int allowance) {
  for (int i = 0; i < count; ++i) {
    KorWstring uri;
    registry.createBTD(KorWstringText::fromUtf8("retained-name-" + std::to_string(100000 + i)), {}, uri);
  }
  for (int listing = -1; listing < 2; ++listing) { // -1: the JVM's first compilations settle
    // The least of three fresh threads counts: the JVM's own threads (its compilers) allocate at times,
    // while what a listing keeps would show every time.
    long held = std::numeric_limits<long>::max();
    for (int attempt = 0; attempt < 3; ++attempt) {
      std::thread([&] {
        registry.btdExists(KorWstring()); // the thread's own costs (its malloc arena, its JVM attachment)
        const long before = static_cast<long>(mallinfo2().uordblks);
        const KorWstring kept = [&] { // the listing's own texts go with it
          KorWstring joined;
          std::vector<KorWstring> uris;
          return listing == 1 ? (registry.listBTDs(uris), uris.back()) : registry.getBTDNames(joined).back();
        }();
        held = std::min(held, static_cast<long>(mallinfo2().uordblks) - before);
        EXPECT_FALSE(kept.empty());
      }).join();
    }
    EXPECT_TRUE(listing < 0 || held <= allowance)
        << (listing == 1 ? "listBTDs " : "getBTDNames ") << held << " of " << count;
  }
}

using Retention = JvmTest;
TEST_F(Retention, AListingLeavesOnlyWhatTheCallerKeeps) {
  KorISRAdapterStub stub;
  expectKeptTextHoldsOnlyItself(stub, 100000, 16 * 1024);
  KorISRAdapterImpl adapter(KorWstringText::fromUtf8("retention"));
  expectKeptTextHoldsOnlyItself(adapter, 2000, 64 * 1024);
}

} // namespace
