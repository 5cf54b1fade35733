#include "tool/times.h"

#include <gtest/gtest.h>

namespace wmq::tool {
namespace {

std::optional<int64_t> parsed(const char *text) {
  std::string why;
  return parseTime(text, why);
}

std::string refusal(const char *text) {
  std::string why;
  EXPECT_EQ(parseTime(text, why), std::nullopt) << text;
  return why;
}

TEST(Times, TakeSecondsSinceTheEpoch) {
  EXPECT_EQ(parsed("0"), 0);
  EXPECT_EQ(parsed("1700000000"), 1700000000);
  EXPECT_EQ(parsed("-1"), -1);
  EXPECT_EQ(parsed("99999999999"), 99999999999);
}

TEST(Times, TakeEveryZone) {
  EXPECT_EQ(parsed("2023-11-14T22:13:20Z"), 1700000000);
  EXPECT_EQ(parsed("2023-11-14T23:13:20+01:00"), 1700000000);
  EXPECT_EQ(parsed("2023-11-14T17:43:20-0430"), 1700000000);
  EXPECT_EQ(parsed("2023-11-15T00:13:20+02"), 1700000000);
}

TEST(Times, TakeShorterAndBasicForms) {
  EXPECT_EQ(parsed("20231114T221320Z"), 1700000000);
  EXPECT_EQ(parsed("2023-11-14 22:13:20z"), 1700000000);
  EXPECT_EQ(parsed("2023-11-14T22:13Z"), 1699999980);
  EXPECT_EQ(parsed("2023-11-14T22Z"), 1699999200);
  EXPECT_EQ(parsed("20231114T2213Z"), 1699999980);
}

TEST(Times, KnowTheCalendar) {
  EXPECT_EQ(parsed("1970-01-01T00:00:00Z"), 0);
  EXPECT_EQ(parsed("1969-12-31T23:59:59Z"), -1);
  EXPECT_EQ(parsed("2000-02-29T00:00:00Z"), 951782400);
  EXPECT_EQ(parsed("2023-11-14T24:00:00Z"), parsed("2023-11-15T00:00:00Z"));
  EXPECT_EQ(parsed("2016-12-31T23:59:60Z"), parsed("2017-01-01T00:00:00Z"));
  EXPECT_EQ(parsed("1900-02-29T00:00:00Z"), std::nullopt);
  EXPECT_EQ(parsed("2023-13-01T00:00:00Z"), std::nullopt);
  EXPECT_EQ(parsed("2023-04-31T00:00:00Z"), std::nullopt);
  EXPECT_EQ(parsed("2023-11-14T24:00:01Z"), std::nullopt);
}

TEST(Times, TellWhatIsMissing) {
  EXPECT_EQ(refusal("2023-11-14T22:13:20"), "the time zone is missing: add Z or an offset such as +01:00");
  EXPECT_EQ(refusal("2023-11-14"), "a time of day is missing, such as T22:13:20Z");
  EXPECT_EQ(refusal("yesterday"), "neither seconds since 1970 nor a date such as 2023-11-14T22:13:20Z");
  EXPECT_EQ(refusal(""), "neither seconds since 1970 nor a date such as 2023-11-14T22:13:20Z");
  EXPECT_EQ(refusal("2023-11-14T2x:13Z"), "the time of day is malformed; it looks like 22:13:20");
  EXPECT_EQ(refusal("2023-11-14T22:13:20CET"), "the time zone is malformed; it looks like Z or +01:00");
  EXPECT_EQ(refusal("2023-11-14T22:13:20Zulu"), "the time zone is malformed; it looks like Z or +01:00");
  EXPECT_EQ(refusal("2023-11-14T22:13:20+01:"), "the time zone is malformed; it looks like Z or +01:00");
}

TEST(Times, ArePrintedInUtc) {
  EXPECT_EQ(timeText(1700000000), "2023-11-14T22:13:20Z");
  EXPECT_EQ(timeText(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(timeText(-2147483648LL), "1901-12-13T20:45:52Z");
  EXPECT_EQ(parsed(timeText(2147483647).c_str()), 2147483647);
}

}  // namespace
}  // namespace wmq::tool
