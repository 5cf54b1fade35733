// A stream of the test's own, and the calls on it counted.
#ifndef WMQ_TESTS_STREAM_FIXTURE_H
#define WMQ_TESTS_STREAM_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "support/small_records.h"
#include "support/temporary_directory.h"
#include "support/trace_recorder.h"

namespace wmq::testing {

// What a stream is opened with. It always traces.
struct Limits {
  int32_t size = 0;
  int32_t oldFiles = 3;
};

// The calls of wmq_writestream are counted through the whole process, and every 100th checks the size: each
// test begins where that count is 0.
class StreamTest : public ::testing::Test {
 protected:
  StreamTest();
  ~StreamTest() override;

  int open(const Limits &limits = {});
  int openAs(const std::string &name, const Limits &limits = {});

  // Writes the LOG_SWITCH record of that number.
  int write(int32_t number);
  int write(eventRecord record);

  // Begins where the count is 0, as every test does. No stream may be open.
  void countFromZero();

  // Calls that write nothing, until the next call is one that checks the size. wmq_errno is 0 afterwards.
  void advanceToCheck();

  // The number of the next record, 0 when there is none.
  int32_t readNumber();

  const TemporaryDirectory directory{};
  const std::string path = directory / "s";
  TraceRecorder trace{};
  int callsSinceCheck = 0;
  int lineNum = 0;
};

}  // namespace wmq::testing

#endif
