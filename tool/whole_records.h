// Standard output for a reader that takes its time: what ends it does so between two records.
#ifndef WMQ_TOOL_WHOLE_RECORDS_H
#define WMQ_TOOL_WHOLE_RECORDS_H

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "faults.h"
#include "output.h"
#include "stop_signals.h"

namespace wmq::tool {

class WholeRecords {
 public:
  explicit WholeRecords(StopSignals &stopping);

  // Whether a reader may take only some of what it is given: what it has got is told by a position then.
  bool mayBeLeft() const { return !takesAll; }

  // The record and a line end. `position`: what is known of the stream behind it.
  void append(std::string_view record, std::string position);

  size_t size() const { return output.size(); }

  enum class Outcome {
    handedOver,
    left,   // a signal has come, and nobody takes the rest, which begins with a record
    cut,    // the same, with a second signal, within a record
    failed  // finish() tells
  };

  // Hands over all that was appended. With a signal, only what the reader takes soon; but a record of which
  // it has got the beginning is given to its end, unless another signal comes meanwhile.
  Outcome flush();

  // Behind the last record of which all was handed over; "" before the first.
  const std::string &position() const { return reached; }

  // Hands over the rest and reports a failure, if there was any.
  void finish(Faults &faults) { output.finish(faults); }

 private:
  struct End {
    uint64_t offset = 0;
    std::string position;
  };

  size_t nextPiece() const;
  void passEnds();

  StopSignals &signals;
  const bool takesAll;  // without having to be waited for
  Output output;
  std::deque<End> ends;  // of the records of which not all was handed over
  uint64_t appended = 0;
  uint64_t handedOver = 0;
  uint64_t whole = 0;  // of it, up to the end of a record
  std::string reached;
};

}  // namespace wmq::tool

#endif
