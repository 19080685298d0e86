#include "platform/number_text.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "platform/text.h"
#include "tests/support/comma_locale.h"
#include "tests/support/numbers.h"

namespace qs {
namespace {

std::string written(double value) {
  std::string text;
  appendDouble(text, value);
  return text;
}

// These keep the bits of signalling NaNs, which functions that return a double on 32-bit x86 do not.
std::string exactlyWritten(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  char digits[kExactNumberLength];
  return {digits, writeExactDouble(digits, value)};
}
std::uint64_t bitsOf(const char* text) {
  double value = 0.0;
  readExactDouble(text, &value);
  return std::bit_cast<std::uint64_t>(value);
}

TEST(NumberText, WritesSixSignificantDigitsAsTheCLibraryDoes) {
  std::vector<double> values = {0.0,  -0.0,   1.0,       -32767.0, 0.344,     100000.0, 999999.5, 999999.4,
                                1e-5, 0.0001, 1234567.0, 1e15,     kInfinity, 1e100,    2.5e-7,   -kInfinity};
  std::mt19937_64 random(20261121);
  while (values.size() < 2000) {
    values.push_back(std::bit_cast<double>(random()));
    values.push_back(std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 60) - 90));
  }
  for (const double value : values) {
    char expected[32];
    std::snprintf(expected, sizeof expected, "%g", value);
    EXPECT_TRUE(std::isnan(value) || written(value) == expected) << written(value) << " instead of " << expected;
  }
  EXPECT_EQ(written(kNaN), "nan");
}

TEST(NumberText, WritesEveryBitInTheExactForm) {
  const std::pair<std::uint64_t, const char*> rows[] = {
      {0x3FB999999999999A, "0.1"},    {0x8000000000000000, "-0"},
      {0x0000000000000001, "5e-324"}, {0x40F86A0000000000, "1e+05"},
      {0xFFF0000000000000, "-inf"},   {0x7FF8000000000000, "nan"},
      {0xFFF8000000000000, "-nan"},   {0x7FF8000000000001, "nan:8000000000001"},
      {0xFFF0000000000001, "-nan:1"}, {0x7FF4000000000000, "nan:4000000000000"}};
  for (const auto& [bits, text] : rows) EXPECT_EQ(exactlyWritten(bits), text);
  std::mt19937_64 random(20261121);
  for (int i = 0; i < 2000; ++i) {
    const std::uint64_t bits = random() | (i % 2 ? 0x7FF0000000000000 : 0);
    EXPECT_EQ(bitsOf(exactlyWritten(bits).c_str()), bits);
  }
  for (const char* text : {"nan:", "nan:x", "nan:0", "nan:10000000000000", "nan:FFFFFFFFFFFFFFFFFFFF"})
    EXPECT_EQ(bitsOf(text), 0x7FF8000000000000) << text;
}

TEST(NumberText, AppendsToEitherKindOfText) {
  const auto appended = [](auto text) {
    appendDouble(text, -1.25e-7);
    appendInteger(text, std::numeric_limits<std::int32_t>::min());
    return text;
  };
  EXPECT_EQ(appended(std::string("a")), "a-1.25e-07-2147483648");
  EXPECT_EQ(appended(WideString(OLESTR("a"))), OLESTR("a-1.25e-07-2147483648"));
}

TEST(NumberText, ReadsDoubles) {
  const std::pair<double, std::vector<std::string_view>> rows[] = {
      {0.0, {"", " ", "abc", "-", "+-5", "--5", "-+5", ".", "e5", "0x", "0xg", "0x-1", "0e999"}},
      {0.0, {"1e-99999999999999999999", "1e-400", "1234567e-340", "0x1p-1080"}},
      {1.0, {"1e", "1e+", "1,5", "1 5"}},
      {1e5, {"1e5", "1E+05"}},
      {12.5, {" \t\n\v\f\r+12.5kg"}},
      {-0.5, {"-.5"}},
      {5.0, {"5."}},
      {7.0, {std::string_view("7\0008", 3)}},
      {0.1, {"0.1000000000000000055511151231257827"}},
      {2.2250738585072011e-308, {"2.2250738585072011e-308"}},
      {kInfinity, {"1e309", "1e99999999999999999999", "0.0001e313 kPa", "inf", "0x1p1024"}},
      {-kInfinity, {"-1e309", "-INFINITY"}},
      {31.0, {"0x1F"}},
      {-1.0, {"-0X.8p1"}},
      {0.75, {"0x1.8p-1z"}},
  };
  for (const auto& [value, texts] : rows)
    for (const std::string_view text : texts) EXPECT_EQ(readDouble(text), value) << text;

  EXPECT_TRUE(std::signbit(readDouble("-0")));
  EXPECT_TRUE(std::signbit(readDouble("-1e-400")));
  EXPECT_TRUE(std::isnan(readDouble(" NaN(2)")));
  EXPECT_EQ(readDouble(std::string(400, '9')), kInfinity);
  EXPECT_EQ(readDouble("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(readDouble("0." + std::string(400, '0') + "1e800"), kInfinity);
  EXPECT_EQ(readDouble("0." + std::string(400, '0') + "1e400"), 0.1);
  EXPECT_EQ(readDouble("1" + std::string(400, '0') + "e-399"), 10.0);
}

TEST(NumberText, ReadsIntegers) {
  const std::pair<std::int32_t, std::vector<std::string_view>> rows[] = {
      {0, {"", "x", "0x10", "+-5", "--5"}},
      {1, {"1e3"}},
      {3, {"3.9"}},
      {7, {" \t\n\v\f\r+7"}},
      {-12, {"-12abc"}},
      {2147483647, {"2147483647", "2147483648", "99999999999999999999999999"}},
      {-2147483647 - 1, {"-2147483648", "-2147483649", "-99999999999999999999999999"}},
  };
  for (const auto& [value, texts] : rows)
    for (const std::string_view text : texts) EXPECT_EQ(readInteger(text), value) << text;
}

TEST(NumberText, IgnoresTheLocale) {
  const CommaLocale locale;
  if (!locale.installed()) GTEST_SKIP() << "no locale with a decimal comma is installed";
  EXPECT_EQ(written(1234.5), "1234.5");
  EXPECT_EQ(readDouble("2.75"), 2.75);
  EXPECT_EQ(readDouble("2,75"), 2.0);
}

TEST(NumberText, TakesWholeTextsAlone) {
  for (const auto& [text, value] : std::vector<std::pair<const char*, double>>{
           {"1.5", 1.5}, {"+6.0e2", 600.0}, {"-1E-3", -1e-3}, {"12", 12.0}, {"0", 0.0}})
    EXPECT_EQ(wholeDouble(text), value) << text;
  for (const char* text : {"", " 1", "1 ", "1,5", "1.5x", "nan", "inf", "1e999", "0x10", "+-1", "++1", "-", "+"})
    EXPECT_EQ(wholeDouble(text), std::nullopt) << text;
  EXPECT_EQ(wholeInteger("+2147483647"), 2147483647);
  for (const char* text : {"2147483648", "1.0", "1e3", ""}) EXPECT_EQ(wholeInteger(text), std::nullopt) << text;
  EXPECT_EQ(roundedToDigits(0.0123456, 3), 0.0123);
  EXPECT_EQ(roundedToDigits(-123456.0, 2), -120000.0);
}

}  // namespace
}  // namespace qs
