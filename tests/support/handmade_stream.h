// A stream whose files are made by hand, in a directory of its own.
#ifndef WMQ_TESTS_HANDMADE_STREAM_H
#define WMQ_TESTS_HANDMADE_STREAM_H

#include <string>

#include "support/temporary_directory.h"

namespace wmq::testing {

extern const std::string endLine;
extern const std::string vacated;    // a record of a type that leaves its line open
extern const std::string sbdStatus;  // another, with fields

// LOG_SWITCH records of these numbers.
std::string lines(int first, int last);

class HandmadeStream {
 public:
  void append(const std::string &text) const;
  std::string old(int suffix) const { return path + "." + std::to_string(suffix); }

  // As the writer does it.
  void rotate(int suffix) const;
  void remove(int suffix) const;

  // Waits until the clock of the system goes on: no file created later has the time of creation of one that
  // is there.
  static void settle();

  const TemporaryDirectory directory{};
  const std::string path = directory / "s";
};

}  // namespace wmq::testing

#endif
