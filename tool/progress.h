// A bar on standard error that shows how far long work has come.
#ifndef WMQ_TOOL_PROGRESS_H
#define WMQ_TOOL_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace wmq::tool {

// Bytes that `files` hold together; 0 when that cannot be known because one of them is no regular file.
uint64_t totalSize(const std::vector<std::string> &files);

// One line of progress: percentage, bar, rate and remaining time, or bytes and rate where `total` is 0.
std::string progressText(uint64_t done, uint64_t total, double seconds);

class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  // Never shows anything.
  Progress() = default;

  // Shows a bar when standard error is a terminal that can redraw a line, but not when standard output,
  // which `usesOutput` tells is being written to, is a terminal too: the two would mix.
  Progress(const std::vector<std::string> &files, bool usesOutput);

  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;
  ~Progress() { erase(); }

  // Another step of work is done. Cheap enough for every line.
  void step(uint64_t bytesDone) {
    if (shown && ++steps % 256 == 0) draw(bytesDone, Clock::now());
  }

  // The same for a step that is not among many.
  void reached(uint64_t bytesDone) {
    if (shown) draw(bytesDone, Clock::now());
  }

  // Work on one of the files has ended; the next one counts from 0 again.
  void fileDone(uint64_t bytesDone) { doneBefore += bytesDone; }

  // Clears the line, so that a message can take it.
  void erase();

 private:
  void draw(uint64_t bytesDone, Clock::time_point now);

  bool shown = false;
  bool drawn = false;
  uint64_t total = 0;
  uint64_t doneBefore = 0;
  uint64_t steps = 0;
  Clock::time_point begin;
  Clock::time_point lastDrawn;
};

}  // namespace wmq::tool

#endif
