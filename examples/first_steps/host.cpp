// First steps in C++: fills three compounds, prints a table of properties, flashes a mixture of them by Raoult's law,
// stores the result in a collection of phases, reads it back, and writes the last compound as XML.
//   first_steps DATABASE-DIRECTORY XML-FILE
// Installed classes are used; without an installation the modules beside the program are.
#include <qscontainers.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "examples/flash/raoult.h"

namespace {

using Reals = std::vector<double>;

constexpr double kTemperature = 330, kPressure = 250;  // K, kPa

std::string rounded(double value, int digits) {
  const double unit = std::pow(10, digits);
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), std::round(value * unit) / unit);
  return {text.data(), end.ptr};
}

qs::Collection filled(const std::string& directory) {
  auto compounds = qs::Collection::create().value();
  for (const int number : {3, 5, 7}) compounds.add(qs::Compound::read(directory, number).value()).value();
  return compounds;
}

// Prints the table; returns the equilibrium ratios.
Reals tabulate(const qs::Collection& compounds) {
  Reals ratios;
  for (const qs::Compound& compound : compounds) {
    const auto value = [&](const char* key) { return compound[key].at(kTemperature, kPressure).value(); };
    const double pressure = value("VP");
    std::cout << compound.name().value() << " " << compound.casNumber().value() << ": TC " << rounded(value("TC"), 2)
              << " K, PC " << rounded(value("PC"), 2) << " kPa, VP " << rounded(pressure, 2) << " kPa\n";
    ratios.push_back(pressure / kPressure);
  }
  return ratios;
}

void store(const qs::Phase& phase, double fraction, const Reals& composition) {
  phase.setTemperature(kTemperature).value();
  phase.setPressure(kPressure).value();
  phase.setActive(true).value();
  phase.setFraction(fraction).value();
  phase.setComposition(composition).value();
}

qs::Phases flashed(const qs::Collection& compounds, const Reals& ratios) {
  auto phases = qs::Phases::create(compounds, 2).value();
  phases.setEquilibriumPhases(2).value();
  int position = 0;
  for (const tagPhaseTypeEnum type : {xptVapour, xptLiquid})
    phases.equilibriumPhase(position++).value().setType(type).value();
  const Reals feed{0.3, 0.4, 0.3};
  const flash::Split split = flash::isothermal(feed, ratios);
  store(phases.locate(xptFeed).value(), 1, feed);
  store(phases.locate(xptVapour).value(), split.vapourFraction, split.vapour);
  store(phases.locate(xptLiquid).value(), 1 - split.vapourFraction, split.liquid);
  return phases;
}

void print(const qs::Phases& phases) {
  for (const qs::Phase& phase : phases) {
    std::cout << "phase of kind " << phase.type().value() << ": fraction " << rounded(phase.fraction().value(), 4)
              << ", composition";
    for (const double value : phase.composition().value()) std::cout << " " << rounded(value, 4);
    std::cout << "\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: first_steps DATABASE-DIRECTORY XML-FILE\n";
    return 2;
  }
  try {
    const auto session = qs::Session::open().value();
    const auto compounds = filled(argv[1]);
    print(flashed(compounds, tabulate(compounds)));
    std::ofstream(argv[2], std::ios::binary) << compounds.at(2).value().xml(xmlDefaultForm).value();
  } catch (const std::exception& error) {
    std::cerr << "first_steps: " << error.what() << "\n";
    return 1;
  }
}
