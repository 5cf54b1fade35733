// The C library is the measure again: snprintf for fixed forms, strtod for reading shortest forms back.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cfloat>
#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "companion/numbers.h"
#include "companion/short_decimal.h"

namespace {

std::string fixedForm(double value, int width, int precision) {
  char text[400];
  return {text, wmq::formatFixed(text, value, width, precision)};
}

std::string printedForm(double value, int width, int precision) {
  char text[2000];
  std::snprintf(text, sizeof text, "%*.*f", width, precision, value);
  return text;
}

template <class Real>
std::string shortestForm(Real value) {
  char text[32];
  return {text, wmq::formatShortest(text, value)};
}

void expectAsPrintf(double value) {
  for (const auto &[width, precision] :
       {std::pair{0, 6}, {1, 0}, {6, 2}, {0, 3}, {4, 4}, {9, 5}, {3, 1}, {0, 7}, {0, 8}, {0, 9}, {20, 12}})
    ASSERT_EQ(fixedForm(value, width, precision), printedForm(value, width, precision))
        << std::hexfloat << value << " with width " << width << " and precision " << precision;
}

double doubleOfBits(uint64_t bits) { return std::bit_cast<double>(bits); }

void expectAsPrintf(int64_t value) {
  char expected[32];
  char text[32];
  std::snprintf(expected, sizeof expected, "%" PRId64, value);
  EXPECT_EQ(std::string(text, wmq::formatInt64(text, value)), expected);
  const auto narrow = static_cast<int32_t>(value);
  std::snprintf(expected, sizeof expected, "%d", narrow);
  EXPECT_EQ(std::string(text, wmq::formatInt32(text, narrow)), expected);
}

TEST(IntegerFormat, IsThatOfPrintf) {
  for (const int64_t value :
       {int64_t{0}, int64_t{-1}, int64_t{-2147483648}, int64_t{2147483648}, INT64_MAX, INT64_MIN})
    expectAsPrintf(value);
  for (int64_t power = 1; power <= INT64_MAX / 10; power *= 10) {
    for (const int64_t value : {power - 1, power, power + 1, 2 * power + power / 3, 9 * power + 7})
      for (const int64_t sign : {1, -1}) expectAsPrintf(sign * value);
  }
}

// Short numbers and leading digits have ways of their own.
TEST(IntegerFormat, IsThatOfPrintfForAllShortNumbersAndBehindThem) {
  for (int64_t value = 0; value < 20000; ++value)
    for (const int64_t rest : {int64_t{0}, int64_t{7}, int64_t{99'999'999}})
      expectAsPrintf(rest == 0 ? -value : value * 100'000'000 + rest);
}

RC_GTEST_PROP(IntegerFormat, IsThatOfPrintfForAnyValue, (int64_t value, uint8_t shift)) {
  expectAsPrintf(value >> shift % 64);
}

TEST(FixedFormat, IsThatOfPrintfForPlainValues) {
  for (const double value : {0.0, -0.0, 1.0, -1.0, 0.1, 60.0, 100.5, 0.000001, 0.0000005, 0.00000049, 1e6,
                             123456.789, 0.999999, 0.9999995, 0.99999951, 9.9999999, -99.999999999, 1.0 / 3})
    expectAsPrintf(value);
}

TEST(FixedFormat, RoundsHalfToEven) {
  EXPECT_EQ(fixedForm(0.5, 1, 0), "0");
  EXPECT_EQ(fixedForm(1.5, 1, 0), "2");
  EXPECT_EQ(fixedForm(2.5, 1, 0), "2");
  EXPECT_EQ(fixedForm(0.125, 6, 2), "  0.12");
  EXPECT_EQ(fixedForm(0.375, 6, 2), "  0.38");
  for (int eighths = -80; eighths <= 80; ++eighths) expectAsPrintf(eighths / 8.0);
  for (int i = 1; i < 2000; i += 2) expectAsPrintf(i / 128.0);
}

TEST(FixedFormat, IsThatOfPrintfAtTheEdgesOfTheRange) {
  for (const double value : {DBL_MAX,
                             -DBL_MAX,
                             double{FLT_MAX},
                             DBL_MIN,
                             DBL_TRUE_MIN,
                             0x1p52,
                             0x1p53,
                             0x1p62,
                             0x1p63,
                             0x1.fffffffffffffp62,
                             0x1p64,
                             1e22,
                             1e23,
                             1e100,
                             -1e300,
                             0x1p-20,
                             0x1p-60,
                             0x1p-64,
                             0x1.8p-64,
                             0x1p-100,
                             0x1p-127,
                             0x1p-128,
                             4503599627370495.5,
                             4503599627370494.5,
                             4503599627370497.5,
                             9007199254740991.0})
    expectAsPrintf(value);
}

TEST(FixedFormat, WritesInfinityAndNotANumberLikePrintf) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double value : {infinity, -infinity, nan, -nan}) expectAsPrintf(value);
}

TEST(FixedFormat, PadsToTheWidth) {
  EXPECT_EQ(fixedForm(1.25, 10, 2), "      1.25");
  EXPECT_EQ(fixedForm(-1.25, 10, 2), "     -1.25");
  EXPECT_EQ(fixedForm(-1.25, 5, 2), "-1.25");
  EXPECT_EQ(fixedForm(DBL_MAX, 400, 80), printedForm(DBL_MAX, 400, 80));
}

TEST(FixedFormat, AgreesOnAMillionRandomValues) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 31'250; ++i) {
    const auto bits = random();
    ASSERT_NO_FATAL_FAILURE(expectAsPrintf(doubleOfBits(bits)));
    ASSERT_NO_FATAL_FAILURE(expectAsPrintf(double{std::bit_cast<float>(static_cast<uint32_t>(bits))}));
    ASSERT_NO_FATAL_FAILURE(expectAsPrintf(static_cast<double>(bits % 1'000'000'000'000) / 1e6));
    ASSERT_NO_FATAL_FAILURE(expectAsPrintf(static_cast<double>(bits >> 20) / 0x1p24));
  }
}

TEST(ShortestFormat, WritesWholeNumbersWithoutPointOrExponent) {
  EXPECT_EQ(shortestForm(0.0), "0");
  EXPECT_EQ(shortestForm(100000.0), "100000");
  EXPECT_EQ(shortestForm(-1e15), "-1000000000000000");
  EXPECT_EQ(shortestForm(0x1p53), "9007199254740992");
  EXPECT_EQ(shortestForm(-0x1p53), "-9007199254740992");
  EXPECT_EQ(shortestForm(0x1p53 + 2), "9007199254740994");
  EXPECT_EQ(shortestForm(1e22), "1e+22");
  EXPECT_EQ(shortestForm(16777216.0f), "16777216");
}

TEST(ShortestFormat, WritesFractionsAsShortAsTheyReadBack) {
  EXPECT_EQ(shortestForm(0.1), "0.1");
  EXPECT_EQ(shortestForm(0.1f), "0.1");
  EXPECT_EQ(shortestForm(double{0.1f}), "0.10000000149011612");
  EXPECT_EQ(shortestForm(-12.75), "-12.75");
  EXPECT_EQ(shortestForm(DBL_TRUE_MIN), "5e-324");
}

TEST(ShortestFormat, KeepsTheSignOfZero) { EXPECT_EQ(shortestForm(-0.0), "-0"); }

TEST(ShortestFormat, NamesInfinityAndNotANumber) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(shortestForm(infinity), "inf");
  EXPECT_EQ(shortestForm(-infinity), "-inf");
  EXPECT_EQ(shortestForm(nan), "nan");
  EXPECT_EQ(shortestForm(-nan), "nan");
  EXPECT_EQ(shortestForm(-std::numeric_limits<float>::infinity()), "-inf");
}

RC_GTEST_PROP(ShortestFormat, ReadsBackToTheSameDouble, (uint64_t bits)) {
  const double value = doubleOfBits(bits);
  RC_PRE(!std::isnan(value));
  RC_ASSERT(std::bit_cast<uint64_t>(std::strtod(shortestForm(value).c_str(), nullptr)) == bits);
}

RC_GTEST_PROP(ShortestFormat, ReadsBackToTheSameFloat, (uint32_t bits)) {
  const float value = std::bit_cast<float>(bits);
  RC_PRE(!std::isnan(value));
  RC_ASSERT(std::bit_cast<uint32_t>(std::strtof(shortestForm(value).c_str(), nullptr)) == bits);
}

// Of values around thousandths, which have a way of their own: below 100,000 notation with an exponent is
// never shorter, so that the C++ library says the same.
template <class Real>
void expectAsToChars(Real value) {
  char text[64];
  const std::string expected(text, std::to_chars(text, text + sizeof text, value).ptr);
  ASSERT_EQ(shortestForm(value), expected) << std::hexfloat << value;
  if (char *const end = wmq::formatShort(text, value)) {
    ASSERT_EQ(std::string(text, end), expected);
  }
}

template <class Real>
void expectAsToCharsAround(int32_t thousandths) {
  const Real value = static_cast<Real>(thousandths) / 1000;
  for (const Real sign : {Real{1}, Real{-1}}) {
    expectAsToChars(sign * value);
    expectAsToChars(sign * std::nextafter(value, Real{0}));
    expectAsToChars(sign * std::nextafter(value, Real{100'000}));
    expectAsToChars(sign * value / 10);
  }
}

TEST(ShortestFormat, OfThousandthsIsThatOfTheLibrary) {
  for (int32_t thousandths = 0; thousandths < 20'000; ++thousandths) {
    expectAsToCharsAround<double>(thousandths);
    expectAsToCharsAround<float>(thousandths);
  }
}

RC_GTEST_PROP(ShortestFormat, OfAnyThousandthsIsThatOfTheLibrary, ()) {
  const auto thousandths = *rc::gen::inRange(0, 99'999'999);
  expectAsToCharsAround<double>(thousandths);
  expectAsToCharsAround<float>(thousandths);
}

TEST(ShortestFormat, OfThousandthsTakesTheShortWay) {
  char text[32];
  for (const double value : {0.0, -0.0, 1234.56, 7.25, 0.001, 99999999.999, 999999999999.0})
    EXPECT_NE(wmq::formatShort(text, value), nullptr) << value;
  for (const float value : {0.0F, 5.8F, 0.96F, 999.999F})
    EXPECT_NE(wmq::formatShort(text, value), nullptr) << value;
  for (const double value : {1e12, 0.0005, 1.0 / 3, std::nextafter(7.25, 8.0), HUGE_VAL, std::nan("")})
    EXPECT_EQ(wmq::formatShort(text, value), nullptr) << value;
  for (const float value : {1000.0F, 0.0005F}) EXPECT_EQ(wmq::formatShort(text, value), nullptr) << value;
}

RC_GTEST_PROP(ShortestFormat, WritesEveryWholeNumberUpTo2To53AsAnInteger, ()) {
  const auto whole = *rc::gen::inRange<int64_t>(-(int64_t{1} << 53), (int64_t{1} << 53) + 1);
  RC_ASSERT(shortestForm(static_cast<double>(whole)) == std::to_string(whole));
}

}  // namespace
