#include "tool/text.h"

#include <gtest/gtest.h>

namespace wmq::tool {
namespace {

TEST(PrintableText, KeepsWellFormedUtf8) {
  EXPECT_EQ(printable("plain Größe 日本 🚀"), "plain Größe 日本 🚀");
  EXPECT_EQ(printable(""), "");
}

TEST(PrintableText, ShowsWhatATerminalWouldObey) {
  EXPECT_EQ(printable("\x1b[31mred\n\x7f"), "\\x1b[31mred\\x0a\\x7f");
  EXPECT_EQ(printable("\xc2\x9b"
                      "31m"),
            "\\xc2\\x9b31m");
}

TEST(PrintableText, ShowsBytesThatAreNoUtf8) {
  EXPECT_EQ(printable("a\xff"
                      "b"),
            "a\\xffb");
  EXPECT_EQ(printable("\xc0\xaf"), "\\xc0\\xaf");           // overlong
  EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");  // a surrogate
  EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
  EXPECT_EQ(printable("\xe6\x97"), "\\xe6\\x97");  // cut short
}

TEST(QuotedText, IsWholeUpTo60Bytes) {
  EXPECT_EQ(excerpt(""), "");
  EXPECT_EQ(excerpt(std::string(60, 'x')), std::string(60, 'x'));
  EXPECT_EQ(excerpt(std::string(61, 'x')), std::string(60, 'x') + "...");
}

TEST(QuotedText, IsCutBetweenCharacters) {
  EXPECT_EQ(excerpt(std::string(58, 'x') + "\u20ac"), std::string(58, 'x') + "...");
  EXPECT_EQ(excerpt(std::string(57, 'x') + "\u20ac!"), std::string(57, 'x') + "\u20ac...");
  EXPECT_EQ(excerpt(std::string(70, '\xff')), std::string(60, '\xff') + "...");
}

TEST(JsonStrings, EscapeWhatJsonReserves) {
  EXPECT_EQ(jsonString("a\"b\\c\td"), "\"a\\\"b\\\\c\\u0009d\"");
  EXPECT_EQ(jsonString("Größe"), "\"Größe\"");
}

TEST(JsonStrings, CarryAnyByteAsALoneSurrogate) { EXPECT_EQ(jsonString("x\x80\xff"), "\"x\\udc80\\udcff\""); }

TEST(Numbers, AreGroupedByThousands) {
  EXPECT_EQ(grouped(0), "0");
  EXPECT_EQ(grouped(999), "999");
  EXPECT_EQ(grouped(1000), "1,000");
  EXPECT_EQ(grouped(1926262815), "1,926,262,815");
}

TEST(Numbers, AgreeWithTheirThing) {
  EXPECT_EQ(counted(1, "file"), "1 file");
  EXPECT_EQ(counted(0, "file"), "0 files");
  EXPECT_EQ(counted(1234, "file"), "1,234 files");
}

TEST(Durations, AreHoursMinutesSeconds) {
  EXPECT_EQ(clockText(0), "0:00:00");
  EXPECT_EQ(clockText(3661), "1:01:01");
  EXPECT_EQ(clockText(2079708), "577:41:48");
  EXPECT_EQ(clockText(-60), "-0:01:00");
}

}  // namespace
}  // namespace wmq::tool
