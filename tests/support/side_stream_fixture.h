// Any one of the streams, as a test has it: its operations, and the calls counted.
#ifndef WMQ_TESTS_SIDE_STREAM_FIXTURE_H
#define WMQ_TESTS_SIDE_STREAM_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "support/stream_fixture.h"

namespace wmq::testing {

struct SideOperations {
  const char *noun;  // as operations and trace messages have it
  const char *defaultPath;
  int32_t type;  // the one that the stream carries
  char *streamParams::*path;
  int (*open)(const streamParams *params);
  int (*write)(eventRecord *record);
  int (*writeBatch)(eventRecord *const *records, size_t count, size_t *written);
  int (*sync)();
  eventRecord *(*read)(int *lineNum);
  int (*close)();
  int (*format)(eventRecord *record, char **text, size_t *length);
};

extern const SideOperations kStatus;
extern const SideOperations kPendingReasons;
extern const SideOperations kEvents;  // the event stream, for tests of what all three do alike

// The stream that writes the fields of the type.
const SideOperations &streamOf(int32_t type);

std::ostream &operator<<(std::ostream &out, const SideOperations *side);

// Removes the file at a path that tests share with the system, unless it was there before.
class SharedPath {
 public:
  explicit SharedPath(const std::string &path);
  ~SharedPath();
  SharedPath(const SharedPath &) = delete;
  SharedPath &operator=(const SharedPath &) = delete;

 private:
  std::string path_;
  bool wasThere_;
};

// The calls of a stream's write are counted through the whole process, and every 100th checks the size: each
// test begins where the count of its stream is 0.
class SideStreamTest : public ::testing::Test {
 protected:
  explicit SideStreamTest(const SideOperations &operations);
  ~SideStreamTest() override;

  // Opens with trace.
  int open(const Limits &limits = {});
  int openAs(const std::string &name, const Limits &limits = {});

  // Writes a record of the stream's own type that holds the number.
  int write(int32_t number);
  int write(eventRecord record);
  eventRecord numbered(int32_t number) const;
  std::string lineOf(int32_t number) const;  // with its line end

  // Calls that write nothing, until the next call is one that checks the size. wmq_errno is 0 afterwards.
  void advanceToCheck();

  // The number of the next record, 0 when there is none.
  int32_t readNumber();

  // The texts of the trace, with the path at which the stream is opened first.
  std::string opened(const std::string &name, int32_t size) const;
  std::string closed(const std::string &name, int32_t size) const;

  const SideOperations &side;
  const TemporaryDirectory directory{};
  const std::string path = directory / "side";
  TraceRecorder trace{};
  int callsSinceCheck = 0;
  int lineNum = 0;
};

}  // namespace wmq::testing

#endif
