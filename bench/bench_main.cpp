#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "suites.h"

int main(int argc, char **argv) {
  try {
    wmq::bench::addReading();
    wmq::bench::addWriting();
    wmq::bench::addTools();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
  } catch (const std::exception &error) {
    std::fprintf(stderr, "wmq_bench: %s\n", error.what());
    return 1;
  }
}
