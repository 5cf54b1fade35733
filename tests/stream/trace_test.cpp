#include <gmock/gmock.h>

#include <cerrno>
#include <cstdio>

#include "support/scripted_clock.h"
#include "support/stream_fixture.h"
#include "support/text_files.h"

namespace wmq::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TracingAStream : public StreamTest {
 protected:
  // A full file, opened, and then what the call that checks the size reports.
  int rotate(const Limits &limits) {
    makeFile(path, "full\n");
    if (open(limits) != 0) return -1;
    advanceToCheck();
    trace.messages.clear();
    return write(1);
  }

  int openUntraced(int (*traceFunc)(const char *)) {
    std::string name = path;
    const streamParams params{name.data(), 1, 1, 0, traceFunc, nullptr, nullptr};
    return wmq_openstream(&params);
  }

  ScriptedClock clock{1700000500};
};

TEST_F(TracingAStream, ReportsOpeningWithPathAndSize) {
  ASSERT_EQ(open({.size = 4096}), 0);
  EXPECT_THAT(trace.messages,
              ElementsAre("wmq_openstream(): stream " + path + " open all right maxsize 4096"));
}

TEST_F(TracingAStream, ReportsClosingWithPathAndSize) {
  ASSERT_EQ(open({.size = 4096}), 0);
  trace.messages.clear();
  wmq_closestream();
  EXPECT_THAT(trace.messages,
              ElementsAre("wmq_closestream(): stream " + path + " closed all right maxsize 4096"));
}

TEST_F(TracingAStream, ReportsARotationOnce) {
  ASSERT_EQ(rotate({.size = 5}), 0);
  EXPECT_THAT(trace.messages, ElementsAre("resetstream(): stream " + path + " reset all right maxsize 5"));
}

TEST_F(TracingAStream, ReportsEachFileBeforeItIsRemoved) {
  makeFile(path + ".100");
  makeFile(path + ".200");
  std::vector<bool> wasThere;
  trace.whenReported = [&] { wasThere.push_back(exists(path + ".100") || exists(path + ".200")); };
  ASSERT_EQ(rotate({.size = 1, .oldFiles = 1}), 0);
  EXPECT_THAT(trace.messages, ElementsAre("deleteoldfiles(): Removing oldest stream file " + path + ".100 ",
                                          "deleteoldfiles(): Removing oldest stream file " + path + ".200 ",
                                          "resetstream(): stream " + path + " reset all right maxsize 1"));
  EXPECT_THAT(wasThere, ElementsAre(true, true, true, false)) << "the first is that of opening";
}

TEST_F(TracingAStream, ReportsAFileThatCannotBeRemovedWithTheSystemsNumber) {
  makeFile(path + ".007");
  EXPECT_EQ(rotate({.size = 1, .oldFiles = 1}), -2);
  EXPECT_THAT(trace.messages, ElementsAre("deleteoldfiles(): Removing oldest stream file " + path + ".7 ",
                                          "deleteoldfiles(): Failed to remove file " + path +
                                              ".7, errno= " + std::to_string(ENOENT)));
}

TEST_F(TracingAStream, ReportsNothingElse) {
  ASSERT_EQ(open(), 0);
  trace.messages.clear();
  write(1);
  write(bareRecord(0));
  readNumber();
  open();
  EXPECT_THAT(trace.messages, IsEmpty());
}

TEST_F(TracingAStream, ReportsNoRotationThatFails) {
  clock.whenRead = [this] {
    if (clock.readings == 2) std::remove(path.c_str());
  };
  EXPECT_EQ(rotate({.size = 1}), -1);
  EXPECT_THAT(trace.messages, IsEmpty());
}

TEST_F(TracingAStream, ReportsNothingWithoutTheFlag) {
  makeFile(path, "full\n");
  makeFile(path + ".100");
  ASSERT_EQ(openUntraced(TraceRecorder::record), 0);
  advanceToCheck();
  EXPECT_EQ(write(1), 0);
  wmq_closestream();
  EXPECT_THAT(trace.messages, IsEmpty());
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
}

TEST_F(TracingAStream, WorksAllTheSameWithTheFlagAndWithoutAFunction) {
  makeFile(path, "full\n");
  makeFile(path + ".100");
  std::string name = path;
  const streamParams params{name.data(), 1, 1, 1, nullptr, nullptr, nullptr};
  ASSERT_EQ(wmq_openstream(&params), 0);
  advanceToCheck();
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(wmq_closestream(), 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("s", "s.1700000500"));
}

TEST_F(TracingAStream, TakesAnyNumberButZeroForTheFlag) {
  std::string name = path;
  const streamParams params{name.data(), 0, 1, -1, TraceRecorder::record, nullptr, nullptr};
  ASSERT_EQ(wmq_openstream(&params), 0);
  EXPECT_EQ(trace.messages.size(), 1U);
}

TEST_F(TracingAStream, ClearsTheTextWhenTheStreamIsClosed) {
  ASSERT_EQ(open(), 0);
  wmq_closestream();
  ASSERT_NE(trace.lastText, nullptr);
  EXPECT_STREQ(trace.lastText, "");
}

TEST_F(TracingAStream, HoldsTheLongestPathWhole) {
  std::string name = directory.path();
  while (name.size() + 3 <= 4000) name += "/.";
  name += "/s";
  ASSERT_EQ(openAs(name), 0);
  EXPECT_THAT(trace.messages,
              ElementsAre("wmq_openstream(): stream " + name + " open all right maxsize 1000000000"));
}

}  // namespace
}  // namespace wmq::testing
