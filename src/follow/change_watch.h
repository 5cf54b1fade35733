// News of a stream's files: from the system where it gives them, else by looking at intervals.
#ifndef WMQ_FOLLOW_CHANGE_WATCH_H
#define WMQ_FOLLOW_CHANGE_WATCH_H

#include <chrono>
#include <string>

namespace wmq {

class ChangeWatch {
 public:
  ChangeWatch() = default;
  ChangeWatch(const ChangeWatch &) = delete;
  ChangeWatch &operator=(const ChangeWatch &) = delete;
  ~ChangeWatch();

  // Watches the names in the directory of `path`. `interval` above 0: looks at that interval, whatever the
  // system offers. False with errno when not even waking is possible.
  bool open(const std::string &path, int interval);

  // Watches what is written to this file, and to no other.
  void watchFile(int fd);

  // Takes the news that have come. What happens later makes the next wait() end.
  void collect();

  // Names may have changed since they were seen last, as far as has been collected.
  bool namesChanged() const { return names || polling; }
  void namesSeen() { names = false; }

  // Waits for news, at most `timeout` milliseconds (below 0: without end). False when the time was up, or
  // when the wait was ended by a signal or by wake().
  bool wait(int timeout);

  void wake() const;

  // Becomes readable with news; -1 when it looks at intervals.
  int descriptor() const { return polling ? -1 : notify; }

 private:
  using Clock = std::chrono::steady_clock;

  void poll(int wantedInterval);
  bool pause(int milliseconds, bool forNews, bool &news);

  std::string name;
  int notify = -1;
  int wakeEnds[2] = {-1, -1};
  int directoryWatch = -1;
  int fileWatch = -1;
  bool polling = false;
  int interval = 0;
  bool names = true;
  Clock::time_point lastNews{};
};

}  // namespace wmq

#endif
