#include <gtest/gtest.h>

#include <algorithm>
#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "support/collected_lines.h"
#include "support/record_text.h"
#include "support/small_records.h"
#include "support/temporary_directory.h"
#include "support/user_directory.h"

namespace wmq::testing {
namespace {

// All that a parsed line gives: its members as the current version writes them, or the error.
std::string outcomeOf(const std::string &line) {
  const OwnedRecord record = parse(line);
  if (record == nullptr) return std::to_string(wmq_errno) + ' ' + wmq_errdetail();
  return std::string(record->version) + ' ' + format(*record);
}

// The same with the record's JSON, which shows every member.
std::string shownOutcomeOf(const std::string &line) {
  const OwnedRecord record = parse(line);
  return record != nullptr ? jsonOf(*record) : std::to_string(wmq_errno) + ' ' + wmq_errdetail();
}

std::vector<std::string> shownOutcomesOf(const std::vector<std::string> &lines) {
  std::vector<std::string> outcomes(lines.size());
  std::transform(lines.begin(), lines.end(), outcomes.begin(), shownOutcomeOf);
  return outcomes;
}

// Lines of all types, at versions from the oldest on: those written by hand, and samples in which another
// version stands, so that many are refused, each at a place of its own.
std::vector<std::string> linesOfAllTypes() {
  static const char *const versions[] = {"2.1", "3.0", "4.0", "6.0", "7.02", "8.0", "9.1", "9.13", "10.1"};
  std::vector<std::string> lines = goldenLines();
  for (const std::string &sample : sampledLines())
    for (const char *version : versions) {
      lines.push_back(sample);
      lines.back().replace(sample.find("10.1"), 4, version);
    }
  return lines;
}

// Lines of which each is read differently by its version, bad ones among them.
std::vector<std::string> mixedLines(size_t count) {
  const std::vector<std::string> versions = {"2.1",  "3.0",  "3.01", "5.0", "6.0",  "6.2",  "7.01",
                                             "7.02", "7.03", "9.0",  "9.1", "9.11", "10.1", "0"};
  std::vector<std::string> lines;
  for (size_t i = 0; i < count; ++i) {
    const std::string header = "\" \"" + versions[i % versions.size()] + "\" " + std::to_string(i) + ' ';
    switch (i / versions.size() % 5) {
      case 0:
        lines.push_back("\"JOB_STATUS" + header + "1 2 3 4 5.5 6 0 7 8 9 \"src\" 10 \"dst\" 11 12 1 2 3 4 0");
        break;
      case 1:
        lines.push_back("\"GRP_ADD" + header +
                        "1 2 3 \"one\" \"two\" \"/name\" \"four\" \"five\" 6 7 \"eight\" 9 10");
        break;
      case 2:
        lines.push_back(
            "\"JOB_START" + header +
            "1 2 3 4 5.5 2 \"3*host\" \"other\" \"a\" \"b\" 6 \"c\" 7 \"d\" 8 \"e\" \"src\" 9 \"dst\" 10");
        break;
      case 3:
        lines.push_back("\"UNFULFILL" + header + "1 2 3 4 5 6 7 8");
        break;
      default:
        lines.push_back("\"SBD_JOB_STATUS" + header + "1 2 3 4 5 6 7 8 9 10 11 12");
    }
  }
  return lines;
}

class ParsingInSeveralThreads : public ::testing::Test {
 protected:
  // Runs `work` in as many threads, which begin together.
  template <typename Work>
  void inThreads(int count, Work work) {
    std::barrier begin(count);
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
      threads.emplace_back([&begin, &work, i] {
        begin.arrive_and_wait();
        work(i);
      });
    for (std::thread &thread : threads) thread.join();
  }
};

TEST_F(ParsingInSeveralThreads, GivesWhatOneThreadGives) {
  const std::vector<std::string> lines = mixedLines(1400);
  std::vector<std::string> expected(lines.size());
  std::transform(lines.begin(), lines.end(), expected.begin(), outcomeOf);

  std::vector<std::vector<std::string>> outcomes(4);
  inThreads(4, [&](int thread) {
    auto &mine = outcomes[static_cast<size_t>(thread)];
    // Each begins elsewhere, so that different versions meet.
    for (size_t i = 0; i < lines.size(); ++i)
      mine.push_back(outcomeOf(lines[(i + static_cast<size_t>(thread) * 5) % lines.size()]));
  });
  for (size_t thread = 0; thread < 4; ++thread)
    for (size_t i = 0; i < lines.size(); ++i)
      ASSERT_EQ(outcomes[thread][i], expected[(i + thread * 5) % lines.size()]) << thread << ' ' << i;
}

// Every thread begins with another line and takes them in another order, so that all types and versions meet.
TEST_F(ParsingInSeveralThreads, GivesSixteenThreadsTheRecordsOfAllTypesThatOneGets) {
  const UserDirectory users{{{0, "root"}, {2, "two"}, {1001, "anna"}}};
  const std::vector<std::string> lines = linesOfAllTypes();
  const std::vector<std::string> expected = shownOutcomesOf(lines);

  constexpr size_t numThreads = 16;
  constexpr size_t readPerThread = 600;
  std::vector<std::vector<size_t>> wrong(numThreads);
  inThreads(numThreads, [&](int thread) {
    const auto number = static_cast<size_t>(thread);
    const size_t step = 2 * number + 1;
    size_t at = number * lines.size() / numThreads;
    for (size_t i = 0; i < readPerThread; ++i, at = (at + step) % lines.size())
      if (shownOutcomeOf(lines[at]) != expected[at]) wrong[number].push_back(at);
  });
  for (const std::vector<size_t> &indices : wrong)
    for (const size_t index : indices) ADD_FAILURE() << lines[index];
}

// What a thread borrows lasts while others borrow, and goes when the thread ends.
TEST_F(ParsingInSeveralThreads, LendsEachItsOwnRecord) {
  const std::vector<std::string> lines = mixedLines(1400);
  const std::vector<std::string> expected = shownOutcomesOf(lines);
  std::vector<int> wrong(4);
  inThreads(4, [&](int thread) {
    for (size_t i = 0; i < lines.size(); ++i) {
      const size_t at = (i + static_cast<size_t>(thread) * 5) % lines.size();
      const eventRecord *const record = wmq_borrowline(lines[at].data(), lines[at].size());
      const std::string outcome =
          record != nullptr ? jsonOf(*record) : std::to_string(wmq_errno) + ' ' + wmq_errdetail();
      if (outcome != expected[at]) ++wrong[static_cast<size_t>(thread)];
    }
  });
  EXPECT_EQ(wrong, (std::vector<int>{0, 0, 0, 0}));
}

TEST_F(ParsingInSeveralThreads, GoesOnBesideAStreamInUse) {
  const TemporaryDirectory directory;
  std::string path = directory / "s";
  streamParams params{};
  params.fileName = path.data();
  params.maxStreamSize = 100;
  params.maxStreamFileNum = 2;
  ASSERT_EQ(wmq_openstream(&params), 0);
  const std::vector<std::string> lines = mixedLines(350);
  std::vector<int> wrong(4);
  inThreads(4, [&](int thread) {
    int &mine = wrong[static_cast<size_t>(thread)];
    int lineNum = 0;
    for (int32_t i = 0; i < 350; ++i) {
      if (thread == 0) {
        eventRecord record = logSwitch(i);
        mine += wmq_writestream(&record) == 0 ? 0 : 1;
        wmq_readstream(&lineNum);
      } else {
        const std::string &line = lines[static_cast<size_t>(i)];
        mine += outcomeOf(line) == outcomeOf(line) ? 0 : 1;
      }
    }
  });
  EXPECT_EQ(wrong, (std::vector<int>{0, 0, 0, 0}));
  EXPECT_EQ(wmq_closestream(), 0);
  wmq_readstreamline("");  // releases the record that the library keeps
}

TEST_F(ParsingInSeveralThreads, KeepsTheVersionsOfTheirLinesApart) {
  const std::string old = "\"SBD_JOB_STATUS\" \"5.0\" 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14";
  const std::string current = "\"SBD_JOB_STATUS\" \"10.1\" 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14";
  std::vector<int> wrong(2);
  inThreads(2, [&](int thread) {
    for (int i = 0; i < 2000; ++i) {
      const OwnedRecord record = parse(thread == 0 ? old : current);
      const bool right = record != nullptr && wmq_lineversion() == (thread == 0 ? 5.0F : 10.1F) &&
                         record->eventLog.sbdJobStatusLog.sbdField13 == (thread == 0 ? -65535 : 13) &&
                         record->eventLog.sbdJobStatusLog.sbdField14 == (thread == 0 ? 0 : 14);
      wrong[static_cast<size_t>(thread)] += right ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, (std::vector<int>{0, 0}));
}

TEST_F(ParsingInSeveralThreads, KeepsTheirErrorNumbersApart) {
  std::vector<int> wrong(3);
  inThreads(3, [&](int thread) {
    const char *const lines[] = {"\"NO_SUCH_EVENT\" \"10.1\" 5", "garbage", "\"JOB_VACATED\" \"10.1\" 5"};
    const int errors[] = {WMQE_BAD_EVENT, WMQE_BAD_FORMAT, 0};
    for (int i = 0; i < 2000; ++i) {
      parse(lines[thread]);
      wrong[static_cast<size_t>(thread)] += wmq_errno == errors[thread] ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, (std::vector<int>{0, 0, 0}));
}

TEST_F(ParsingInSeveralThreads, BeginsEachThreadWithoutVersionAndError) {
  wmq_errno = 99;
  parse(logSwitchLine(1));
  wmq_errno = 99;
  float version = -1;
  int error = -1;
  std::thread([&] {
    version = wmq_lineversion();
    error = wmq_errno;
    wmq_errno = 7;
    wmq_setlineversion(3.0F);
  }).join();
  EXPECT_EQ(version, 0.0F);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(wmq_errno, 99);
  EXPECT_EQ(wmq_lineversion(), 10.1F);
}

TEST_F(ParsingInSeveralThreads, LetsARecordBeReleasedInAnother) {
  std::vector<OwnedRecord> records;
  records.reserve(100);
  for (int i = 0; i < 100; ++i) records.push_back(parse("\"GRP_STATUS\" \"10.1\" 5 \"text\" 1 2"));
  std::thread([&records] { records.clear(); }).join();
  EXPECT_TRUE(records.empty());
}

}  // namespace
}  // namespace wmq::testing
