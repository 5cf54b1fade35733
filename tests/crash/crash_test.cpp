// A writer that is killed: what it was told is written stays, and others go on where it ended.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <random>
#include <sstream>

#include "companion/checked_memory.h"
#include "support/scripted_clock.h"
#include "support/side_stream_fixture.h"
#include "support/text_files.h"
#include "support/traced_process.h"
#include "wmq.stream/type_table.h"

namespace wmq::testing {
namespace {

const std::string kEndLine = "\"END_OF_STREAM\" \"10.1\" 1700000500\n";

// A fork of an instrumented process takes a hundred times as long, and so does all that it does: there only
// every seventh crash is tried.
#ifdef WMQ_CHECKED_MEMORY
constexpr int kStep = 7;
#else
constexpr int kStep = 1;
#endif

// The number of the last record whose write returned 0, as the writer counts. It outlives the writer.
class Succeeded {
 public:
  Succeeded()
      : shared_(mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    if (shared_ == MAP_FAILED) throw std::runtime_error("no memory to share");
  }
  ~Succeeded() { munmap(shared_, sizeof(int)); }
  Succeeded(const Succeeded &) = delete;
  Succeeded &operator=(const Succeeded &) = delete;
  void set(int number) { *static_cast<volatile int *>(shared_) = number; }
  int get() const { return *static_cast<volatile int *>(shared_); }

 private:
  void *shared_;
};

// What a writer does: so many rounds of 100 calls, of which the last ones write, and the very last is the one
// that rotates.
struct Work {
  int rounds = 2;
  int writesPerRound = 10;
  int firstNumber = 1;
  size_t textLength = 0;  // of the longest record; they come in all lengths up to it
  int32_t oldFiles = 99;
  bool inBatches = false;  // one for each round

  int records() const { return rounds * writesPerRound; }
};

// LOG_SWITCH, the type that tests of the event stream use, has no text.
int32_t typeOf(const SideOperations &stream) {
  return stream.type == EVENT_LOG_SWITCH ? EVENT_JOB_NEW : stream.type;
}

// A record like no other of the stream.
class Numbered {
 public:
  Numbered(const SideOperations &stream, int32_t number, size_t textLength)
      : record(bareRecord(typeOf(stream))),
        text_(textLength == 0 ? 0 : static_cast<size_t>(number) * 104729 % textLength, 'x') {
    switch (record.type) {
      case EVENT_JOB_STATUS2:
        record.eventLog.jobStatus2Log.numJobs = number;
        record.eventLog.jobStatus2Log.resReq = text_.data();
        break;
      case EVENT_JOB_PENDING_REASONS:
        record.eventLog.jobPendingReasonsLog.numJobs = number;
        record.eventLog.jobPendingReasonsLog.detail = text_.data();
        break;
      default:
        record.eventLog.jobNewLog.jobId = number;
        record.eventLog.jobNewLog.command = text_.data();
    }
  }
  Numbered(const Numbered &) = delete;
  Numbered &operator=(const Numbered &) = delete;

  eventRecord record;

 private:
  std::string text_;
};

std::string lineOf(const SideOperations &stream, eventRecord &record) {
  char *text = nullptr;
  size_t length = 0;
  if (stream.format(&record, &text, &length) != 0) throw std::runtime_error("cannot be written");
  std::string line(text, length);
  std::free(text);
  return line;
}

class AKilledWriter : public ::testing::TestWithParam<const SideOperations *> {
 protected:
  void SetUp() override {
    if (!canTrace()) GTEST_SKIP() << "ptrace(2) is not permitted here";
  }

  int open(const std::string &name, int32_t oldFiles) const {
    std::string copy = name;
    streamParams params{nullptr, 1, oldFiles, 0, nullptr, nullptr, nullptr};
    params.*side.path = copy.data();
    return side.open(&params);
  }

  // Runs in a process of its own.
  void write(const Work &work) {
    if (open(path, work.oldFiles) != 0) _exit(1);
    eventRecord dropped = bareRecord(typeOf(side) == EVENT_JOB_NEW ? 61 : EVENT_LOG_SWITCH);
    for (int round = 0; round < work.rounds; ++round) {
      for (int call = work.writesPerRound; call < 100; ++call) side.write(&dropped);
      writeRound(work, work.firstNumber + round * work.writesPerRound);
    }
    if (side.close() != 0) _exit(3);
  }

  void writeRound(const Work &work, int firstNumber) {
    std::deque<Numbered> numbered;
    std::vector<eventRecord *> records;
    for (int number = firstNumber; number < firstNumber + work.writesPerRound; ++number)
      records.push_back(&numbered.emplace_back(side, number, work.textLength).record);
    if (work.inBatches) {
      if (side.writeBatch(records.data(), records.size(), nullptr) != 0) _exit(2);
      succeeded.set(firstNumber + work.writesPerRound - 1);
      return;
    }
    for (eventRecord *record : records) {
      if (side.write(record) != 0) _exit(2);
      succeeded.set(firstNumber++);
    }
  }

  // The files in the order in which they were written.
  std::vector<std::string> files() const {
    std::vector<std::string> names = namesIn(directory.path());
    if (!names.empty() && names.front() == "s") std::rotate(names.begin(), names.begin() + 1, names.end());
    for (std::string &name : names) name.insert(0, directory.path() + "/");
    return names;
  }

  std::string content() const {
    std::string all;
    for (const std::string &file : files()) all += contentOf(file);
    return all;
  }

  std::string line(int number) const {
    Numbered numbered(side, number, textLength);
    return lineOf(side, numbered.record);
  }

  // What a whole run leaves, from the record of that number on.
  std::string expected(const Work &work, int fromNumber) const {
    std::string text;
    for (int number = fromNumber; number < work.firstNumber + work.records(); ++number) {
      const int place = number - work.firstNumber + 1;
      if (place % work.writesPerRound == 0 && number > fromNumber) text += kEndLine;
      text += line(number);
    }
    return text;
  }

  // The number of the first record that is there: those before it went with an old file.
  int firstNumberLeft(const Work &work) const {
    const std::string all = content();
    for (int number = 1; number <= work.records(); ++number)
      if (all.starts_with(line(number))) return number;
    return 1;
  }

  // All that was reported is there in its order and once, and at most one call's records more, whole or torn.
  void expectWhatWasReported(const Work &work) {
    const int first = firstLeft = firstNumberLeft(work);
    const std::string all = content();
    const std::string whole = expected(work, first);
    ASSERT_TRUE(whole.starts_with(all)) << all;
    const int last = lastSucceeded = succeeded.get();
    EXPECT_TRUE(last == 0 || all.find(line(last)) != std::string::npos) << last;
    const int atOnce = work.inBatches ? work.writesPerRound : 1;
    EXPECT_EQ(all.find(line(last + atOnce + 1)), std::string::npos) << last;
    // Of the old files only as many are gone as there were too many.
    const auto oldFiles = static_cast<int32_t>(files().size()) - (exists(path) ? 1 : 0);
    EXPECT_TRUE(first == 1 || oldFiles >= work.oldFiles - 1) << "the first left is " << first;
    torn = all.substr(all.rfind('\n') + 1);
    if (!torn.empty()) {
      EXPECT_TRUE(exists(path) && contentOf(path).ends_with(torn)) << "no old file ends in a torn line";
    }
  }

  // Another writer goes on behind what is there, and rotates.
  void expectAnotherWriterToGoOn() {
    const std::string before = content();
    next = {.rounds = 1, .firstNumber = 1001, .textLength = textLength};
    ASSERT_TRUE(runInChild([this] { write(next); }));
    EXPECT_EQ(content(), before + expected(next, next.firstNumber));
  }

  // A reader gets every record that has a line for itself, and goes on behind the one that has not.
  void expectAReaderToGoOn() {
    int sharedLines = 0;
    for (const std::string &file : files()) {
      std::istringstream lines(contentOf(file));
      ASSERT_EQ(open(file, 1), 0);
      int lineNum = 0;
      for (std::string physical; std::getline(lines, physical);) {
        wmq_errno = 0;
        eventRecord *const record = side.read(&lineNum);
        if (!torn.empty() && physical.starts_with(torn) && physical + '\n' == torn + line(next.firstNumber)) {
          ++sharedLines;
          EXPECT_NE(wmq_errno, WMQE_EOF);
          expectToBeRecovered(physical);
          continue;
        }
        ASSERT_NE(record, nullptr) << physical;
        if (record->type == EVENT_END_OF_STREAM) {
          EXPECT_EQ(physical + '\n', kEndLine);
        } else {
          EXPECT_EQ(lineOf(side, *record), physical + '\n');
        }
      }
      EXPECT_EQ(side.read(&lineNum), nullptr);
      EXPECT_EQ(wmq_errno, WMQE_EOF);
      side.close();
    }
    EXPECT_EQ(sharedLines, torn.empty() ? 0 : 1);
  }

  // The record behind a torn line begins where a header stands that is not the line's own.
  void expectToBeRecovered(const std::string &physical) const {
    const std::string header = '"' + std::string(eventType(typeOf(side)).name) + "\" \"10.1\" ";
    const size_t begin = physical.rfind(header);
    ASSERT_NE(begin, std::string::npos);
    EXPECT_GT(begin, 0U);
    OwnedRecord record = parse(physical.substr(begin));
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(lineOf(side, *record), line(next.firstNumber));
  }

  // `kill` lets a writer work and ends it.
  void expectNothingLost(const Work &work, const std::function<void()> &kill) {
    for (const std::string &file : files()) std::remove(file.c_str());
    succeeded.set(0);
    textLength = work.textLength;
    kill();
    expectWhatWasReported(work);
    expectAnotherWriterToGoOn();
    expectAReaderToGoOn();
    ++crashes;
    if (!torn.empty()) ++tornLines;
  }

  // Kills a writer at its first stop, then one at its second, until one comes to its end.
  void killAtEverySystemCall(const Work &work) {
    bool ended = false;
    for (int calls = 1; !ended && !HasFailure(); calls += kStep) {
      SCOPED_TRACE("killed at stop " + std::to_string(calls));
      expectNothingLost(work, [&] {
        TracedProcess writer([&] { write(work); });
        for (int call = 0; call < calls && !ended; ++call) ended = !writer.goOn();
      });
    }
    EXPECT_EQ(lastSucceeded, work.records()) << "the last one was not killed";
    EXPECT_GT(crashes * kStep, work.inBatches ? 4 * work.rounds : 2 * work.records());
    RecordProperty("crashes", crashes);
  }

  // Kills a writer when the system has taken that many bytes of its write of that number.
  void killInWrite(const Work &work, int number, size_t taken) {
    TracedProcess writer([&] { write(work); });
    for (int writes = 0; writes < number;) {
      ASSERT_TRUE(writer.goOn());
      if (writer.isAboutToWrite()) ++writes;
    }
    writer.shortenWrite(taken);
    ASSERT_TRUE(writer.goOn());
  }

  const SideOperations &side = *GetParam();
  const TemporaryDirectory directory{};
  const std::string path = directory / "s";
  const ScriptedClock clock{1700000500};
  Succeeded succeeded{};
  size_t textLength = 0;
  std::string torn{};
  Work next{};
  int firstLeft = 0;  // before another writer went on
  int lastSucceeded = 0;
  int crashes = 0;
  int tornLines = 0;
};

TEST_P(AKilledWriter, LosesNothingWhateverTheSystemCall) { killAtEverySystemCall({}); }

TEST_P(AKilledWriter, LosesNothingWhileOldFilesAreRemoved) {
  killAtEverySystemCall({.oldFiles = 1});
  EXPECT_EQ(firstLeft, 10) << "the last one has removed a file";
}

TEST_P(AKilledWriter, LosesNoRecordOfAFinishedBatchWhateverTheSystemCall) {
  killAtEverySystemCall({.inBatches = true});
}

// The system may take a part of a line only: the disk is full, or the writer is killed at a long line.
TEST_P(AKilledWriter, LeavesOneTornLineWhateverTheByte) {
  const Work work{};
  // The last record of the first file, its end, and the first record of the second file.
  for (const int write : {9, 10, 11}) {
    const size_t length = write == 10 ? kEndLine.size() : line(write == 9 ? 9 : 10).size();
    for (size_t taken = 1; taken < length && !HasFailure(); taken += kStep) {
      SCOPED_TRACE("killed after byte " + std::to_string(taken) + " of write " + std::to_string(write));
      expectNothingLost(work, [&] { killInWrite(work, write, taken); });
      EXPECT_EQ(torn.size(), taken);
    }
  }
  RecordProperty("crashes", crashes);
}

TEST_P(AKilledWriter, LeavesOneTornLineOfABatchWhateverTheByte) {
  const Work work{.inBatches = true};
  size_t length = 0;
  for (int number = 1; number < work.writesPerRound; ++number) length += line(number).size();
  for (size_t taken = 1; taken < length && !HasFailure(); taken += 17UL * kStep) {
    SCOPED_TRACE("killed after byte " + std::to_string(taken));
    expectNothingLost(work, [&] { killInWrite(work, 1, taken); });
    EXPECT_EQ(content().find(line(work.writesPerRound)), std::string::npos) << "nothing comes later";
  }
  RecordProperty("crashes", crashes);
}

// Long lines, which the system takes in pieces.
TEST_P(AKilledWriter, LosesNothingWhateverTheMoment) {
  const Work work{.textLength = 200'000};
  std::mt19937 random(20251121);
  std::uniform_int_distribution<int> microseconds(0, 6'000);
  for (int crash = 0; crash < 30 && !HasFailure(); crash += kStep) {
    expectNothingLost(work, [&] {
      const pid_t writer = fork();
      ASSERT_GE(writer, 0);
      if (writer == 0) {
        write(work);
        _exit(0);
      }
      usleep(static_cast<useconds_t>(microseconds(random)));
      kill(writer, SIGKILL);
      int status = 0;
      ASSERT_EQ(waitpid(writer, &status, 0), writer);
      ASSERT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
    });
  }
  RecordProperty("crashes", crashes);
  RecordProperty("tornLines", tornLines);
}

INSTANTIATE_TEST_SUITE_P(OfAnyStream, AKilledWriter, ::testing::Values(&kEvents, &kStatus, &kPendingReasons),
                         [](const auto &test) { return std::string(test.param->noun); });

}  // namespace
}  // namespace wmq::testing
