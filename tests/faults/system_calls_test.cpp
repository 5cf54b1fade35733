// Every system call of opening, writing, rotating, removing old files, reading and closing fails once, in
// each of the streams, and then it and all that follow: the result and the reason are told, no descriptor is
// lost, and opening again goes on.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>

#include "support/failing_calls.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "wmq.stream/stream_file.h"

namespace wmq::testing {
namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

class EverySystemCall : public SideStreamTest, public ::testing::WithParamInterface<const SideOperations *> {
 protected:
  EverySystemCall() : SideStreamTest(*GetParam()) {}

  struct Outcome {
    int result = 0;
    int error = 0;
    int reason = 0;
    std::string failed;   // what the failed call was; empty when there were fewer calls
    int descriptors = 0;  // more than before
  };

  template <class Operation>
  static Outcome failing(int nth, AtCall::Later later, Operation operation) {
    const int before = openDescriptors();
    Outcome outcome;
    wmq_errno = 0;
    errno = 0;
    {
      const FailingCall call("", nth, EIO, later);
      outcome.result = operation();
      outcome.reason = errno;
      outcome.failed = call.name();
    }
    outcome.error = wmq_errno;
    outcome.descriptors = openDescriptors() - before;
    return outcome;
  }

  static void expectFailure(const Outcome &outcome, int result) {
    EXPECT_EQ(outcome.result, result);
    EXPECT_EQ(outcome.error, WMQE_SYS);
    EXPECT_EQ(outcome.reason, EIO);
  }

  // Three old files, of which one has to go, and a stream whose next call rotates.
  void beReadyToRotate() {
    side.close();
    for (const std::string &name : namesIn(directory.path())) std::remove((directory / name).c_str());
    for (const char *suffix : {"100", "200", "300"}) makeFile(path + '.' + suffix, suffix);
    makeFile(path, lineOf(1));
    ASSERT_EQ(open({.size = 1}), 0);
    advanceToCheck();
  }

  // The records in the stream's own files, in the order of writing.
  std::string records() const {
    std::string all;
    for (const std::string &name : {path + ".1700000500", path + ".1700000501", path})
      if (exists(name)) all += contentOf(name);
    for (size_t at; (at = all.find("\"END_OF_STREAM\"")) != all.npos;)
      all.erase(at, all.find('\n', at) + 1 - at);
    return all;
  }

  void reopen() {
    side.close();
    ASSERT_EQ(open(), 0);
  }

  // Such calls do not count for the next check.
  bool isWithoutFile() const {
    eventRecord record = numbered(99);
    wmq_errno = 12345;
    return side.write(&record) == -1 && wmq_errno == 12345;
  }

  ScriptedClock clock{1700000500};
};

INSTANTIATE_TEST_SUITE_P(Of, EverySystemCall, ::testing::Values(&kEvents, &kStatus, &kPendingReasons),
                         [](const auto &tested) { return std::string(tested.param->noun); });

TEST_P(EverySystemCall, OfOpeningMayFail) {
  std::map<std::string, int> seen;
  for (int nth = 1;; ++nth) {
    const Outcome outcome = failing(nth, AtCall::work, [this] { return open(); });
    if (outcome.failed.empty()) break;
    SCOPED_TRACE(outcome.failed);
    ++seen[outcome.failed];
    if (outcome.failed == "fcntl") {  // a program that is started inherits the file: no reason to fail
      EXPECT_EQ(outcome.result, 0);
      side.close();
      continue;
    }
    expectFailure(outcome, -1);
    EXPECT_EQ(outcome.descriptors, 0);
    EXPECT_TRUE(isWithoutFile());
  }
  EXPECT_EQ(seen, (std::map<std::string, int>{{"chmod", 1}, {"fcntl", 1}, {"fopen", 1}}));
  EXPECT_EQ(write(2), 0);
  EXPECT_EQ(contentOf(path), lineOf(2));
}

TEST_P(EverySystemCall, OfWritingMayFail) {
  ASSERT_EQ(open(), 0);
  const Outcome outcome = failing(1, AtCall::work, [this] { return write(1); });
  expectFailure(outcome, -1);
  EXPECT_EQ(outcome.failed, "write");
  EXPECT_EQ(failing(2, AtCall::work, [this] { return write(2); }).failed, "");
  EXPECT_EQ(contentOf(path), lineOf(2));
}

// What a failure leaves differs from call to call; that what was written is there once, and the rest not at
// all, does not.
TEST_P(EverySystemCall, OfARotationMayFail) {
  std::map<std::string, int> seen;
  for (int nth = 1;; ++nth) {
    beReadyToRotate();
    const Outcome outcome = failing(nth, AtCall::work, [this] { return write(2); });
    const std::string &failed = outcome.failed;
    if (failed.empty()) break;
    SCOPED_TRACE(failed + ", call " + std::to_string(nth));
    ++seen[failed];
    const bool harmless = failed == "closedir" || failed == "fcntl" || failed == "fstatat";
    if (harmless) {
      EXPECT_EQ(outcome.result, 0);
      EXPECT_EQ(outcome.descriptors, 0);
      EXPECT_EQ(records(), lineOf(1) + lineOf(2));
      continue;
    }
    expectFailure(outcome, failed == "unlink" ? -2 : -1);
    const bool lost = failed == "fclose" || failed == "rename" || failed == "fopen" || failed == "fchmod";
    EXPECT_EQ(outcome.descriptors, lost ? -1 : 0);
    EXPECT_EQ(records(), lineOf(1));
    if (lost) {
      EXPECT_TRUE(isWithoutFile());
    } else {
      EXPECT_EQ(write(3), 0);
    }
    reopen();
    EXPECT_EQ(write(4), 0);
    EXPECT_EQ(records(), lineOf(1) + (lost ? "" : lineOf(3)) + lineOf(4));
    EXPECT_THAT(namesIn(directory.path()), IsSupersetOf({"side", "side.200", "side.300"}));
  }
  EXPECT_EQ(records(), lineOf(1) + lineOf(2));
  const std::map<std::string, int> atLeastOnce = {
      {"closedir", 2}, {"fchmod", 1}, {"fclose", 1},  {"fcntl", 2},  {"fopen", 1},  {"fstat", 1},
      {"fstatat", 3},  {"lstat", 1},  {"opendir", 2}, {"rename", 1}, {"unlink", 1}, {"write", 2}};
  seen.erase("readdir");  // as often as the directory has entries
  EXPECT_EQ(seen, atLeastOnce);
}

// From some call on nothing works any more, until the stream is opened again.
TEST_P(EverySystemCall, MayBeTheFirstOfManyThatFail) {
  for (int nth = 1;; ++nth) {
    beReadyToRotate();
    const Outcome outcome = failing(nth, AtCall::failToo, [this] { return write(2); });
    if (outcome.failed.empty()) break;
    SCOPED_TRACE(outcome.failed + ", call " + std::to_string(nth));
    EXPECT_LT(outcome.result, 0);
    EXPECT_EQ(outcome.error, WMQE_SYS);
    EXPECT_EQ(outcome.reason, EIO);
    EXPECT_THAT(outcome.descriptors, AnyOf(0, -1));
    reopen();
    EXPECT_EQ(write(3), 0);
    EXPECT_EQ(records(), lineOf(1) + lineOf(3));
  }
}

TEST_P(EverySystemCall, OfRemovingOldFilesMayFail) {
  std::map<std::string, int> seen;
  for (int nth = 1;; ++nth) {
    for (const char *suffix : {"100", "200", "300"}) makeFile(path + '.' + suffix, suffix);
    const Outcome outcome =
        failing(nth, AtCall::work, [this] { return checkstreamfilenum(path.c_str(), 2); });
    if (outcome.failed.empty()) break;
    SCOPED_TRACE(outcome.failed);
    ++seen[outcome.failed];
    EXPECT_EQ(outcome.descriptors, 0);
    if (outcome.failed == "fstatat") {  // a file of which nothing can be told is no old file
      EXPECT_EQ(outcome.result, 0);
      EXPECT_EQ(namesIn(directory.path()).size(), 2U);
    } else if (outcome.failed == "closedir") {
      EXPECT_EQ(outcome.result, 0);
    } else {
      expectFailure(outcome, outcome.failed == "unlink" ? -2 : -1);
      EXPECT_THAT(namesIn(directory.path()), IsSupersetOf({"side.200", "side.300"}));
    }
  }
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("side.300"));
  seen.erase("readdir");
  EXPECT_EQ(seen,
            (std::map<std::string, int>{{"closedir", 1}, {"fstatat", 3}, {"opendir", 1}, {"unlink", 2}}));
}

TEST_P(EverySystemCall, OfReadingMayFail) {
  makeFile(path, lineOf(1) + lineOf(2));
  std::map<std::string, int> seen;
  for (int nth = 1;; ++nth) {
    reopen();
    lineNum = 0;
    const Outcome outcome = failing(nth, AtCall::work, [this] { return readNumber() == 1 ? 0 : -1; });
    if (outcome.failed.empty()) break;
    SCOPED_TRACE(outcome.failed);
    ++seen[outcome.failed];
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.error, WMQE_EOF) << "a file that cannot be read has no more lines";
    EXPECT_EQ(outcome.reason, EIO);
    EXPECT_EQ(readNumber(), 1) << "and goes on where it was";
  }
  EXPECT_EQ(readNumber(), 2);
  EXPECT_EQ(seen, (std::map<std::string, int>{{"pread", 1}}));
}

// What had come of a line when reading failed is no line, and is one with the rest of it.
TEST_P(EverySystemCall, OfReadingMayFailInTheMiddleOfALine) {
  const std::string comment = '#' + std::string(size_t{400} << 10, 'x') + '\n';
  makeFile(path, lineOf(1) + comment + lineOf(2));
  for (int nth = 1;; ++nth) {
    reopen();
    lineNum = 0;
    int first = 0;
    const Outcome outcome = failing(nth, AtCall::work, [&] {
      first = readNumber();
      return first == 1 ? readNumber() : 0;
    });
    if (outcome.failed.empty()) {
      EXPECT_EQ(outcome.result, 2);
      EXPECT_GT(nth, 3) << "the comment is read in pieces";
      break;
    }
    SCOPED_TRACE(outcome.failed + ", call " + std::to_string(nth));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.error, WMQE_EOF);
    EXPECT_EQ(outcome.reason, EIO);
    if (first == 0) {
      EXPECT_EQ(readNumber(), 1);
    }
    EXPECT_EQ(readNumber(), 2);
    EXPECT_EQ(readNumber(), 0);
  }
}

// The last line of the file has no end: only the end of the file says that it is whole.
TEST_P(EverySystemCall, OfReadingMayFailBehindALineWithoutAnEnd) {
  const std::string whole = lineOf(2);
  makeFile(path, lineOf(1) + whole.substr(0, whole.size() - 1));
  ASSERT_EQ(open(), 0);
  EXPECT_EQ(readNumber(), 1);
  const Outcome outcome = failing(1, AtCall::work, [this] { return readNumber(); });
  EXPECT_EQ(outcome.failed, "pread");
  EXPECT_EQ(outcome.result, 0);
  EXPECT_EQ(outcome.error, WMQE_EOF);
  EXPECT_EQ(outcome.reason, EIO);
  EXPECT_EQ(readNumber(), 2);
}

TEST_P(EverySystemCall, OfClosingMayFail) {
  makeFile(path, lineOf(1));
  std::map<std::string, int> seen;
  for (int nth = 1;; ++nth) {
    ASSERT_EQ(open(), 0);
    const Outcome outcome = failing(nth, AtCall::work, [this] { return side.close(); });
    SCOPED_TRACE(outcome.failed);
    EXPECT_EQ(outcome.result, 0) << "what is closed is closed";
    EXPECT_EQ(outcome.error, WMQE_EOF);
    EXPECT_EQ(outcome.descriptors, -1);
    if (outcome.failed.empty()) break;
    ++seen[outcome.failed];
  }
  EXPECT_EQ(seen, (std::map<std::string, int>{{"fclose", 1}, {"fstat", 1}, {"pread", 1}}));
  EXPECT_EQ(contentOf(path), lineOf(1));
}

// A signal is no failure, and a write that takes a part of the line only is gone on with.
TEST_P(EverySystemCall, MayBeInterrupted) {
  makeFile(path, lineOf(1));
  ASSERT_EQ(open(), 0);
  {
    const FailingCall interrupted("pread", 1, EINTR);
    EXPECT_EQ(readNumber(), 1);
    EXPECT_TRUE(interrupted.happened());
  }
  {
    const FailingCall interrupted("write", 1, EINTR);
    EXPECT_EQ(write(2), 0);
    EXPECT_TRUE(interrupted.happened());
  }
  EXPECT_EQ(contentOf(path), lineOf(1) + lineOf(2));
}

// ------------------------------------------------------------- what is there meanwhile

class AdversaryInARotation : public EverySystemCall {};

INSTANTIATE_TEST_SUITE_P(Of, AdversaryInARotation, ::testing::Values(&kEvents, &kStatus, &kPendingReasons),
                         [](const auto &tested) { return std::string(tested.param->noun); });

TEST_P(AdversaryInARotation, CannotHaveAFileEmptied) {
  beReadyToRotate();
  const AtCall planted("fopen", 1, [this] {
    makeFile(path, "somebody's");
    return 0;
  });
  wmq_errno = 0;
  EXPECT_EQ(write(2), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(contentOf(path), "somebody's");
  EXPECT_EQ(records(), lineOf(1) + "somebody's");
}

TEST_P(AdversaryInARotation, CannotHaveALinkFollowed) {
  beReadyToRotate();
  const TemporaryDirectory elsewhere;
  makeFile(elsewhere / "target", "somebody's");
  const AtCall planted("fopen", 1, [&] { return symlink((elsewhere / "target").c_str(), path.c_str()); });
  wmq_errno = 0;
  EXPECT_EQ(write(2), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(contentOf(elsewhere / "target"), "somebody's");
}

// A name of which the system cannot say that it is free may be that of an old file.
TEST_P(AdversaryInARotation, CannotHideAnOldFileToHaveItOverwritten) {
  beReadyToRotate();
  const std::string rotated = path + ".1700000500";
  const AtCall unreadable("lstat", 1, [&] {
    makeFile(rotated, "somebody's");
    return EACCES;
  });
  wmq_errno = 0;
  EXPECT_EQ(write(2), -1);
  EXPECT_EQ(errno, EACCES);
  EXPECT_EQ(wmq_errno, WMQE_SYS);
  EXPECT_EQ(contentOf(rotated), "somebody's");
  EXPECT_EQ(contentOf(path), lineOf(1));
}

}  // namespace
}  // namespace wmq::testing
