// One hostile case in its full size: what it ends in, how much processor time it takes, and how far the
// process's memory rises above what it was when the line or the directory stood ready.
//
//   hostile_case                       lists the names of the cases
//   hostile_case NAME [DIRECTORY]      runs one; some write to the directory
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
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

// In megabytes; Linux tells them in kilobytes.
double memory(const char *what) {
  const std::string status = contentOf("/proc/self/status");
  const size_t at = status.find(what);
  if (at == std::string::npos) throw std::runtime_error(std::string("no ") + what);
  return std::strtod(status.c_str() + at + std::strlen(what) + 1, nullptr) * 1024 / 1e6;
}

class Trial {
 public:
  // All stands ready: what follows is measured.
  void begin(size_t lineBytes) {
    bytes_ = lineBytes;
    makeFile("/proc/self/clear_refs", "5");  // the peak becomes what is held now
    held_ = memory("VmRSS");
    begin_ = std::clock();
    wmq_errno = 0;
  }
  void end(int error, int expected) {
    seconds_ = static_cast<double>(std::clock() - begin_) / CLOCKS_PER_SEC;
    rise_ = memory("VmHWM") - held_;
    error_ = error;
    if (error != expected) throw std::runtime_error("ends in " + std::to_string(error));
  }
  void print(const std::string &name) const {
    std::printf("%-26s %6.1f MB line  error %3d  %6.2f s  %7.1f MB\n", name.c_str(),
                static_cast<double>(bytes_) / 1e6, error_, seconds_, rise_);
  }

 private:
  size_t bytes_ = 0;
  double held_ = 0;
  std::clock_t begin_ = 0;
  double seconds_ = 0;
  double rise_ = 0;
  int error_ = 0;
};

void readAlone(Trial &trial, const std::string &line, int expected) {
  trial.begin(line.size());
  const OwnedRecord record = parse(line);
  trial.end(record == nullptr ? wmq_errno : 0, expected);
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
void readFromStream(Trial &trial, const std::string &directory) {
  const std::string line = hostileLines().front().ofSize(kLongLine);
  makeFile(directory + "/s", line);
  appendTo(directory + "/s", '\n' + logSwitchLine(7));
  openStream(directory, 0, 1);
  trial.begin(line.size());
  int lineNum = 0;
  const eventRecord *record = wmq_readstream(&lineNum);
  trial.end(record == nullptr ? wmq_errno : 0, 0);
  record = wmq_readstream(&lineNum);
  if (record == nullptr || record->type != EVENT_LOG_SWITCH)
    throw std::runtime_error("the line behind is lost");
  wmq_closestream();
}

// Until the 100th write, which rotates and removes all but two.
void rotate(Trial &trial, const std::string &directory) {
  for (int i = 1; i <= kLookAlikes; ++i) makeFile(directory + "/s." + std::to_string(i));
  openStream(directory, 1, 3);
  trial.begin(0);
  for (int32_t i = 0; i < 100; ++i) {
    eventRecord record = logSwitch(i);
    if (wmq_writestream(&record) != 0) throw std::runtime_error("a write fails");
  }
  trial.end(wmq_errno, WMQE_FILES_REMOVED);
  wmq_closestream();
  if (namesIn(directory).size() != 4) throw std::runtime_error("not as many files as there should be");
}

using Case = std::function<void(Trial &trial, const std::string &directory)>;

std::map<std::string, Case> cases() {
  std::map<std::string, Case> all;
  for (const HostileLine &hostile : hostileLines())
    all[std::string("line-") + hostile.name] = [hostile](Trial &trial, const std::string &) {
      readAlone(trial, hostile.ofSize(kLongLine), hostile.error);
    };
  const auto add = [&all](const std::string &name, std::string (*line)(), int error) {
    all[name] = [line, error](Trial &trial, const std::string &) { readAlone(trial, line(), error); };
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

void run(const std::string &name, const std::string &directory) {
  Trial trial;
  cases().at(name)(trial, directory);
  trial.print(name);
}

}  // namespace
}  // namespace wmq::testing

int main(int argc, char **argv) {
  try {
    if (argc > 1) {
      wmq::testing::run(argv[1], argc > 2 ? argv[2] : ".");
    } else {
      for (const auto &[name, run] : wmq::testing::cases()) std::printf("%s\n", name.c_str());
    }
    return 0;
  } catch (const std::exception &problem) {
    std::fprintf(stderr, "%s: %s\n", argv[0], problem.what());
    return 2;
  }
}
