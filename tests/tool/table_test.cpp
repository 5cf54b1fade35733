#include "tool/table.h"

#include <gtest/gtest.h>

namespace wmq::tool {
namespace {

TEST(Tables, AlignTheirColumnsByCharacters) {
  Table table({{"Name"}, {"Jobs", Table::Align::right}, {"Note"}});
  table.row({"größe", "7", "first"});
  table.row({"x", "12345", ""});
  EXPECT_EQ(table.text(false),
            "Name    Jobs  Note\n"
            "größe      7  first\n"
            "x      12345\n");
}

TEST(Tables, SetTheirTitlesOffOnlyWhenAsked) {
  Table table({{"A"}, {"B"}});
  EXPECT_EQ(table.text(true), "\x1b[1mA  B\x1b[0m\n");
  EXPECT_EQ(table.text(false), "A  B\n");
}

TEST(Bars, AreDrawnToTheEighthOfACharacter) {
  EXPECT_EQ(bar(1, 3), "███");
  EXPECT_EQ(bar(0.5, 3), "█▌");
  EXPECT_EQ(bar(0.125, 1), "▏");
}

TEST(Bars, ShowEveryShareAboveZeroAndNoneBelow) {
  EXPECT_EQ(bar(1e-9, 10), "▏");
  EXPECT_EQ(bar(0, 10), "");
  EXPECT_EQ(bar(-1, 10), "");
  EXPECT_EQ(bar(7, 2), "██");
}

}  // namespace
}  // namespace wmq::tool
