#include "BenchSupport.hpp"

#include <KorJVM.hpp>
#include <KorJVMStartup.hpp>
#include <KorLogSink.hpp>
#include <KorWstringText.hpp>

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <sstream>
#include <thread>

namespace {

thread_local std::uint64_t threadAllocations = 0;

} // namespace

// Counting replacements: every allocation in the process, through operator
// new or the C allocator, passes through malloc, calloc or realloc here.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-inconsistent-declaration-parameter-name): glibc's own
// allocator and its names.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) noexcept {
  ++threadAllocations;
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  ++threadAllocations;
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) noexcept {
  ++threadAllocations;
  return __libc_realloc(memory, size);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-inconsistent-declaration-parameter-name)

void* operator new(std::size_t size) {
  if (void* memory = std::malloc(size != 0 ? size : 1)) {
    return memory;
  }
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace bench {

void startJvm() {
  KorJVMOptions options;
  std::stringstream classPath(LEGIORRUG_BENCH_CLASSPATH);
  for (std::string entry; std::getline(classPath, entry, ':');) {
    options.classPath.push_back(entry);
  }
  options.options = {"-Xms1g", "-Xmx1g", "-XX:+AlwaysPreTouch", "-Djava.awt.headless=true"};
  KorJVMStartup::create(options);
}

std::uint64_t allocations() {
  return threadAllocations;
}

void countAllocations(benchmark::State& state, std::uint64_t count, double items) {
  const double perIteration = static_cast<double>(count) / static_cast<double>(state.iterations());
  state.counters["allocations"] = perIteration;
  if (items > 0) {
    state.counters["allocations_per_item"] = perIteration / items;
  }
}

void measureHeld(benchmark::State& state, const std::function<void()>& keep) {
  const auto heapInUse = [] { return static_cast<double>(mallinfo2().uordblks); };
  // The JVM makes blocks for a listing's local references once, and a
  // thread that ends hands them to the next: a first run fills that pool.
  std::thread(keep).join();
  for (auto _ : state) {
    double held = 0;
    std::thread([&] {
      KorJVM::getEnvironment();
      std::free(std::malloc(1));
      const double before = heapInUse();
      keep();
      held = heapInUse() - before;
    }).join();
    state.counters["bytes_held"] = held;
  }
}

KorWstring text(const std::string& utf8) {
  return KorWstringText::fromUtf8(utf8);
}

KorWstring numbered(const char* prefix, int index) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%06d", index);
  return text(std::string(prefix) + digits);
}

KorWstring document(int count) {
  std::string body = "<doc>";
  while (static_cast<int>(body.size()) < count - 6) {
    body += 'x';
  }
  return text(body + "</doc>");
}

TraceSetting::TraceSetting(int level) : previousLevel_(KorLog::iEffectiveLogFilter.exchange(level)) {
  if (level == 0) {
    counter_ = std::make_shared<CountingSink>();
    previousSink_ = KorLogSink::install(counter_);
  } else {
    previousSink_ = KorLogSink::install(std::make_shared<DiscardingSink>());
  }
}

TraceSetting::~TraceSetting() {
  KorLogSink::install(previousSink_);
  KorLog::iEffectiveLogFilter = previousLevel_;
}

void TraceSetting::report(benchmark::State& state) const {
  if (counter_ != nullptr) {
    state.counters["trace_records"] =
        static_cast<double>(counter_->records.load()) / static_cast<double>(state.iterations());
  }
}

JavaRegistry& JavaRegistry::instance() {
  static JavaRegistry registry;
  return registry;
}

JavaRegistry::JavaRegistry() : adapter_(std::make_unique<KorISRAdapterImpl>(text("bench"))) {
  KorWstring uri;
  const KorWstring type = text("Security");
  for (int i = 0; i < policyCount; ++i) {
    adapter_->createPolicy(type, numbered("policy", i), document(documentLength), uri);
  }
  for (int i = 0; i < serviceCount; ++i) {
    adapter_->createService(numbered("service", i), text("urn:bench"), document(documentLength));
  }
}

void JavaRegistry::holdBtds(int count) {
  static std::mutex lock;
  std::lock_guard<std::mutex> guard(lock);
  const KorWstring content = document(documentLength);
  KorWstring uri;
  for (; btds_ < count; ++btds_) {
    adapter_->createBTD(numbered("btd", btds_), content, uri);
  }
  for (; btds_ > count; --btds_) {
    adapter_->deleteBTD(numbered("btd", btds_ - 1));
  }
}

} // namespace bench
