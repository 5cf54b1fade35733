#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <exception>

#include "launcher.h"
#include "suites.h"

int main(int argc, char **argv) {
  // Pages that go back to the system after each large record would be what is measured there, for all alike.
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  try {
    wmq::bench::startLauncher();
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
