#include "BenchSupport.hpp"
#include "PairBench.hpp"

#include <benchmark/benchmark.h>

#include <cstring>

// The JVM must exist before any benchmark runs; the in-memory ones share the
// process with it, as they would in a broker. --instructions[=FILTER] runs
// the pairs for callgrind instead, starting the JVM only for a Java pair.
int main(int argc, char** argv) {
  const char* const instructions = "--instructions";
  if (argc == 2 && std::strncmp(argv[1], instructions, std::strlen(instructions)) == 0) {
    const char* filter = std::strchr(argv[1], '=');
    bench::countInstructions(filter != nullptr ? filter + 1 : "");
    return 0;
  }
  bench::startJvm();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
