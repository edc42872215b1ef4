#include "KorISRAdapterImpl.hpp"
#include "TestJvm.hpp"

#include <KorISRAdapterStub.hpp>
#include <KorWstringText.hpp>

#include <gtest/gtest.h>

#include <malloc.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

// Under -Xcheck:jni every local reference past a frame's capacity prints a
// warning with a stack, so the Java listing is shorter; a listing that kept
// its texts together would still hold tens of kilobytes.
const int inMemoryCount = 100000;
const int javaCount = 2000;
// What the allocator caches for the thread (glibc's tcache counts as in
// use), and for Java the JVM's handle blocks, which keep a listing's local
// references for the thread until it ends: about 40 KB for 2,000 BTDs. The
// texts kept together, or scratch kept for the thread, would hold 100 KB
// and more.
const long inMemoryAllowance = 16 * 1024;
const long javaAllowance = 64 * 1024;

long heapInUse() {
  return static_cast<long>(mallinfo2().uordblks);
}

// Each listing keeps one text and drops the rest, on a fresh thread: what the
// heap then holds beyond the start is what that text costs, plus whatever the
// listing left behind on the thread or elsewhere.
struct Row {
  const char* listing;
  std::function<KorWstring(KorISRAdapter&)> keepLast;
};
const Row rows[] = {
    {"getBTDNames",
     [](KorISRAdapter& registry) {
       KorWstring joined;
       return registry.getBTDNames(joined).back();
     }},
    {"listBTDs",
     [](KorISRAdapter& registry) {
       std::vector<KorWstring> uris;
       registry.listBTDs(uris);
       return uris.back();
     }},
};

void expectKeptTextHoldsOnlyItself(KorISRAdapter& registry, long allowance) {
  rows[0].keepLast(registry); // the JVM's first compilations settle
  for (const Row& row : rows) {
    SCOPED_TRACE(row.listing);
    long held = 0;
    std::thread([&] {
      // The thread's own costs (its malloc arena, its JVM attachment) come first.
      registry.btdExists(KorWstring());
      const long before = heapInUse();
      const KorWstring kept = row.keepLast(registry);
      held = heapInUse() - before;
      EXPECT_FALSE(kept.empty());
    }).join();
    EXPECT_LE(held, allowance);
  }
}

KorWstring name(int i) {
  return KorWstringText::fromUtf8("retained-name-" + std::to_string(100000 + i));
}

// A kept text shares the stored one, so it costs nothing.
TEST(Retention, AnInMemoryListingLeavesOnlyWhatTheCallerKeeps) {
  KorISRAdapterStub stub;
  for (int i = 0; i < inMemoryCount; ++i) {
    KorWstring uri;
    stub.createBTD(name(i), KorWstring(), uri);
  }
  expectKeptTextHoldsOnlyItself(stub, inMemoryAllowance);
}

// A kept text is one allocation of its own.
using JavaRetention = JvmTest;
TEST_F(JavaRetention, AJavaListingLeavesOnlyWhatTheCallerKeeps) {
  KorISRAdapterImpl adapter(KorWstringText::fromUtf8("retention"));
  for (int i = 0; i < javaCount; ++i) {
    KorWstring uri;
    adapter.createBTD(name(i), KorWstring(), uri);
  }
  expectKeptTextHoldsOnlyItself(adapter, javaAllowance);
}

} // namespace
