// sync_cost DIRECTORY: what wmq_syncstream costs on the disk of a directory, after each record and after
// more.
//
// The first table is the one in docs/durability.md. A second table tells what the disk takes for the same
// bytes without the library: write(2) and fsync(2).
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "wmq/wmq.h"

namespace {

constexpr int kSyncs = 300;
constexpr int kMostRecords = 300'000;

[[noreturn]] void giveUp(const char *what) {
  std::fprintf(stderr, "sync_cost: %s: %s\n", what, std::strerror(errno));
  std::exit(3);
}

double microseconds(const std::function<void()> &action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
}

double at(std::vector<double> &times, double share) {
  std::sort(times.begin(), times.end());
  return times[static_cast<size_t>(share * static_cast<double>(times.size() - 1))];
}

eventRecord jobStatus() {
  eventRecord record{};
  record.type = EVENT_JOB_STATUS;
  record.eventTime = 1700000000;
  record.eventLog.jobStatusLog.jobId = 7;
  record.eventLog.jobStatusLog.jStatus = 64;
  return record;
}

// `write` and `sync` stand for whoever does it; `records` of them come before each sync, 0: no sync at all.
void measure(int records, const std::function<void()> &write, const std::function<void()> &sync) {
  std::vector<double> syncs;
  const int rounds = records == 0 ? kMostRecords : std::min(kSyncs, kMostRecords / records);
  const double whole = microseconds([&] {
    for (int round = 0; round < rounds; ++round) {
      for (int i = 0; i < std::max(records, 1); ++i) write();
      if (records > 0) syncs.push_back(microseconds(sync));
    }
  });
  const double perRecord = whole / (rounds * std::max(records, 1));
  if (records == 0)
    std::printf("%12s %14.2f %14s %14s\n", "none", perRecord, "", "");
  else
    std::printf("%12d %14.2f %14.0f %14.0f\n", records, perRecord, at(syncs, 0.5), at(syncs, 0.95));
}

void table(const char *who, const std::function<void()> &write, const std::function<void()> &sync) {
  std::printf("%s\n%12s %14s %14s %14s\n", who, "records/sync", "us/record", "us/sync median",
              "us/sync 95 %");
  for (const int records : {0, 1, 10, 100, 1000}) measure(records, write, sync);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fputs("usage: sync_cost DIRECTORY\n", stderr);
    return 2;
  }
  std::string path = std::string(argv[1]) + "/sync_cost.stream";
  streamParams params{};
  params.fileName = path.data();
  params.maxStreamFileNum = 2;
  if (wmq_openstream(&params) != 0) giveUp(path.c_str());
  eventRecord record = jobStatus();
  table(
      "wmq_writestream, wmq_syncstream, JOB_STATUS",
      [&] {
        if (wmq_writestream(&record) != 0) giveUp("wmq_writestream");
      },
      [] {
        if (wmq_syncstream() != 0) giveUp("wmq_syncstream");
      });
  wmq_closestream();
  unlink(path.c_str());

  char *line = nullptr;
  size_t length = 0;
  if (wmq_formatrecord(&record, &line, &length) != 0) giveUp("wmq_formatrecord");
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (file < 0) giveUp(path.c_str());
  table(
      "write, fsync, the same bytes",
      [&] {
        if (write(file, line, length) != static_cast<ssize_t>(length)) giveUp("write");
      },
      [&] {
        if (fsync(file) != 0) giveUp("fsync");
      });
  close(file);
  unlink(path.c_str());
  std::free(line);
  return 0;
}
