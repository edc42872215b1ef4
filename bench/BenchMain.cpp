#include "BenchSupport.hpp"

#include <benchmark/benchmark.h>

// The JVM must exist before any benchmark runs; the in-memory ones share the
// process with it, as they would in a broker.
int main(int argc, char** argv) {
  bench::startJvm();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
