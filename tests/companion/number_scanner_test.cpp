// The C library is the measure: what sscanf, strtoll and strtod say of a text in the C locale.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "companion/numbers.h"

namespace {

using wmq::parseReal;
using wmq::scanDouble;
using wmq::scanFloat;
using wmq::scanInt64;
using wmq::scanUint64;

// What a scan made of a text: whether and with which value it succeeded, and how many bytes it took.
template <class Number>
struct Scanned {
  bool converted = false;
  Number value{};
  ptrdiff_t taken = 0;

  bool operator==(const Scanned &other) const {
    if (converted != other.converted || taken != other.taken) return false;
    if constexpr (std::is_floating_point_v<Number>) {
      if (std::isnan(value) || std::isnan(other.value))
        return std::isnan(value) == std::isnan(other.value) &&
               std::signbit(value) == std::signbit(other.value);
      return value == other.value && std::signbit(value) == std::signbit(other.value);
    }
    return value == other.value;
  }

  friend std::ostream &operator<<(std::ostream &out, const Scanned &scanned) {
    return out << (scanned.converted ? "converted " : "refused ") << std::hexfloat << scanned.value
               << " taking " << scanned.taken;
  }
};

template <class Number, class Scan>
Scanned<Number> ours(Scan scan, const std::string &text) {
  Scanned<Number> result;
  const char *const end = scan(text.c_str(), result.value);
  result.converted = end != nullptr;
  if (end != nullptr) result.taken = end - text.c_str();
  return result;
}

template <class Number>
Scanned<Number> theirs(const char *format, const std::string &text) {
  Scanned<Number> result;
  int taken = 0;
  result.converted = std::sscanf(text.c_str(), format, &result.value, &taken) == 1;
  if (result.converted) result.taken = taken;
  return result;
}

Scanned<double> ourStrtod(const std::string &text) {
  const char *end;
  const double value = parseReal(text.c_str(), &end);
  return {true, value, end - text.c_str()};
}

Scanned<double> theirStrtod(const std::string &text) {
  char *end;
  const double value = std::strtod(text.c_str(), &end);
  return {true, value, end - text.c_str()};
}

void expectIntegersAsTheCLibrary(const std::string &text) {
  ASSERT_EQ(ours<int64_t>(scanInt64, text), theirs<int64_t>("%ld%n", text)) << '"' << text << '"';
  ASSERT_EQ(ours<uint64_t>(scanUint64, text), theirs<uint64_t>("%lu%n", text)) << '"' << text << '"';
}

void expectRealsAsTheCLibrary(const std::string &text) {
  ASSERT_EQ(ours<float>(scanFloat, text), theirs<float>("%f%n", text)) << '"' << text << '"';
  ASSERT_EQ(ours<double>(scanDouble, text), theirs<double>("%lf%n", text)) << '"' << text << '"';
  ASSERT_EQ(ourStrtod(text), theirStrtod(text)) << '"' << text << '"';
}

// Calls `check` with every text of up to `maxLength` characters of the alphabet.
template <class Check>
void forEveryText(const std::string &alphabet, size_t maxLength, Check check) {
  std::vector<size_t> places;
  while (places.size() <= maxLength) {
    std::string text;
    for (const size_t place : places) text += alphabet[place];
    check(text);
    if (testing::Test::HasFatalFailure()) return;
    size_t next = 0;
    while (next < places.size() && ++places[next] == alphabet.size()) places[next++] = 0;
    if (next == places.size()) places.push_back(0);
  }
}

std::string printed(const char *format, double value) {
  char text[2000];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

double doubleOfBits(uint64_t bits) { return std::bit_cast<double>(bits); }
float floatOfBits(uint32_t bits) { return std::bit_cast<float>(bits); }

TEST(IntegerScan, ReadsSignsAndLeadingWhiteSpaceAndZeros) {
  for (const char *const text : {"0", "7", "-7", "+7", " \t\n\v\f\r42 ", "007", "-0", "12abc", "1.5", "0x10"})
    expectIntegersAsTheCLibrary(text);
}

TEST(IntegerScan, RefusesTextsWithoutADigit) {
  for (const char *const text : {"", " ", "-", "+", "--1", "+-1", "- 1", "abc", "\"1\"", "\x80"})
    expectIntegersAsTheCLibrary(text);
}

TEST(IntegerScan, LeavesTheValueAloneWhenNothingConverts) {
  int64_t value = 5;
  EXPECT_EQ(scanInt64("x", value), nullptr);
  EXPECT_EQ(value, 5);
}

TEST(IntegerScan, SaturatesBeyond64Bits) {
  for (const char *const text :
       {"9223372036854775806", "9223372036854775807", "9223372036854775808", "-9223372036854775807",
        "-9223372036854775808", "-9223372036854775809", "18446744073709551614", "18446744073709551615",
        "18446744073709551616", "-18446744073709551615", "-18446744073709551616", "99999999999999999999999",
        "-99999999999999999999999", "000000000000000000000000000000000000000012", "184467440737095516150"})
    expectIntegersAsTheCLibrary(text);
}

TEST(IntegerScan, AgreesOnAMillionShortTexts) { forEveryText("09-+ x1", 7, expectIntegersAsTheCLibrary); }

RC_GTEST_PROP(IntegerScan, UndoesFormatting, (int64_t value)) {
  char text[32];
  *wmq::formatInt64(text, value) = '\0';
  RC_ASSERT(ours<int64_t>(scanInt64, text) == theirs<int64_t>("%ld%n", text));
  RC_ASSERT(ours<int64_t>(scanInt64, text).value == value);
}

TEST(RealScan, ReadsWhatStreamsHold) {
  for (const char *const text :
       {"0.000000", "100.000000", " 1.250000 next", "-1.000000", "60.5", "0.1", "3", "12.", ".5", "+.5",
        "1234567.875000", "0.000001", "16777217.000000", "-0", "-0.0"})
    expectRealsAsTheCLibrary(text);
}

TEST(RealScan, RefusesTextsWithoutANumber) {
  for (const char *const text :
       {"", " ", ".", "-", "+", "-.", "e5", ".e5", "x", "--1", "+-1", "\"1\"", "\xff", "-x"})
    expectRealsAsTheCLibrary(text);
}

TEST(RealScan, LeavesTheValueAloneWhenNothingConverts) {
  float value = 5;
  EXPECT_EQ(scanFloat("0x", value), nullptr);
  EXPECT_EQ(scanFloat("infinit", value), nullptr);
  EXPECT_EQ(value, 5);
}

TEST(RealScan, TakesAnExponentWithoutDigitsAlong) {
  for (const char *const text :
       {"1e", "1E", "1e+", "1e-", "1e+-", "1ee", "1e5e6", "1e5.5", "1.e", "0e", "1e 5", "1p5"})
    expectRealsAsTheCLibrary(text);
  EXPECT_EQ(ours<float>(scanFloat, "1e-x").taken, 3);
  EXPECT_EQ(ourStrtod("1e-x").taken, 1);
}

TEST(RealScan, ReadsHexadecimalNumbers) {
  for (const char *const text :
       {"0x", "0x.", "0x1", "0X1P4", "0x1p", "0x1p+", "0x1p-4", "0x.8", "0x1.8p1", "-0xAp-2", "0x1e5", "0xg",
        "0x1.8.8", "0xp5", "0x.p5", "0x1p5p6", "0x1p0x", "0x0p99", "0x00000000000000000000001"})
    expectRealsAsTheCLibrary(text);
}

TEST(RealScan, RoundsHexadecimalNumbersOnce) {
  for (const char *const text : {"0x1.000001p0",
                                 "0x1.0000010000000000000001p0",
                                 "0x1.000003p0",
                                 "0x1.00000000000008p0",
                                 "0x1.000000000000080000000000000000001p0",
                                 "0x1.00000000000018p0",
                                 "0xffffffffffffffffp0",
                                 "0xfffffffffffffbffp0",
                                 "0xfffffffffffffc00p0",
                                 "0x1.fffffep127",
                                 "0x1.ffffffp127",
                                 "0x1.fffffefp127",
                                 "0x1p128",
                                 "0x1.fffffffffffff7p1023",
                                 "0x1.fffffffffffff8p1023",
                                 "0x1p1024",
                                 "0x1p-149",
                                 "0x1p-150",
                                 "0x0.8p-149",
                                 "0x1.8p-149",
                                 "0x1p-1074",
                                 "0x1p-1075",
                                 "0x1.8p-1074",
                                 "0x1.fffffcp-127",
                                 "0x1.fffffep-127",
                                 "0x1p-126",
                                 "0x1p99999999999999999999",
                                 "0x1p-99999999999999999999",
                                 "0x.0000000000000000000000000000001p130",
                                 "0x0p99999999999999999999"})
    expectRealsAsTheCLibrary(text);
}

// Here glibc drops the one bit that decides and gives 0.
TEST(RealScan, RoundsHexadecimalNumbersJustAboveHalfOfTheSmallestUp) {
  EXPECT_EQ(ours<float>(scanFloat, "0x1.000001p-150").value, 0x1p-149f);
  EXPECT_EQ(ours<double>(scanDouble, "0x1.00000000000001p-1075").value, 0x1p-1074);
}

TEST(RealScan, ReadsInfinityAndNotANumber) {
  for (const char *const text :
       {"nan",   "NaN",      "-nan",      "+nan",      "nanx",     "nan()", "nan(12)", "nan(1_z)", "nan(1-2)",
        "nan(",  "na",       "n",         "nax",       "inf",      "INF",   "-inf",    "infx",     "infi",
        "infin", "infinity", "-Infinity", "infinityx", "infinitx", "in",    "i",       "-i"})
    expectRealsAsTheCLibrary(text);
}

TEST(RealScan, AgreesOnAMillionShortTexts) { forEveryText("01.e-xp+a", 6, expectRealsAsTheCLibrary); }

TEST(RealScan, AgreesOnAMillionShortWords) { forEveryText("nai-fNty (", 5, expectRealsAsTheCLibrary); }

TEST(RealScan, RoundsAMillionRandomDecimalsRight) {
  std::mt19937_64 random(1);
  const char *const formats[] = {"%.0f", "%f", "%.3f", "%.17g", "%.9g", "%.25g", "%.6e", "%g", "%a", "%.40e"};
  for (int i = 0; i < 333'334; ++i) {
    const double value = i % 3 == 0   ? doubleOfBits(random())
                         : i % 3 == 1 ? static_cast<double>(floatOfBits(static_cast<uint32_t>(random())))
                                      : static_cast<double>(random() % 100'000'000'000) / 1e6;
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(printed(formats[random() % std::size(formats)], value)));
  }
}

// Half way between two neighbours, and a digit far behind tips the scales.
TEST(RealScan, RoundsWhatIsHalfWayBetweenTwoNeighbours) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 20'000; ++i) {
    const uint32_t anyMagnitude =
        i % 4 == 0 ? 0x00ffffff : 0x7fffffff;  // a quarter around the subnormal ones
    const auto bits = static_cast<uint32_t>(random()) & anyMagnitude;
    if (!std::isfinite(floatOfBits(bits)) || !std::isfinite(floatOfBits(bits + 1))) continue;
    const double half = (double{floatOfBits(bits)} + double{floatOfBits(bits + 1)}) / 2;
    std::string text = printed("%.160f", half);
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(text));
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(text + "0000000000000000000000000000001"));
    text.back() = '9';
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(text));
  }
  for (const char *const text :
       {"16777217", "16777217.000000", "16777217.000000001", "16777216.999999999", "16777219",
        "9007199254740993", "9007199254740993.0000000000000000000000000000000000000001",
        "9007199254740992.9999999", "33554434.000000"})
    expectRealsAsTheCLibrary(text);
}

// Their double is half way between two floats, and they are not.
TEST(RealScan, RoundsOnceOnTheWayToAFloat) {
  for (const char *const text : {"1.990870177745819", "1.419909656047821", "1.762408435344696",
                                 "1.058081567287445", "1.443383276462555", "-1.875775158405304"})
    expectRealsAsTheCLibrary(text);
}

// The form of processor times, and what is nearly that form.
TEST(RealScan, AgreesOnNumbersOfAboutFourDecimals) {
  for (const char *const before : {"", " ", "  ", "-", "+", " -", "x"})
    for (const char *const whole :
         {"", "0", "7", "12", "1234", "16777217", "999999999", "1234567890", "99999999999999999999", "1 "})
      for (const char *const point : {".", "", ",", ".."})
        for (const char *const decimals : {"", "5", "000", "0000", "0001", "9999", "12345", "1a34", "12 4"})
          for (const char *const behind : {"", " ", "\n", "\"", "e", "e3 ", "x", ".", " 1"})
            ASSERT_NO_FATAL_FAILURE(
                expectRealsAsTheCLibrary(std::string(before) + whole + point + decimals + behind));

  std::mt19937_64 random(3);
  for (int i = 0; i < 300'000; ++i) {
    const float value = floatOfBits(static_cast<uint32_t>(random()));
    if (std::fabs(value) < 1e12F) {
      ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(printed("%.4f ", double{value})));
    }
    const auto digits = static_cast<double>(random() % 10'000'000'000'000);
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(printed("%.4f ", digits / 1e4)));
  }
}

TEST(RealScan, ReadsMoreDigitsThan64BitsHold) {
  for (const char *const text : {"18446744073709551617", "1844674407370955161.7", "36893488147419103233.5",
                                 "9999999999999999999", "99999999999999999999"})
    expectRealsAsTheCLibrary(text);
}

TEST(RealScan, KnowsTheEdgesOfTheRange) {
  for (const char *const text : {"3.4028234663852886e38",
                                 "3.4028235677973366e38",
                                 "3.4028235677973365e38",
                                 "3.5e38",
                                 "1e39",
                                 "-1e39",
                                 "1.7976931348623157e308",
                                 "1.7976931348623159e308",
                                 "1.797693134862315807e308",
                                 "1e309",
                                 "-1e309",
                                 "1.17549435e-38",
                                 "1.4e-45",
                                 "7.006492321624085e-46",
                                 "7.006492321624086e-46",
                                 "1e-46",
                                 "-1e-46",
                                 "2.2250738585072014e-308",
                                 "2.2250738585072011e-308",
                                 "4.9e-324",
                                 "2.4703282292062327e-324",
                                 "2.4703282292062328e-324",
                                 "1e-325",
                                 "1e-400",
                                 "-1e-99999",
                                 "1e99999",
                                 "1e99999999999999999999999",
                                 "1e-99999999999999999999999",
                                 "0e99999999999999999999999",
                                 "0.0e-99999999999999999999999"})
    expectRealsAsTheCLibrary(text);
}

TEST(RealScan, ReadsNumbersOfManyDigits) {
  const std::string zeros(100'000, '0');
  const std::string nines(2'000, '9');
  for (const std::string &text :
       {"0." + zeros + "1e100001", "1" + zeros + "e-100000", "1" + zeros, "0." + zeros + "1", nines,
        "0." + nines, nines + "e-2000", "1." + std::string(900, '0') + "1", "4.9" + nines + "e-324",
        "-" + zeros + "7.25" + zeros, "0x" + zeros + "1p-4", "0x1" + zeros + "p-400000",
        "0x." + zeros + "1p400004", "0x" + nines + "p-8000"})
    expectRealsAsTheCLibrary(text);
}

// The exact decimals of the doubles around the smallest normal one are the longest that can matter.
TEST(RealScan, NeedsAllDigitsOfTheLongestDoubles) {
  for (const uint64_t bits : {uint64_t{1}, uint64_t{0xfffffffffffff}, uint64_t{0x10000000000001}}) {
    std::string text = printed("%.1100f", doubleOfBits(bits));
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(text));
    text.erase(text.find_last_not_of('0') + 1);
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(text + "0001"));
    ASSERT_NO_FATAL_FAILURE(expectRealsAsTheCLibrary(text.substr(0, text.size() - 1)));
  }
}

TEST(RealScan, ParsesWithoutAskingForTheEnd) { EXPECT_EQ(parseReal("2.5x", nullptr), 2.5); }

RC_GTEST_PROP(RealScan, UndoesTheShortestForm, (uint64_t bits)) {
  const double value = doubleOfBits(bits);
  RC_PRE(!std::isnan(value));
  char text[40];
  *wmq::formatShortest(text, value) = '\0';
  RC_ASSERT(ours<double>(scanDouble, text).value == value);
  RC_ASSERT(ours<double>(scanDouble, text) == theirs<double>("%lf%n", text));
}

// --------------------------------------------------------------------------------- eight digits at once

TEST(EightDigits, AreValuedAsDecimals) {
  for (uint32_t number = 0; number < 100'000'000; number += 977) {
    char text[16];
    std::snprintf(text, sizeof text, "%08u", number);
    uint32_t value = 1;
    ASSERT_TRUE(wmq::eightDigits(text, value)) << text;
    ASSERT_EQ(value, number);
  }
}

TEST(EightDigits, AreToldFromAllOtherBytes) {
  for (size_t place = 0; place < 8; ++place) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string text = "12345678";
      text[place] = static_cast<char>(byte);
      uint32_t value = 0;
      EXPECT_EQ(wmq::eightDigits(text.data(), value), byte >= '0' && byte <= '9') << place << ' ' << byte;
    }
  }
}

}  // namespace
