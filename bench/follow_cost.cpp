// follow_cost DIRECTORY [FOLLOWERS [SECONDS]]: how soon a follower has what was written, what waiting costs,
// and whether many followers keep up.
//
// The figures are those in docs/following.md.
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "wmq/wmq.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWrites = 1000;
constexpr int kPerSecond = 5000;

[[noreturn]] void giveUp(const char *what) {
  std::fprintf(stderr, "follow_cost: %s: %s\n", what, std::strerror(errno));
  std::exit(3);
}

double secondsBetween(Clock::time_point begin, Clock::time_point end) {
  return std::chrono::duration<double>(end - begin).count();
}

void writeRecord(int number) {
  eventRecord record{};
  record.type = EVENT_JOB_STATUS;
  record.eventTime = number;
  record.eventLog.jobStatusLog.jobId = 7;
  wmq_errno = 0;
  if (wmq_writestream(&record) != 0) giveUp("writing");
}

void openStream(std::string &path, int oldFiles) {
  const streamParams params{path.data(), 100 << 20, oldFiles, 0, nullptr, nullptr, nullptr};
  if (wmq_openstream(&params) != 0) giveUp(path.c_str());
}

wmqFollower *follow(const std::string &path) {
  const wmqFollowParams params{path.c_str(), WMQ_FROM_END, nullptr, 0};
  wmqFollower *const follower = wmq_followopen(&params);
  if (follower == nullptr) giveUp(path.c_str());
  return follower;
}

// The time of the next record, which is its number; negative when none comes within `timeout`.
int nextNumber(wmqFollower *follower, int timeout) {
  for (;;) {
    eventRecord *record = nullptr;
    const int result = wmq_follownext(follower, &record, timeout);
    if (result == WMQ_FOLLOW_NOTHING) return -1;
    if (result == WMQ_FOLLOW_FAILED) giveUp("following");
    if (record == nullptr) continue;
    const int number = record->eventTime;
    wmq_freekept(record);
    wmq_freelogrec(record);
    return number;
  }
}

double processorSeconds() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  const auto seconds = [](const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

void measureLatency(const std::string &path) {
  std::vector<Clock::time_point> written(kWrites);
  std::vector<double> milliseconds(kWrites);
  wmqFollower *const follower = follow(path);
  std::thread writer([&] {
    for (int number = 0; number < kWrites; ++number) {
      std::this_thread::sleep_for(std::chrono::milliseconds(3));
      written[static_cast<size_t>(number)] = Clock::now();
      writeRecord(number);
    }
  });
  for (int i = 0; i < kWrites; ++i) {
    const auto number = static_cast<size_t>(nextNumber(follower, -1));
    milliseconds[number] = 1e3 * secondsBetween(written[number], Clock::now());
  }
  writer.join();
  std::sort(milliseconds.begin(), milliseconds.end());
  const auto at = [&](double share) { return milliseconds[static_cast<size_t>(share * (kWrites - 1))]; };
  std::printf("from write to wmq_follownext: median %.3f ms, 99 %% %.3f ms, longest %.3f ms\n", at(0.5),
              at(0.99), at(1));

  const double before = processorSeconds();
  nextNumber(follower, 5000);
  std::printf("waiting 5 s: %.4f s of processor time\n", processorSeconds() - before);
  wmq_followclose(follower);
}

void measureMany(const std::string &path, int followers, int seconds) {
  const int last = seconds * kPerSecond;
  std::vector<std::atomic<int>> seen(static_cast<size_t>(followers));
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  std::atomic<int> opened = 0;
  for (auto &mine : seen)
    threads.emplace_back([&] {
      wmqFollower *const follower = follow(path);
      ++opened;
      while (mine < last) {
        const int number = nextNumber(follower, -1);
        if (number != mine + 1) giveUp("a record is missing");
        mine = number;
      }
      wmq_followclose(follower);
    });
  while (opened < followers) std::this_thread::sleep_for(std::chrono::milliseconds(1));

  const auto begin = Clock::now();
  int farthest = 0;
  for (int number = 1; number <= last; ++number) {
    if (number % 50 == 0)
      std::this_thread::sleep_until(begin +
                                    std::chrono::microseconds(int64_t{1000000} * number / kPerSecond));
    writeRecord(number);
    if (number % kPerSecond == 0)
      for (const auto &other : seen) farthest = std::max(farthest, number - other.load());
  }
  const auto end = Clock::now();
  for (std::thread &thread : threads) thread.join();
  std::printf(
      "%d followers, %d records a second (%.0f written) for %d s: at most %d records behind, all had\n"
      "everything %.3f s after the last write; %.1f s of processor time\n",
      followers, kPerSecond, last / secondsBetween(begin, end), seconds, farthest,
      secondsBetween(end, Clock::now()), processorSeconds());
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 2) {
    std::fputs("usage: follow_cost DIRECTORY [FOLLOWERS [SECONDS]]\n", stderr);
    return 2;
  }
  std::string path = std::string(argv[1]) + "/follow_cost.stream";
  openStream(path, 10);
  measureLatency(path);
  measureMany(path, argc > 2 ? std::atoi(argv[2]) : 100, argc > 3 ? std::atoi(argv[3]) : 20);
  wmq_closestream();
  std::remove(path.c_str());
  return 0;
}
