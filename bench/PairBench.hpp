#pragma once

#include <functional>
#include <memory>
#include <string>

namespace bench {

// One operation of one side, and what must live while both sides run.
struct PairSides {
  std::function<void()> library;
  std::function<void()> floor;
  std::shared_ptr<void> keep;
};

// Registers pair/NAME: the library and its floor alternating in short batches
// on one thread, the ratio taken per pair of batches. Counters: ratio (the
// median; scripts/bench takes its interval over processes), bound (0 for
// none), library_ns and floor_ns (medians per operation) and pairs. prepare runs
// when the pair does; java says whether it needs the JVM. fill, if given,
// builds what the pair measures against, before the first selected pair runs.
void registerPair(const std::string& name, double bound, bool java, std::function<PairSides()> prepare,
                  std::function<void()> fill = {});

// Runs the pairs whose names contain filter (those at a scale below 10,000)
// in five windows of a fixed number of operations per side, each window
// between callgrind's client requests, which dump it as "NAME library|floor
// OPERATIONS". Outside valgrind the requests do nothing.
void countInstructions(const std::string& filter);

} // namespace bench
