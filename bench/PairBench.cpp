#include "PairBench.hpp"

#include "BenchSupport.hpp"

#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <regex>
#include <vector>

namespace bench {
namespace {

struct Pair {
  std::string name;
  double bound;
  bool java;
  std::function<PairSides()> prepare;
  std::function<void()> fill;
};

// A deque: each benchmark keeps a reference to its pair.
std::deque<Pair>& pairs() {
  static std::deque<Pair> all;
  return all;
}

double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double batch(const std::function<void()>& operation, std::size_t count) {
  const double start = threadSeconds();
  for (std::size_t i = 0; i < count; ++i) {
    operation();
  }
  return threadSeconds() - start;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

double setting(const char* name, double otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr ? std::atof(value) : otherwise;
}

// The selected pairs' stores are built before any pair runs, in a heap no pair
// has used yet. Built at their pair's turn, in the process's own order of the
// pairs, they lay among what earlier pairs had freed, and lookups at a million
// entries read anywhere from 0.25 to 1.55 of std::map's time.
void fillSelected() {
  static const bool filled = [] {
    std::string filter = benchmark::GetBenchmarkFilter();
    const bool excluding = !filter.empty() && filter[0] == '-';
    filter = excluding ? filter.substr(1) : filter == "all" ? "" : filter;
    const std::regex selected(filter, std::regex::extended);
    for (const Pair& pair : pairs()) {
      if (pair.fill && std::regex_search("pair/" + pair.name + "/iterations:1", selected) != excluding) {
        pair.fill();
      }
    }
    return true;
  }();
  static_cast<void>(filled);
}

// Batches of at least 200 µs of the library side; pairs until BENCH_PAIR_SECONDS
// of thread time (default 1), at least 31 and at most 1000. Batches alternate
// which side goes first, so that neither always follows the other.
void runPair(benchmark::State& state, const Pair& pair) {
  fillSelected();
  const PairSides sides = pair.prepare();
  for (int i = 0; i < 3; ++i) {
    sides.library();
    sides.floor();
  }
  std::size_t count = 1;
  while (count < (1U << 20) && batch(sides.library, count) < 2e-4) {
    count *= 2;
  }
  const double budget = setting("BENCH_PAIR_SECONDS", 1.0);
  std::vector<double> ratios, library, floor;
  for (auto _ : state) {
    const double start = threadSeconds();
    while (ratios.size() < 1000 && (ratios.size() < 31 || threadSeconds() - start < budget)) {
      const bool libraryFirst = ratios.size() % 2 == 0;
      const double first = batch(libraryFirst ? sides.library : sides.floor, count);
      const double second = batch(libraryFirst ? sides.floor : sides.library, count);
      library.push_back((libraryFirst ? first : second) / static_cast<double>(count));
      floor.push_back((libraryFirst ? second : first) / static_cast<double>(count));
      ratios.push_back(library.back() / floor.back());
    }
  }
  state.counters["ratio"] = median(ratios);
  state.counters["bound"] = pair.bound;
  state.counters["library_ns"] = median(library) * 1e9;
  state.counters["floor_ns"] = median(floor) * 1e9;
  state.counters["pairs"] = static_cast<double>(ratios.size());
}

} // namespace

void registerPair(const std::string& name, double bound, bool java, std::function<PairSides()> prepare,
                  std::function<void()> fill) {
  pairs().push_back({name, bound, java, std::move(prepare), std::move(fill)});
  benchmark::RegisterBenchmark(("pair/" + name).c_str(), [&pair = pairs().back()](benchmark::State& state) {
    runPair(state, pair);
  })->Iterations(1);
}

void countInstructions(const std::string& filter) {
  static const std::regex large("/[0-9]{5,}(/|$)");
  bool jvm = false;
  for (const Pair& pair : pairs()) {
    if (pair.name.find(filter) == std::string::npos || std::regex_search(pair.name, large)) {
      continue;
    }
    if (pair.java && !jvm) {
      startJvm();
      jvm = true;
    }
    const PairSides sides = pair.prepare();
    constexpr int operations = 20;
    for (const auto& [side, operation] :
         {std::pair{"library", &sides.library}, std::pair{"floor", &sides.floor}}) {
      for (int i = 0; i < 50; ++i) {
        (*operation)();
      }
      // Several windows, so that one without a collection in the JVM shows.
      const std::string label = pair.name + " " + side + " " + std::to_string(operations);
      for (int window = 0; window < 5; ++window) {
        CALLGRIND_ZERO_STATS;
        for (int i = 0; i < operations; ++i) {
          (*operation)();
        }
        CALLGRIND_DUMP_STATS_AT(label.c_str());
      }
    }
  }
}

} // namespace bench
