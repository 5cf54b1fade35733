#include "companion/quoting.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "companion/written_text.h"
#include "wmq/companion.h"

namespace {

// A copy that ends where its memory ends, so that a sanitizer sees every byte that is read beyond.
std::unique_ptr<char[]> exactCopy(const std::string &text) {
  auto copy = std::make_unique<char[]>(text.size());
  std::copy(text.begin(), text.end(), copy.get());
  return copy;
}

std::string quotedForm(const std::string &text) {
  const auto copy = exactCopy(text);
  std::vector<char> out(2 * text.size() + 2);
  return {out.data(), wmq::quotedInto(out.data(), copy.get(), text.size())};
}

// The content of the first quoted string and the bytes behind it; "none" when there is no such string.
std::pair<std::string, std::string> found(const std::string &text) {
  const auto copy = exactCopy(text);
  const char *const end = copy.get() + text.size();
  const char *content;
  size_t rawLength;
  size_t length;
  const char *const behind = wmq::findQuoted(copy.get(), end, &content, &rawLength, &length);
  if (behind == nullptr) return {"none", ""};
  EXPECT_EQ(content + rawLength + 1, behind);
  const auto decoded = std::make_unique<char[]>(length);
  wmq::decodeQuoted(decoded.get(), content, rawLength, length);
  return {std::string(decoded.get(), length), std::string(behind, end)};
}

std::pair<std::string, std::string> contentAndRest(const char *content, const char *rest) {
  return {content, rest};
}

std::string fileOf(const char *text) {
  return wmq::test::writtenBy([text](FILE *file) { EXPECT_EQ(addQStr(file, text), 0); });
}

rc::Gen<std::string> textWithManyEscapes() {
  return rc::gen::container<std::string>(rc::gen::weightedOneOf<char>(
      {{2, rc::gen::element('"', '\n', 'n', '\\', ' ')}, {3, rc::gen::inRange<char>(1, 127)}}));
}

// Texts of all short lengths, at the beginning of a group and elsewhere, that differ at one place or end
// there.
TEST(TextsAreTheSame, WhenNoByteAndNoLengthDiffers) {
  alignas(16) char left[64];
  alignas(16) char right[64];
  for (const size_t offset : {0, 3}) {
    for (size_t length = 0; length <= 40; ++length) {
      std::memset(left, 'l', sizeof left);
      std::memset(right, 'r', sizeof right);
      for (char *text : {left, right + offset}) {
        std::memset(text, 'x', length);
        text[length] = '\0';
      }
      EXPECT_TRUE(wmq::areSame(left, right + offset)) << length;
      for (size_t place = 0; place < length; ++place) {
        for (const char other : {'y', '\0'}) {
          right[offset + place] = other;
          EXPECT_FALSE(wmq::areSame(left, right + offset)) << length << ' ' << place;
          EXPECT_FALSE(wmq::areSame(right + offset, left)) << length << ' ' << place;
        }
        right[offset + place] = 'x';
      }
    }
  }
}

TEST(QuotedStrings, DoubleADoubleQuoteAndWriteALineEndAsQuoteAndLetter) {
  EXPECT_EQ(quotedForm(""), R"("")");
  EXPECT_EQ(quotedForm("plain"), R"("plain")");
  EXPECT_EQ(quotedForm(R"(say "hi")"), R"("say ""hi""")");
  EXPECT_EQ(quotedForm("two\nlines"), R"("two"nlines")");
  EXPECT_EQ(quotedForm("\n"), R"(""n")");
}

TEST(QuotedStrings, KeepABackslashAndAllOtherBytesAsTheyStand) {
  const std::string bytes = "a\\b\\\\ \t\r\v\x01\x7f\x80\xff;#'n";
  EXPECT_EQ(quotedForm(bytes), '"' + bytes + '"');
}

TEST(QuotedStrings, EscapeAtEveryPositionOfEveryShortLength) {
  for (size_t length = 1; length <= 70; ++length) {
    for (size_t place = 0; place < length; ++place) {
      for (const char special : {'"', '\n'}) {
        std::string text(length, 'x');
        text[place] = special;
        std::string expected = '"' + text + '"';
        expected.replace(place + 1, 1, special == '"' ? "\"\"" : "\"n");
        ASSERT_EQ(quotedForm(text), expected) << length << " bytes, at " << place;
        ASSERT_EQ(found(expected), std::pair(text, std::string()));
      }
    }
  }
}

TEST(FindingAQuotedString, EndsAtAQuoteBeforeAnythingElse) {
  EXPECT_EQ(found(R"("a" "b")"), contentAndRest("a", R"( "b")"));
  EXPECT_EQ(found(R"("" 5)"), contentAndRest("", " 5"));
  EXPECT_EQ(found(R"("a"b")"), contentAndRest("a", "b\""));
  EXPECT_EQ(found(R"("a""b"nc"N)"), contentAndRest("a\"b\nc", "N"));
  EXPECT_EQ(found(R"("a""")"), contentAndRest("a\"", ""));
}

TEST(FindingAQuotedString, SkipsWhateverStandsBeforeIt) {
  EXPECT_EQ(found(R"( 12 3.5 junk "a" 4)"), contentAndRest("a", " 4"));
  EXPECT_EQ(found(std::string(100, '7') + "\"a\""), contentAndRest("a", ""));
}

TEST(FindingAQuotedString, RefusesAStringThatDoesNotEnd) {
  for (const char *const text :
       {"", "no quote", "\"", "\"open", "\"a\"\"", "\"a\"n", "\"\"\"", "\"\"n", "\"\"\"\"\"n"})
    EXPECT_EQ(found(text).first, "none") << text;
}

TEST(FindingAQuotedString, FindsALongOneWithEscapesFarApart) {
  std::string content;
  for (size_t i = 0; i < 1000; ++i) content += std::string(i % 37, 'y') + (i % 2 == 0 ? "\"" : "\n");
  EXPECT_EQ(found(quotedForm(content) + " tail"), std::pair(content, std::string(" tail")));
}

RC_GTEST_PROP(QuotedStrings, ComeBackAsTheyWere, ()) {
  const std::string text = *textWithManyEscapes();
  const std::string rest = *rc::gen::element<std::string>("", " 1", " \"x\"", "\n");
  RC_ASSERT(found(quotedForm(text) + rest) == std::pair(text, rest));
}

RC_GTEST_PROP(QuotedStrings, NeverHoldALineEnd, ()) {
  RC_ASSERT(quotedForm(*textWithManyEscapes()).find('\n') == std::string::npos);
}

// Any text at all: what is found decodes to what a byte by byte reading of the rules gives.
RC_GTEST_PROP(FindingAQuotedString, FollowsTheRulesOnAnyText, ()) {
  const std::string text = *textWithManyEscapes();
  std::pair<std::string, std::string> expected{"none", ""};
  if (size_t at = text.find('"'); at != std::string::npos) {
    std::string content;
    for (++at; at < text.size(); ++at) {
      const char next = at + 1 < text.size() ? text[at + 1] : '\0';
      if (text[at] != '"') {
        content += text[at];
      } else if (next == '"' || next == 'n') {
        content += next == 'n' ? '\n' : '"';
        ++at;
      } else {
        expected = {content, text.substr(at + 1)};
        break;
      }
    }
  }
  RC_ASSERT(found(text) == expected);
}

TEST(AddQStr, WritesABlankAndTheQuotedString) {
  EXPECT_EQ(fileOf("a \"b\""), " \"a \"\"b\"\"\"");
  EXPECT_EQ(fileOf(""), " \"\"");
  EXPECT_EQ(fileOf(nullptr), " \"\"");
  const std::string text(100'000, '"');
  EXPECT_EQ(fileOf(text.c_str()), " \"" + text + text + '"');
}

TEST(AddQStr, IsNegativeWhenTheWriteFails) {
  EXPECT_LT(wmq::test::resultOnAFullDevice([](FILE *file) { return addQStr(file, "a"); }), 0);
  EXPECT_LT(addQStr(nullptr, "a"), 0);
}

TEST(StripQStr, CountsTheBytesUpToTheClosingQuote) {
  char out[64];
  EXPECT_EQ(stripQStr(R"( 5 "a ""b""" 6)", out), 12);
  EXPECT_STREQ(out, "a \"b\"");
  EXPECT_EQ(stripQStr(R"("")", out), 2);
  EXPECT_STREQ(out, "");
}

TEST(StripQStr, IsNegativeWithoutACompleteString) {
  char out[64];
  EXPECT_LT(stripQStr("", out), 0);
  EXPECT_LT(stripQStr("12 13", out), 0);
  EXPECT_LT(stripQStr("\"open", out), 0);
  EXPECT_LT(stripQStr(nullptr, out), 0);
  EXPECT_LT(stripQStr("\"a\"", nullptr), 0);
}

RC_GTEST_PROP(StripQStr, UndoesAddQStr, ()) {
  const std::string text = *textWithManyEscapes();
  const std::string line = fileOf(text.c_str());
  std::vector<char> out(line.size() + 1);
  RC_ASSERT(stripQStr(line.c_str(), out.data()) == static_cast<int>(line.size()));
  RC_ASSERT(text == out.data());
}

}  // namespace
