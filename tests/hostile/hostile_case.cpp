// One hostile case in its full size: what it ends in, how long it takes, and the peak of the process's memory.
//
//   hostile_case                       lists the names of the cases
//   hostile_case NAME [DIRECTORY]      runs one; some write to the directory
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

#include "hostile/hostile_lines.h"
#include "support/small_records.h"
#include "support/text_files.h"
#include "wmq/stream.h"

namespace wmq::testing {
namespace {

constexpr size_t kLongLine = 200'000'000;
constexpr size_t kLongString = 100'000'000;
constexpr size_t kHosts = 10'000'000;
constexpr int kLookAlikes = 200'000;

struct Outcome {
  size_t bytes;  // of the line
  int error;
  int expected;
};

double peakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

void readAlone(const std::string &line, int expected, Outcome &outcome) {
  const OwnedRecord record = parse(line);
  outcome = {line.size(), record == nullptr ? wmq_errno : 0, expected};
}

std::string openStream(const std::string &directory, int32_t size, int32_t oldFiles) {
  std::string path = directory + "/s";
  streamParams params{};
  params.fileName = path.data();
  params.maxStreamSize = size;
  params.maxStreamFileNum = oldFiles;
  if (wmq_openstream(&params) != 0) throw std::runtime_error("cannot open " + path);
  return path;
}

// A line behind it is read as if nothing had been.
void readFromStream(const std::string &directory, Outcome &outcome) {
  const std::string line = hostileLines().front().ofSize(kLongLine);
  makeFile(directory + "/s", line + '\n' + logSwitchLine(7));
  openStream(directory, 0, 1);
  int lineNum = 0;
  wmq_errno = 0;
  const eventRecord *record = wmq_readstream(&lineNum);
  outcome = {line.size(), record == nullptr ? wmq_errno : 0, 0};
  record = wmq_readstream(&lineNum);
  if (record == nullptr || record->type != EVENT_LOG_SWITCH)
    throw std::runtime_error("the line behind is lost");
  wmq_closestream();
}

// Until the 100th write, which rotates and removes all but two.
void rotate(const std::string &directory, Outcome &outcome) {
  for (int i = 1; i <= kLookAlikes; ++i) makeFile(directory + "/s." + std::to_string(i));
  openStream(directory, 1, 3);
  wmq_errno = 0;
  for (int32_t i = 0; i < 100; ++i) {
    eventRecord record = logSwitch(i);
    if (wmq_writestream(&record) != 0) throw std::runtime_error("a write fails");
  }
  outcome = {0, wmq_errno, WMQE_FILES_REMOVED};
  wmq_closestream();
  if (namesIn(directory).size() != 4) throw std::runtime_error("not as many files as there should be");
}

using Case = std::function<void(const std::string &directory, Outcome &outcome)>;

std::map<std::string, Case> cases() {
  std::map<std::string, Case> all;
  for (const HostileLine &hostile : hostileLines())
    all[std::string("line-") + hostile.name] = [hostile](const std::string &, Outcome &outcome) {
      readAlone(hostile.ofSize(kLongLine), hostile.error, outcome);
    };
  const auto add = [&all](const std::string &name, std::string (*line)(), int error) {
    all[name] = [line, error](const std::string &, Outcome &outcome) { readAlone(line(), error, outcome); };
  };
  add(
      "string-of-100-MB", [] { return hostileLines().front().ofSize(kLongString); }, 0);
  add(
      "hosts-named", [] { return lineOfHosts(kHosts); }, 0);
  add(
      "hosts-multiplied", [] { return lineOfTimes(std::to_string(kHosts)); }, 0);
  add(
      "hosts-most", [] { return lineOfTimes("16777216"); }, 0);
  add(
      "hosts-too-many", [] { return lineOfTimes("1000000000"); }, WMQE_BAD_FORMAT);
  all["stream-long-line"] = readFromStream;
  all["stream-look-alikes"] = rotate;
  return all;
}

int run(const std::string &name, const std::string &directory) {
  Outcome outcome{};
  const double before = peakMegabytes();
  const auto begin = std::chrono::steady_clock::now();
  cases().at(name)(directory, outcome);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  std::printf("%-26s %8.1f MB line  error %3d  %6.2f s  peak %7.1f MB\n", name.c_str(),
              static_cast<double>(outcome.bytes) / 1e6, outcome.error, seconds, peakMegabytes() - before);
  return outcome.error == outcome.expected ? 0 : 1;
}

}  // namespace
}  // namespace wmq::testing

int main(int argc, char **argv) {
  try {
    if (argc > 1) return wmq::testing::run(argv[1], argc > 2 ? argv[2] : ".");
    for (const auto &[name, run] : wmq::testing::cases()) std::printf("%s\n", name.c_str());
    return 0;
  } catch (const std::exception &problem) {
    std::fprintf(stderr, "%s: %s\n", argv[0], problem.what());
    return 2;
  }
}
