// A host in C++ that flashes a mixture of five alkanes and keeps feed, vapour and liquid in a collection of phases.
//   flash DATABASE-DIRECTORY
// Installed classes are used; without an installation the modules beside the program are.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <stdexcept>
#include <string>

#include "examples/flash/flash.h"

namespace {

using namespace flash;

constexpr int kNumbers[] = {3, 4, 5, 6, 7};  // propane to n-heptane
const Feed kFeed{{0.15, 0.25, 0.30, 0.20, 0.10}, 330.0, 250.0};

// Six significant digits, the same on every target.
std::string text(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}
std::string padded(const std::string& cell, std::size_t width = 14) {
  return std::string(cell.size() < width ? width - cell.size() : 0, ' ') + cell;
}

qs::Collection mixture(const std::string& directory) {
  auto compounds = qs::Collection::create().value();
  for (const int number : kNumbers) compounds.add(qs::Compound::read(directory, number).value()).value();
  return compounds;
}

Reals storedDerivatives(const qs::Phase& liquid, const qs::ComPtr<IEnumeratedPropertyRegistry>& registry) {
  const auto derivatives = liquid.as<IDerivativeProp>();
  INT index = -1;
  qs::ComPtr<IRealArrayDisp> values;
  if (derivatives->GetDerivativePropIndex(numberOf(registry, "LnFugacityCoeff"), numberOf(registry, "dT"), &index) !=
          S_OK ||
      derivatives->GetArrayDerivative(index, values.out()) != S_OK)
    throw std::runtime_error("the phase lost its derivatives");
  return qs::readArray(values.get()).value();
}

void print(const qs::Collection& compounds, const qs::Phases& phases,
           const qs::ComPtr<IEnumeratedPropertyRegistry>& registry) {
  const auto feed = phases.locate(xptFeed).value(), vapour = phases.locate(xptVapour).value(),
             liquid = phases.locate(xptLiquid).value();
  const Reals z = feed.composition().value(), y = vapour.composition().value(), x = liquid.composition().value(),
              lnCoefficients = liquid.lnFugacityCoefficients().value(),
              derivatives = storedDerivatives(liquid, registry);
  const double temperature = vapour.temperature().value(), pressure = vapour.pressure().value(),
               vapourFraction = vapour.fraction().value(), liquidFraction = liquid.fraction().value();

  std::cout << "flash at " << text(temperature) << " K and " << text(pressure) << " kPa\n"
            << padded("") << padded("TC, K") << padded("PC, kPa") << padded("VP, kPa") << padded("feed")
            << padded("vapour") << padded("liquid") << padded("ln phi liquid") << padded("d/dT, 1/K") << "\n";
  double worst = 0;
  std::size_t i = 0;
  for (const qs::Compound& compound : compounds) {
    std::cout << padded(compound.name().value());
    const auto property = [&](const char* key) { return compound[key].at(temperature, pressure).value(); };
    for (const double value :
         {property("TC"), property("PC"), property("VP"), z[i], y[i], x[i], lnCoefficients[i], derivatives[i]})
      std::cout << padded(text(value));
    std::cout << "\n";
    worst = std::max(worst, std::abs(vapourFraction * y[i] + liquidFraction * x[i] - z[i]));
    ++i;
  }
  std::cout << "vapour fraction " << text(vapourFraction) << ", liquid fraction " << text(liquidFraction) << ", "
            << phases.size() << " active phases\n"
            << "the material balance " << (worst <= 1e-10 ? "closes to 1e-10" : "does not close") << "\n";
  if (worst > 1e-10) throw std::runtime_error("the phases do not make up the feed");
}

void run(const std::string& directory) {
  const auto registry = qs::create<IEnumeratedPropertyRegistry>(__uuidof(PropertyRegistry)).value();
  const auto compounds = mixture(directory);
  const auto phases = qs::Phases::create(compounds, 2, 1, registry.get()).value();
  calculate(compounds, kFeed, phases, registry);
  print(compounds, phases, registry);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: flash DATABASE-DIRECTORY\n";
    return 2;
  }
  try {
    const auto session = qs::Session::open().value();
    run(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "flash: " << error.what() << "\n";
    return 1;
  }
}
