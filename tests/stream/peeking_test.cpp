#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <thread>

#include "support/collected_lines.h"
#include "support/small_records.h"

namespace wmq::testing {
namespace {

// What looking at a line and what parsing it say of its header.
struct Said {
  int result;
  int error;
  std::string detail;
  wmqLineHeader header;
};

Said peek(const std::string &line) {
  Said said{0, 0, "", {.type = 77, .eventTime = 77, .version = "untouched", .length = 77}};
  wmq_errno = 0;
  said.result = wmq_peekline(line.c_str(), &said.header);
  said.error = wmq_errno;
  if (said.error != 0) said.detail = wmq_errdetail();
  return said;
}

class PeekingAtALine : public ::testing::Test {
 protected:
  void expectHeader(const std::string &line, int32_t type, const char *version, int32_t eventTime) {
    const Said said = peek(line);
    EXPECT_EQ(said.result, 0) << line;
    EXPECT_EQ(said.error, 0) << line;
    EXPECT_EQ(said.header.type, type) << line;
    EXPECT_STREQ(said.header.version, version) << line;
    EXPECT_EQ(said.header.eventTime, eventTime) << line;
    EXPECT_EQ(said.header.length, lengthOfHeader(line)) << line;
  }

  void expectRefused(const std::string &line) {
    const Said said = peek(line);
    EXPECT_EQ(said.result, -1) << line;
    EXPECT_EQ(said.error, WMQE_BAD_FORMAT) << line;
    EXPECT_EQ(said.header.type, 77) << line;
    EXPECT_EQ(said.header.eventTime, 77) << line;
    EXPECT_STREQ(said.header.version, "untouched") << line;
    EXPECT_EQ(said.header.length, 77U) << line;
  }

  // Behind two quoted tokens, a number, and the one character that follows it, if one does.
  static size_t lengthOfHeader(const std::string &line) {
    size_t at = 0;
    for (int quotes = 0; quotes < 4; ++at) quotes += line[at] == '"' ? 1 : 0;
    at = line.find_first_of("-0123456789", at);
    at = std::min(line.find_first_not_of("-0123456789", at), line.size());
    return at + (at < line.size() ? 1 : 0);
  }
};

TEST_F(PeekingAtALine, TellsTypeVersionAndTime) {
  expectHeader("\"LOG_SWITCH\" \"10.1\" 1700000000 42 \n", EVENT_LOG_SWITCH, "10.1", 1700000000);
  expectHeader("\"JOB_VACATED\" \"9.13\" -5", EVENT_JOB_VACATED, "9.13", -5);
  expectHeader("\"END_OF_STREAM\" \"2.1\" 7", EVENT_END_OF_STREAM, "2.1", 7);
}

TEST_F(PeekingAtALine, DoesNotCareForTheFields) {
  expectHeader("\"JOB_NEW\" \"10.1\" 5", EVENT_JOB_NEW, "10.1", 5);
  expectHeader("\"JOB_NEW\" \"10.1\" 5 rubbish \"\xff", EVENT_JOB_NEW, "10.1", 5);
}

TEST_F(PeekingAtALine, FindsAHeaderHoweverManyBlanksStandInIt) {
  for (size_t blanks = 1; blanks <= 300; ++blanks) {
    const std::string gap(blanks, ' ');
    const std::string rest = " 42 " + std::string(200, 'x');
    expectHeader("\"LOG_SWITCH\" \"10.1\"" + gap + "1700000000" + rest, EVENT_LOG_SWITCH, "10.1", 1700000000);
    expectHeader("\"LOG_SWITCH\"" + gap + "\"10.1\" 1700000000" + rest, EVENT_LOG_SWITCH, "10.1", 1700000000);
    expectHeader("\"LOG_SWITCH\" \"10.1\"" + gap + "1700000000", EVENT_LOG_SWITCH, "10.1", 1700000000);
    expectRefused("\"LOG_SWITCH\" \"10.1\"" + gap + "x" + rest);
    expectRefused("\"LOG_SWITCH\" \"10.1       " + gap + "\" 1700000000" + rest + std::string(blanks, '"'));
  }
}

// The first look is at the beginning of a line alone, and may end anywhere in its header.
TEST_F(PeekingAtALine, ReadsNothingBehindALineHoweverMuchStandsBeforeItsHeader) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void *const pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(pages, MAP_FAILED);
  char *const end = static_cast<char *>(pages) + page;
  ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);

  const std::string whole = "\"LOG_SWITCH\" \"10.1\" 17 5 ";
  const size_t least = whole.find("17") + 1;
  for (size_t before = 0; before <= 140; ++before)
    for (size_t length = 0; length <= whole.size(); ++length) {
      const std::string line = std::string(before, 'x') + whole.substr(0, length);
      char *const text = end - line.size() - 1;
      std::memcpy(text, line.c_str(), line.size() + 1);
      wmqLineHeader header{};
      EXPECT_EQ(wmq_peekline(text, &header), length < least ? -1 : 0) << line;
    }
  munmap(pages, 2 * page);
}

TEST_F(PeekingAtALine, FillsInTheHeaderOfATypeThatHasNoName) {
  const Said said = peek("\"NO_SUCH_EVENT\" \"8.5\" 12 3 4");
  EXPECT_EQ(said.result, -1);
  EXPECT_EQ(said.error, WMQE_BAD_EVENT);
  EXPECT_EQ(said.header.type, -1);
  EXPECT_STREQ(said.header.version, "8.5");
  EXPECT_EQ(said.header.eventTime, 12);
}

TEST_F(PeekingAtALine, RefusesWhatIsNoHeaderAndTouchesNothing) {
  for (const char *line :
       {"", " ", "\n", "\"", "\"\"", "# a comment", "\"LOG_SWITCH\"", "\"LOG_SWITCH\" \"10.1\"",
        "\"LOG_SWITCH\" \"10.1\" ", "\"LOG_SWITCH\" \"10.1\" x", "\"LOG_SWITCH\" \"0\" 5",
        "\"LOG_SWITCH\" \"nan\" 5", "\"LOG_SWITCH\" \"10.100000000\" 5"})
    expectRefused(line);
  expectRefused("\"" + std::string(100000, 'x') + "\" \"10.1\" 5");
  expectRefused(std::string(100000, '"'));
}

TEST_F(PeekingAtALine, NamesTheArgumentThatIsMissing) {
  wmqLineHeader header{};
  wmq_errno = 0;
  EXPECT_EQ(wmq_peekline(nullptr, &header), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
  wmq_errno = 0;
  EXPECT_EQ(wmq_peekline("\"LOG_SWITCH\" \"10.1\" 5", nullptr), -1);
  EXPECT_EQ(wmq_errno, WMQE_BAD_ARG);
}

TEST_F(PeekingAtALine, LeavesTheKeptRecordTheLineVersionAndTheErrorNumberAlone) {
  const eventRecord *kept = wmq_readstreamline("\"LOG_SWITCH\" \"9.1\" 5 42 ");
  ASSERT_NE(kept, nullptr);
  wmqLineHeader header{};
  wmq_errno = 99;
  EXPECT_EQ(wmq_peekline("\"LOG_SWITCH\" \"7.0\" 5 43 ", &header), 0);
  EXPECT_EQ(wmq_errno, 99);
  EXPECT_EQ(wmq_lineversion(), 9.1F);
  EXPECT_EQ(kept->eventLog.logSwitchLog.lastJobId, 42);
  EXPECT_EQ(wmq_peekline("\"LOG_SWITCH\" \"-1\" 5 43 ", &header), -1);
  EXPECT_EQ(wmq_lineversion(), 9.1F);
  wmq_readstreamline("");
}

// Parsing says the same of the header, whatever the bytes: a good header may be followed by bad fields, a bad
// one is refused with the same words.
bool agreesWithParsing(const std::string &line) {
  const Said said = peek(line);
  const OwnedRecord record = parse(line);
  if (record != nullptr)
    return said.result == 0 && said.header.type == record->type &&
           said.header.eventTime == record->eventTime &&
           std::memcmp(said.header.version, record->version, sizeof record->version) == 0;
  const std::string detail = wmq_errdetail();
  if (said.result == 0) return detail.rfind("header of the line", 0) == std::string::npos;
  return said.error == wmq_errno && said.detail == detail;
}

TEST(Peeking, AgreesWithParsingOnLinesMadeOfPiecesOfHeaders) {
  const auto piece = rc::gen::element<std::string>("\"", "\"\"", " ", "\"n", "JOB_VACATED", "LOG_SWITCH",
                                                   "10.1", "-", "0", "5", "1e", "nan", "\t", "\n", "\xff",
                                                   "99999999999", "\"JOB_VACATED\" ", "\"9.1\" ", "17 ");
  EXPECT_TRUE(rc::check([&] {
    std::string line;
    for (const std::string &part : *rc::gen::container<std::vector<std::string>>(piece)) line += part;
    RC_ASSERT(agreesWithParsing(line));
  }));
}

TEST(Peeking, AgreesWithParsingOnDamagedLines) {
  const std::vector<std::string> lines = goldenLines();
  EXPECT_TRUE(rc::check([&] {
    std::string line = *rc::gen::elementOf(lines);
    const size_t header = std::min<size_t>(line.size(), 50);
    for (int change = *rc::gen::inRange(0, 4); change > 0 && header > 0; --change) {
      const auto at = *rc::gen::inRange<size_t>(0, header);
      if (*rc::gen::arbitrary<bool>())
        line[at] = static_cast<char>(*rc::gen::inRange(1, 256));
      else
        line.resize(at);
      if (line.size() < header) break;
    }
    RC_ASSERT(agreesWithParsing(line));
  }));
}

TEST(Peeking, AgreesWithParsingOnEveryBeginningOfALine) {
  const std::string line = "x\"JOB_VACATED\" y\"10.1\" \t 1700000000 rest";
  for (size_t length = 0; length <= line.size(); ++length)
    EXPECT_TRUE(agreesWithParsing(line.substr(0, length))) << length;
}

TEST(Peeking, KeepsThreadsApart) {
  auto look = [](int32_t time) {
    const std::string line = "\"LOG_SWITCH\" \"10.1\" " + std::to_string(time) + " 1 ";
    for (int i = 0; i < 1000; ++i) {
      wmqLineHeader header{};
      ASSERT_EQ(wmq_peekline(line.c_str(), &header), 0);
      ASSERT_EQ(header.eventTime, time);
    }
  };
  std::thread other(look, 1);
  look(2);
  other.join();
}

}  // namespace
}  // namespace wmq::testing
