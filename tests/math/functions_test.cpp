// The elementary functions against results with 60 digits, which expected.py wrote; it describes expected.txt.
#include "math/functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/support/files.h"

namespace qs::math {
namespace {

double fromHex(std::string_view digits) {
  std::uint64_t bits = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
  return std::bit_cast<double>(bits);
}

// In units of the last place of the expected result, which the exact one exceeds by `rest` of them.
double errorOf(double result, double expected, double rest) {
  const auto exponent = static_cast<int>(bitsOf(expected) >> 52 & 0x7ff);
  return std::fabs(std::ldexp(result - expected, 1075 - std::max(exponent, 1)) - rest);
}

TEST(MathFunctions, AreWithinNineTenthsOfAUnitAndSpecialValuesAreExact) {
  const std::map<std::string, double (*)(double, double)> functions = {
      {"exp", [](double x, double) { return exp(x); }},     {"log", [](double x, double) { return log(x); }},
      {"log10", [](double x, double) { return log10(x); }}, {"sinh", [](double x, double) { return sinh(x); }},
      {"cosh", [](double x, double) { return cosh(x); }},   {"cbrt", [](double x, double) { return cbrt(x); }},
      {"pow", [](double x, double y) { return pow(x, y); }}};
  std::map<std::string, int> lines;
  std::istringstream text(test::readFile(test::kSourceFolder / "tests/math/expected.txt"));
  for (std::string function, x, y, expected, rest; text >> function >> x >> y >> expected >> rest;) {
    const double result = functions.at(function)(fromHex(x), fromHex(y));
    const double value = fromHex(expected);
    const bool right = std::isnan(value) ? std::isnan(result)
                       : rest == "exact" ? bitsOf(result) == bitsOf(value)
                                         : std::signbit(result) == std::signbit(value) &&
                                               errorOf(result, value, std::stoi(rest) / 1e6) <= 0.9;
    EXPECT_TRUE(right) << function << ' ' << x << ' ' << y << ": " << std::hex << bitsOf(result) << ", not "
                       << expected;
    ++lines[function];
  }
  EXPECT_EQ(lines.size(), functions.size());
  for (const auto& [function, count] : lines) EXPECT_GE(count, 500) << function;
}

}  // namespace
}  // namespace qs::math
