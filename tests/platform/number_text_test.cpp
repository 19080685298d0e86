#include "platform/number_text.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "platform/text.h"
#include "tests/support/comma_locale.h"

namespace qs {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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

TEST(NumberText, WritesSixSignificantDigits) {
  const struct {
    double value;
    const char* text;
  } rows[] = {{0.0, "0"},
              {-0.0, "-0"},
              {1.0, "1"},
              {-32767.0, "-32767"},
              {0.344, "0.344"},
              {100000.0, "100000"},
              {999999.5, "1e+06"},
              {999999.4, "999999"},
              {1234567.0, "1.23457e+06"},
              {1e-5, "1e-05"},
              {0.0001, "0.0001"},
              {0.00012345678, "0.000123457"},
              {1e10, "1e+10"},
              {1e15, "1e+15"},
              {1e100, "1e+100"},
              {-1.5e-300, "-1.5e-300"},
              {2.5e-7, "2.5e-07"},
              {std::numeric_limits<double>::max(), "1.79769e+308"},
              {-std::numeric_limits<double>::denorm_min(), "-4.94066e-324"},
              {kInfinity, "inf"},
              {-kInfinity, "-inf"},
              {kNaN, "nan"}};
  for (const auto& row : rows) EXPECT_EQ(written(row.value), row.text);
}

TEST(NumberText, WritesEveryBitInTheExactForm) {
  const struct {
    std::uint64_t bits;
    const char* text;
  } rows[] = {{0x3FB999999999999A, "0.1"},    {0x8000000000000000, "-0"},
              {0x0000000000000001, "5e-324"}, {0x40F86A0000000000, "1e+05"},
              {0xFFF0000000000000, "-inf"},   {0x7FF8000000000000, "nan"},
              {0xFFF8000000000000, "-nan"},   {0x7FF8000000000001, "nan:8000000000001"},
              {0xFFF0000000000001, "-nan:1"}, {0x7FF4000000000000, "nan:4000000000000"}};
  for (const auto& row : rows) {
    EXPECT_EQ(exactlyWritten(row.bits), row.text);
    EXPECT_EQ(bitsOf(row.text), row.bits) << row.text;
  }
  const std::pair<const char*, std::uint64_t> malformed[] = {{"nan:", 0x7FF8000000000000},
                                                             {"nan:x", 0x7FF8000000000000},
                                                             {"nan:0", 0x7FF8000000000000},
                                                             {"nan:10000000000000", 0x7FF8000000000000},
                                                             {"nan:FFFFFFFFFFFFFFFFFFFF", 0x7FF8000000000000}};
  for (const auto& [text, bits] : malformed) EXPECT_EQ(bitsOf(text), bits) << text;
}

TEST(NumberText, AppendsToEitherKindOfText) {
  std::string narrow = "a";
  appendDouble(narrow, -1.25e-7);
  appendInteger(narrow, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(narrow, "a-1.25e-07-2147483648");

  WideString wide = OLESTR("a");
  appendDouble(wide, -1.25e-7);
  appendInteger(wide, 2147483647);
  EXPECT_EQ(wide, OLESTR("a-1.25e-072147483647"));
}

TEST(NumberText, ReadsDoubles) {
  const struct {
    double value;
    std::vector<std::string_view> texts;
  } rows[] = {
      {0.0, {"", " ", "abc", "-", "+-5", "--5", "-+5", ".", "e5", "0x", "0xg", "0x-1", "0e999"}},
      {0.0, {"1e-99999999999999999999", "1e-400", "1234567e-340", "0x1p-1080"}},
      {1.0, {"1e", "1e+", "1,5", "1 5"}},
      {1e5, {"1e5", "1E+05"}},
      {0.344, {"0.344"}},
      {12.5, {" \t\n\v\f\r+12.5kg"}},
      {-0.5, {"-.5"}},
      {5.0, {"5."}},
      {7.0, {std::string_view("7\0008", 3)}},
      {0.1, {"0.1000000000000000055511151231257827"}},
      {std::numeric_limits<double>::max(), {"1.7976931348623157e308"}},
      {std::numeric_limits<double>::denorm_min(), {"4.9406564584124654e-324"}},
      {2.2250738585072011e-308, {"2.2250738585072011e-308"}},
      {kInfinity, {"1e309", "1e99999999999999999999", "0.0001e313 kPa", "inf", "0x1p1024"}},
      {-kInfinity, {"-1e309", "-INFINITY"}},
      {31.0, {"0x1F"}},
      {-1.0, {"-0X.8p1"}},
      {0.75, {"0x1.8p-1z"}},
  };
  for (const auto& row : rows)
    for (const std::string_view text : row.texts) EXPECT_EQ(readDouble(text), row.value) << text;

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
  const struct {
    std::int32_t value;
    std::vector<std::string_view> texts;
  } rows[] = {
      {0, {"", "x", "0x10", "+-5", "--5"}},
      {1, {"1e3"}},
      {3, {"3.9"}},
      {7, {" \t\n\v\f\r+7"}},
      {-12, {"-12abc"}},
      {2147483647, {"2147483647", "2147483648", "99999999999999999999999999"}},
      {-2147483647 - 1, {"-2147483648", "-2147483649", "-99999999999999999999999999"}},
  };
  for (const auto& row : rows)
    for (const std::string_view text : row.texts) EXPECT_EQ(readInteger(text), row.value) << text;
}

TEST(NumberText, IgnoresTheLocale) {
  const CommaLocale locale;
  if (!locale.installed()) GTEST_SKIP() << "no locale with a decimal comma is installed";
  EXPECT_EQ(written(1234.5), "1234.5");
  EXPECT_EQ(readDouble("2.75"), 2.75);
  EXPECT_EQ(readDouble("2,75"), 2.0);
}

}  // namespace
}  // namespace qs
