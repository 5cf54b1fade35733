// The lines of several input files, one after the other, as parts of work for a pipeline.
#ifndef WMQ_TOOL_LINE_FEED_H
#define WMQ_TOOL_LINE_FEED_H

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "blocks.h"
#include "faults.h"
#include "progress.h"
#include "records.h"

namespace wmq::tool {

// A line that was refused, for the thread that reports it.
struct BadLine {
  uint64_t number;  // in its block
  Refusal why;
  size_t textBefore = 0;  // bytes of what the block is turned into, if anything, that come before it
};

struct LinePart {
  std::shared_ptr<Blocks> source;
  Block block;  // empty behind the last lines of a file
  uint64_t bytesTaken = 0;

  // What working on the block comes to.
  uint64_t numLines = 0;
  std::vector<BadLine> badLines;
};

class LineFeed {
 public:
  // Files that are opened when their turn comes; "-" stands for standard input, and so does no file at all.
  explicit LineFeed(const std::vector<std::string> &names);

  // Files that may be open already.
  struct File {
    std::string name;
    std::shared_ptr<Blocks> opened;  // null: not yet
  };
  explicit LineFeed(std::deque<File> filesInOrder) : files(std::move(filesInOrder)) {}

  // Gets the next lines, or the end of a file; false when all files are through.
  bool fill(LinePart &part);

 private:
  std::deque<File> files;
};

// Reports what is wrong in parts that come in their order.
class PartReport {
 public:
  PartReport(Faults &reportTo, Progress &show) : faults(reportTo), progress(show) {}

  // `before` is called ahead of each line that is reported.
  void add(const LinePart &part, const std::function<void(const BadLine &)> &before = {});

 private:
  Faults &faults;
  Progress &progress;
  uint64_t linesBefore = 0;  // of the file at hand
};

}  // namespace wmq::tool

#endif
