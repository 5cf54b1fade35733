// The program wmq on whole streams, beside others that go through the same files. Each run is a process of
// its own, whose time and peak memory are taken.
#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "launcher.h"
#include "suites.h"

namespace wmq::bench {
namespace {

size_t sizeOf(const std::string &path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) throw std::runtime_error("no file " + path);
  return static_cast<size_t>(status.st_size);
}

void add(const std::string &name, const std::vector<std::string> &command) {
  const size_t size = sizeOf(command.back());
  benchmark::RegisterBenchmark(("tool/" + name).c_str(),
                               [=](benchmark::State &state) {
                                 for (auto _ : state) {
                                   const Usage usage = runCommand(command);
                                   state.SetIterationTime(usage.seconds);
                                   state.counters["cpu_seconds"] = usage.cpuSeconds;
                                   state.counters["peak_kilobytes"] = usage.peakKilobytes;
                                 }
                                 state.SetBytesProcessed(static_cast<int64_t>(size) * state.iterations());
                               })
      ->UseManualTime()
      ->Iterations(1);
}

}  // namespace

// The directory that script/bench fills: a stream, its beginning, and that as JSON.
void addTools() {
  const char *given = std::getenv("WMQ_BENCH_STREAMS");
  if (given == nullptr) return;
  const std::string directory = given;
  const std::string wmq = WMQ_BENCH_PROGRAM;
  for (const std::string size : {"small", "large"}) {
    const std::string stream = directory + '/' + size;
    add("stats/" + size, {wmq, "stats", stream});
    add("decode/" + size, {wmq, "decode", stream});
    add("wc/" + size, {"wc", "-l", stream});
  }
  for (const std::string threads : {"1", "2"}) {
    add("stats/small_on_" + threads, {wmq, "stats", "-j", threads, directory + "/small"});
    add("decode/small_on_" + threads, {wmq, "decode", "-j", threads, directory + "/small"});
  }
  add("decode/one_type", {wmq, "decode", "--type", "JOB_FINISH", directory + "/small"});
  add("encode/small", {wmq, "encode", directory + "/small.json"});
  add("jq/small", {"jq", "-c", ".type", directory + "/small.json"});
  add("simdjson/small", {WMQ_BENCH_COUNTER, directory + "/small.json"});
}

}  // namespace wmq::bench
