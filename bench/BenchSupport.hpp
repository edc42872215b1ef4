#pragma once

#include <KorISRAdapterImpl.hpp>
#include <KorLog.hpp>
#include <KorLogSink.hpp>
#include <KorWstring.hpp>

#include <benchmark/benchmark.h>
#include <jni.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace bench {

// Creates the process's JVM (no -Xcheck:jni) with the registry jars.
void startJvm();

// Allocations the calling thread has made so far (operator new and malloc).
std::uint64_t allocations();
// Sets the counters allocations (per iteration) and, for a listing of items
// texts or records, allocations_per_item.
void countAllocations(benchmark::State& state, std::uint64_t count, double items);

// What one listing leaves in the heap once its caller keeps one text of it
// and drops the rest: keep runs on a fresh thread, attached to the JVM and
// with its allocator cache made first, and the heap in use (mallinfo2) is
// read before the thread ends; a run on a thread of its own comes first.
// Sets the counter bytes_held; the benchmark runs one iteration.
void measureHeld(benchmark::State& state, const std::function<void()>& keep);

KorWstring text(const std::string& utf8);
// prefix followed by index in six digits: names that sort like their index.
KorWstring numbered(const char* prefix, int index);
// A document of count ASCII characters.
KorWstring document(int count);

// The trace filter for one benchmark, restored afterwards. Off installs a
// sink that counts, so that any trace call an operation makes shows; on
// installs one that discards.
class TraceSetting {
public:
  explicit TraceSetting(int level);
  ~TraceSetting();
  TraceSetting(const TraceSetting&) = delete;
  TraceSetting& operator=(const TraceSetting&) = delete;

  // Sets the counter trace_records: records written per iteration.
  void report(benchmark::State& state) const;

private:
  struct CountingSink : KorLogSink {
    std::atomic<std::uint64_t> records{0};
    void write(const KorLogRecord&) override { records.fetch_add(1, std::memory_order_relaxed); }
  };
  struct DiscardingSink : KorLogSink {
    void write(const KorLogRecord&) override {}
  };

  int previousLevel_;
  std::shared_ptr<CountingSink> counter_;
  std::shared_ptr<KorLogSink> previousSink_;
};

// The reference Java registry behind the library's Java-backed adapter,
// brought to a given content before each benchmark; calls are serialised so
// that threads of one benchmark may all ask.
class JavaRegistry {
public:
  static JavaRegistry& instance();

  KorISRAdapterImpl& adapter() { return *adapter_; }

  // The registry holds exactly the BTDs numbered("btd", 0 .. count-1), the
  // policies numbered("policy", 0 .. 9) of type Security and the services
  // numbered("service", 0 .. 99).
  void holdBtds(int count);

private:
  JavaRegistry();

  std::unique_ptr<KorISRAdapterImpl> adapter_;
  int btds_ = 0;
};

inline constexpr int policyCount = 10;
inline constexpr int serviceCount = 100;
inline constexpr int documentLength = 200;

} // namespace bench
