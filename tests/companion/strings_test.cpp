#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "wmq/companion.h"

namespace {

TEST(CopiedString, IsEqualAndItsOwn) {
  const char original[] = "text";
  char *const copy = putstr_(original);
  EXPECT_STREQ(copy, "text");
  EXPECT_NE(copy, original);
  std::free(copy);
  EXPECT_EQ(putstr_(nullptr), nullptr);
}

TEST(LineEnds, BecomeBlanksOneByOne) {
  std::string text = "\na\n\nb\r\n";
  subNewLine_(text.data());
  EXPECT_EQ(text, " a  b\r ");
  subNewLine_(nullptr);
}

RC_GTEST_PROP(LineEnds, AreAllThatChanges, ()) {
  const auto original = *rc::gen::container<std::string>(rc::gen::element('\n', '\r', 'a', ' '));
  std::string text = original;
  subNewLine_(text.data());
  std::string expected = original;
  std::replace(expected.begin(), expected.end(), '\n', ' ');
  RC_ASSERT(text == expected);
}

TEST(WholeInteger, IsASignAndDigitsAndNothingElse) {
  for (const char *const text : {"0", "-1", "+12", "007", "99999999999999999999999999"})
    EXPECT_TRUE(islongint_(text)) << text;
  for (const char *const text : {"", "-", "+", " 1", "1 ", "1.0", "--1", "1a", "0x1", "\xb2"})
    EXPECT_FALSE(islongint_(text)) << text;
  EXPECT_FALSE(islongint_(nullptr));
}

TEST(LastOccurrence, IsTheLastOne) {
  const char text[] = "a/b/c";
  EXPECT_EQ(zvt_strrchr(text, '/'), text + 3);
  EXPECT_EQ(zvt_strrchr(text, 'a'), text);
  EXPECT_EQ(zvt_strrchr(text, 'x'), nullptr);
  EXPECT_EQ(zvt_strrchr(nullptr, 'x'), nullptr);
}

TEST(LeadingNumber, IsThatOfStrtod) {
  EXPECT_EQ(my_strtodf(" 2.5 hours"), 2.5);
  EXPECT_EQ(my_strtodf("1e3"), 1000);
  EXPECT_EQ(my_strtodf("hours"), 0);
  EXPECT_EQ(my_strtodf(""), 0);
  EXPECT_EQ(my_strtodf(nullptr), 0);
}

}  // namespace
