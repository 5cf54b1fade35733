#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "wmq/companion.h"

namespace {

// A file and the number of its lines that have been taken.
class LinesOf {
 public:
  explicit LinesOf(const std::string &text) {
    std::fwrite(text.data(), 1, text.size(), file);
    std::rewind(file);
  }
  ~LinesOf() {
    std::fclose(file);
    _getNextLine_(nullptr, nullptr, 0);
  }
  LinesOf(const LinesOf &) = delete;
  LinesOf &operator=(const LinesOf &) = delete;

  std::string next() {
    const char *const line = _getNextLine_(file, &lineNum, 0);
    return line == nullptr ? "end" : line;
  }

  std::vector<std::string> rest() {
    std::vector<std::string> lines;
    while (const char *const line = _getNextLine_(file, &lineNum, 0)) lines.emplace_back(line);
    return lines;
  }

  FILE *file = std::tmpfile();
  int lineNum = 0;
};

TEST(LineReader, GivesLinesWithoutTheirEnds) {
  LinesOf file("one\ntwo \r\n three\n");
  EXPECT_EQ(file.rest(), (std::vector<std::string>{"one", "two \r", " three"}));
  EXPECT_EQ(file.lineNum, 3);
}

TEST(LineReader, GivesALastLineWithoutEnd) {
  LinesOf file("one\ntwo");
  EXPECT_EQ(file.rest(), (std::vector<std::string>{"one", "two"}));
}

TEST(LineReader, SkipsEmptyLinesButCountsThem) {
  LinesOf file("\n\none\n\n \n\n");
  EXPECT_EQ(file.next(), "one");
  EXPECT_EQ(file.lineNum, 3);
  EXPECT_EQ(file.next(), " ");
  EXPECT_EQ(file.lineNum, 5);
  EXPECT_EQ(file.next(), "end");
  EXPECT_EQ(file.lineNum, 6);
}

TEST(LineReader, HasNothingToGiveOfAnEmptyFile) {
  LinesOf file("");
  EXPECT_EQ(file.next(), "end");
  EXPECT_EQ(wmc_errno, 0);
}

TEST(LineReader, GivesLinesOfAnyLength) {
  const std::string text(3'000'000, 'x');
  LinesOf file(text + "\n\nshort\n" + text);
  EXPECT_EQ(file.next(), text);
  EXPECT_EQ(file.next(), "short");
  EXPECT_EQ(file.next(), text);
}

TEST(LineReader, ReadsOnWhereAFileHasGrown) {
  char path[] = "/tmp/growing-XXXXXX";
  const int descriptor = mkstemp(path);
  ASSERT_GE(descriptor, 0);
  FILE *const writer = fdopen(descriptor, "w");
  FILE *const reader = std::fopen(path, "r");
  std::remove(path);

  std::fputs("one\n", writer);
  std::fflush(writer);
  EXPECT_STREQ(_getNextLine_(reader, nullptr, 0), "one");
  EXPECT_EQ(_getNextLine_(reader, nullptr, 0), nullptr);
  EXPECT_NE(std::feof(reader), 0);
  std::fputs("two\n", writer);
  std::fflush(writer);
  EXPECT_STREQ(_getNextLine_(reader, nullptr, 0), "two");
  EXPECT_EQ(_getNextLine_(reader, nullptr, 0), nullptr);
  std::fclose(reader);
  std::fclose(writer);
}

TEST(LineReader, UsesTheFilesOwnPosition) {
  LinesOf file("one\ntwo\nthree\n");
  EXPECT_EQ(file.next(), "one");
  std::fseek(file.file, 8, SEEK_SET);
  EXPECT_EQ(file.next(), "three");
  std::rewind(file.file);
  EXPECT_EQ(file.next(), "one");
}

TEST(LineReader, NeedsNoCounter) {
  LinesOf file("one\n");
  EXPECT_STREQ(_getNextLine_(file.file, nullptr, 0), "one");
}

TEST(LineReader, CountsAsFarAsItsCounterGoes) {
  LinesOf file("one\ntwo\n");
  int lineNum = INT_MAX - 1;
  EXPECT_STREQ(_getNextLine_(file.file, &lineNum, 0), "one");
  EXPECT_EQ(lineNum, INT_MAX);
  EXPECT_STREQ(_getNextLine_(file.file, &lineNum, 0), "two");
  EXPECT_EQ(lineNum, INT_MAX);
}

TEST(LineReader, GivesNothingForAMissingFile) {
  int lineNum = 4;
  EXPECT_EQ(_getNextLine_(nullptr, &lineNum, 0), nullptr);
  EXPECT_EQ(lineNum, 4);
}

TEST(LineReader, GivesNothingWhenReadingFails) {
  FILE *const directory = std::fopen("/", "r");
  ASSERT_NE(directory, nullptr);
  EXPECT_EQ(_getNextLine_(directory, nullptr, 0), nullptr);
  EXPECT_EQ(wmc_errno, 0);
  std::fclose(directory);
}

TEST(LineReader, KeepsTheLineOfEachThread) {
  LinesOf file("one\ntwo\n");
  const char *const line = _getNextLine_(file.file, nullptr, 0);
  std::string other;
  std::thread([&] { other = _getNextLine_(file.file, nullptr, 0); }).join();
  EXPECT_STREQ(line, "one");
  EXPECT_EQ(other, "two");
}

RC_GTEST_PROP(LineReader, GivesEveryLineThatHasACharacter, ()) {
  const auto lines = *rc::gen::container<std::vector<std::string>>(
      rc::gen::container<std::string>(rc::gen::element('a', ' ', '\r', '"')));
  std::string text;
  std::vector<std::string> expected;
  for (const std::string &line : lines) {
    text += line + '\n';
    if (!line.empty()) expected.push_back(line);
  }
  LinesOf file(text);
  RC_ASSERT(file.rest() == expected);
  RC_ASSERT(file.lineNum == static_cast<int>(lines.size()));
}

}  // namespace
