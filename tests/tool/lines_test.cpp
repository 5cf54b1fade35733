#include "tool/lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/temporary_directory.h"
#include "support/text_files.h"

namespace wmq::tool {
namespace {

class LinesOfAFile : public ::testing::Test {
 protected:
  Lines linesOf(const std::string &content) {
    wmq::testing::makeFile(directory / "file", content);
    return Lines(directory / "file");
  }

  static std::vector<std::string> rest(Lines &lines) {
    std::vector<std::string> texts;
    while (lines.next()) texts.emplace_back(lines.text());
    return texts;
  }

  wmq::testing::TemporaryDirectory directory;
};

using Texts = std::vector<std::string>;

TEST_F(LinesOfAFile, AreNumberedFromOneEmptyOnesIncluded) {
  Lines lines = linesOf("one\n\nthree\n");
  ASSERT_TRUE(lines.next());
  EXPECT_EQ(lines.text(), "one");
  EXPECT_EQ(lines.number(), 1U);
  EXPECT_EQ(lines.size(), 4U);
  ASSERT_TRUE(lines.next());
  EXPECT_EQ(lines.text(), "");
  EXPECT_EQ(lines.number(), 2U);
  ASSERT_TRUE(lines.next());
  EXPECT_EQ(lines.text(), "three");
  EXPECT_EQ(lines.number(), 3U);
  EXPECT_FALSE(lines.next());
  EXPECT_FALSE(lines.next());
}

TEST_F(LinesOfAFile, NeedNoLineEndAtTheEnd) {
  Lines lines = linesOf("one\nlast");
  EXPECT_EQ(rest(lines), (Texts{"one", "last"}));
  Lines single = linesOf("x");
  ASSERT_TRUE(single.next());
  EXPECT_EQ(single.size(), 1U);
  Lines none = linesOf("");
  EXPECT_FALSE(none.next());
}

TEST_F(LinesOfAFile, AreFollowedByANul) {
  Lines lines = linesOf("one\ntwo");
  lines.next();
  EXPECT_STREQ(lines.text().data(), "one");
  lines.next();
  EXPECT_STREQ(lines.text().data(), "two");
}

TEST_F(LinesOfAFile, MayHoldNuls) {
  Lines lines = linesOf(std::string("a\0b\n", 4));
  ASSERT_TRUE(lines.next());
  EXPECT_EQ(lines.text(), std::string_view("a\0b", 3));
}

TEST_F(LinesOfAFile, MayBeOfAnyLength) {
  // Lengths around the buffer's and far beyond, and lines that begin in one buffer and end in the next.
  for (size_t length : {262143, 262144, 262145, 3'000'000}) {
    std::string first(length, 'a');
    std::string second(length / 2, 'b');
    Lines lines = linesOf(first + "\n" + second + "\nend");
    EXPECT_EQ(rest(lines), (Texts{first, second, "end"})) << length;
  }
}

TEST_F(LinesOfAFile, StayWholeWhereBuffersMeet) {
  std::string content;
  Texts expected;
  for (int i = 0; content.size() < 1'000'000; ++i) {
    expected.push_back("line " + std::to_string(i) + std::string(static_cast<size_t>(i % 97), '.'));
    content += expected.back() + "\n";
  }
  Lines lines = linesOf(content);
  EXPECT_EQ(rest(lines), expected);
}

}  // namespace
}  // namespace wmq::tool
