// Evaluation in C++: vapour pressures from below to above the range of their data, each with its status; a boiling
// point as an inverse; and heats of vaporisation against the slope of the vapour pressure, by Clapeyron's equation.
//   evaluation DATABASE-DIRECTORY
//   evaluation DATABASE-DIRECTORY COMPOUND PROPERTY FROM TO      a property between two temperatures, by every policy
// Installed classes are used; without an installation the modules beside the program are.
#include <qscontainers.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr double kGas = 8.31446261815324;  // kJ/(kmol K)

std::string rounded(double value, int digits) {
  const double unit = std::pow(10, digits);
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), std::floor(value * unit + 0.5) / unit);
  return {text.data(), end.ptr};
}

// Six significant digits.
std::string text(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}

double numberOf(const std::string& text) {
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc())
    throw std::runtime_error(text + " is not a number");
  return value;
}

std::string column(const std::string& text) {
  constexpr std::size_t kWidth = 12;
  return std::string(text.size() < kWidth ? kWidth - text.size() : 0, ' ') + text;
}

std::string statusText(LONG status) {
  struct {
    LONG bit;
    const char* name;
  } constexpr kNames[] = {{eStatusInside, "inside"},
                          {eStatusBelow, "below"},
                          {eStatusAbove, "above"},
                          {eStatusByPolicy, "by policy"},
                          {eStatusNoConvergence, "not found"}};
  std::string text;
  for (const auto& [bit, name] : kNames)
    if (status & bit) text += (text.empty() ? "" : ", ") + std::string(name);
  return text;
}

void printVapourPressures(const qs::Compound& compound) {
  const auto property = compound["VP"];
  const qs::Range range = property.range().value();
  constexpr std::array kTemperatures{240.0, 255.0, 263.15, 298.15, 373.15, 500.0, 647.14, 700.0, 900.0};
  std::array<double, kTemperatures.size()> pressures;
  std::array<LONG, kTemperatures.size()> statuses;
  property.evaluate(kTemperatures, {.values = pressures, .statuses = statuses}).value();
  std::cout << compound.name().value() << ", vapour pressure; data from " << rounded(range.tMin, 2) << " to "
            << rounded(range.tMax, 2) << " K\n"
            << column("K") << column("kPa") << "  status\n";
  for (std::size_t i = 0; i < kTemperatures.size(); ++i)
    std::cout << column(rounded(kTemperatures[i], 2)) << column(rounded(pressures[i], 4)) << "  "
              << statusText(statuses[i]) << "\n";
}

void printPolicies(const qs::Property& property, double from, double to) {
  std::cout << "K form-goes-on not-set-outside value-at-limit tangent tangent-ln-Y-over-1/T tangent-to-critical\n";
  constexpr int kSteps = 100;
  for (int i = 0; i <= kSteps; ++i) {
    const double temperature = from + (to - from) * i / kSteps;
    std::cout << text(temperature);
    for (int policy = eAsFormGoesOn; policy < eRecommended; ++policy) {
      const auto value = property.at(temperature, 101.325, static_cast<tagLimitPolicyEnum>(policy));
      std::cout << " " << (value ? text(*value) : "-");
    }
    std::cout << "\n";
  }
}

void printBoilingPoint(const qs::Compound& compound, double pressure) {
  double temperature = 0;
  LONG status = 0;
  compound["VP"].temperaturesOf({&pressure, 1}, {&temperature, 1}, {&status, 1}).value();
  std::cout << "\n"
            << compound.name().value() << " boils at " << rounded(temperature, 4) << " K under " << rounded(pressure, 0)
            << " kPa: " << statusText(status) << "\n";
}

// Along the boiling curve, T dP/dT (Vg - Vl). The vapour's volume is that of an ideal gas, corrected by the second
// virial coefficient where there is one. Acetic acid has none, and its vapour is far from ideal: most molecules are in
// pairs.
void printHeatsOfVaporisation(const qs::Compound& compound) {
  std::cout << compound.name().value() << "\n"
            << column("kPa") << column("K") << column("kJ/kmol") << column("Clapeyron") << column("%") << "\n";
  for (const double pressure : {10.0, 50.0, 101.325, 500.0, 1000.0}) {
    const double T = compound["VP"].temperatureOf(pressure).value();
    const auto at = [&](const char* key) { return compound[key].evaluate(T).value(); };
    const double heat = at("HVP").value;
    const qs::Point virial = at("SVR");
    const double vapour = kGas * T / pressure + (virial.status & eStatusNotSet ? 0.0 : virial.value);
    const double liquid = at("MW").value / at("LDN").value;
    const double clapeyron = T * at("VP").firstDerivative * (vapour - liquid);
    std::cout << column(rounded(pressure, 3)) << column(rounded(T, 3)) << column(rounded(heat, 1))
              << column(rounded(clapeyron, 1)) << column(rounded(100.0 * (clapeyron / heat - 1.0), 2)) << "\n";
  }
}

void run(const std::string& directory) {
  const auto water = qs::Compound::read(directory, 19).value();
  printVapourPressures(water);
  printBoilingPoint(water, 50.0);
  std::cout << "\nheats of vaporisation, and from the slope of the vapour pressure\n";
  for (const int number : {19, 21, 46}) printHeatsOfVaporisation(qs::Compound::read(directory, number).value());
  std::cout << "end of evaluation\n";
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv, argv + argc);
  if (argc != 2 && argc != 6) {
    std::cerr << "usage: evaluation DATABASE-DIRECTORY [COMPOUND PROPERTY FROM TO]\n";
    return 2;
  }
  try {
    const auto session = qs::Session::open().value();
    if (argc == 2)
      run(arguments[1]);
    else
      printPolicies(qs::Compound::read(arguments[1], static_cast<int>(numberOf(arguments[2]))).value()[arguments[3]],
                    numberOf(arguments[4]), numberOf(arguments[5]));
  } catch (const std::exception& error) {
    std::cerr << "evaluation: " << error.what() << "\n";
    return 1;
  }
}
