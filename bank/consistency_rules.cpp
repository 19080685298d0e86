// Correlations and single values with each other.
#include <algorithm>
#include <cmath>
#include <utility>

#include "bank/rules.h"

namespace qs::bank {
namespace {

// In m3/kmol; by C. Tsonopoulos, AIChE J. 20 (1974) 263, without polar terms, where the compound has none.
double secondVirialCoefficient(const Subject& subject, double T) {
  if (const double known = subject(Key::SVR, T); !std::isnan(known)) return known;
  const double r = T / subject(Key::TC), r2 = r * r, r3 = r2 * r, r8 = r3 * r3 * r2;
  return kGasConstant * subject(Key::TC) / subject(Key::PC) *
         (0.1445 - 0.33 / r - 0.1385 / r2 - 0.0121 / r3 - 0.000607 / r8 +
          subject(Key::ACEN) * (0.0637 + 0.331 / r2 - 0.423 / r3 - 0.008 / r8));
}

// In m3/kmol; not a number where the equation with the second virial coefficient has no real solution.
double saturatedVapourVolume(const Subject& subject, double T, double virial) {
  const double ideal = kGasConstant * T / subject(Key::VP, T);
  return ideal * (1.0 + std::sqrt(1.0 + 4.0 * virial / ideal)) / 2.0;
}

}  // namespace

void boilingPoint(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.01;
  findings.compare(subject, Key::VP, "at NBP", subject(Key::VP, subject(Key::NBP)), kAtmosphere, kTolerance);
}

void criticalPressure(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.03;
  constexpr double kNear = 0.995;
  const auto range = subject.range(Key::VP);
  const double critical = subject(Key::TC);
  if (range && range->high >= kNear * critical)
    findings.compare(subject, Key::VP, "at TC, from PC", subject.continued(Key::VP, {&critical, 1}).front(),
                     subject(Key::PC), kTolerance);
}

void acentricFactor(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.01;
  constexpr double kNear = 0.02;  // of TC; the lowest temperatures of some liquids are a little higher
  const auto range = subject.range(Key::VP);
  const double critical = subject(Key::TC), T = 0.7 * critical;
  if (!range || !(range->low <= T + kNear * critical && range->high >= T - kNear * critical)) return;
  const double pressure = subject.continued(Key::VP, {&T, 1}).front();
  findings.compareDifference(subject, Key::ACEN, "from VP at 0.7 TC", subject(Key::ACEN),
                             -1.0 - std::log10(pressure / subject(Key::PC)), kTolerance);
}

void clapeyron(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.05;
  constexpr double kHighest = 0.8;  // of TC; nearer to it the second virial coefficient does not describe the vapour
  const auto range = subject.range(Key::HVP, Key::VP);
  if (!range) return;
  const double T = std::min(range->at(0.5), kHighest * subject(Key::TC));
  const double virial = secondVirialCoefficient(subject, T), vapour = saturatedVapourVolume(subject, T, virial);
  if (virial < 0.0 && std::isnan(vapour) && subject.curve(Key::SVR))
    return findings.add(subject.compound(), Key::SVR,
                        numberText(virial) + atKelvins(T) + " and VP leave the saturated vapour no volume");
  const double volume = vapour - subject(Key::MW) / subject(Key::LDN, T);
  findings.compare(subject, Key::HVP, "from the slope of VP" + atKelvins(T), subject(Key::HVP, T),
                   T * subject.slope(Key::VP, T) * volume, kTolerance);
}

void trouton(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.5;
  const double T = subject(Key::NBP);
  findings.compare(subject, Key::HVP, "for HVP / NBP, from 36.6 + R ln NBP", subject(Key::HVP, T) / T,
                   36.61 + kGasConstant * std::log(T), kTolerance);
}

void liquidDensity(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.3, kCriticalTolerance = 0.25;
  constexpr double kNear = 0.999;
  const auto range = subject.range(Key::LDN);
  if (!range) return;
  const double critical = subject(Key::TC), criticalDensity = subject(Key::MW) / subject(Key::VC);
  const double compressibility = subject(Key::PC) * subject(Key::VC) / (kGasConstant * critical);
  const double T = range->at(0.5);
  // By H. G. Rackett, J. Chem. Eng. Data 15 (1970) 514.
  const bool agrees = findings.compare(
      subject, Key::LDN, "from VC" + atKelvins(T), subject(Key::LDN, T),
      criticalDensity * std::pow(compressibility, -std::pow(1.0 - T / critical, 2.0 / 7.0)), kTolerance);
  if (agrees && range->high >= kNear * critical)
    findings.compare(subject, Key::LDN, "at TC, from VC", subject(Key::LDN, std::min(range->high, critical)),
                     criticalDensity, kCriticalTolerance);
}

void standardDensity(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.03;
  constexpr double k60F = 288.706;
  findings.compare(subject, Key::SLDN, "from LDN at 60 F", subject(Key::SLDN), subject(Key::LDN, k60F), kTolerance);
}

void liquidViscosity(const Subject& subject, Findings& findings) {
  constexpr double kUsual = 2e-4, kFactor = 30.0;
  const double T = 0.7 * subject(Key::TC), value = subject(Key::LVS, T);
  if (value > kUsual * kFactor || value < kUsual / kFactor)
    findings.add(subject.compound(), Key::LVS,
                 numberText(value) + atKelvins(T) + " is more than 30 times from the usual " + numberText(kUsual));
}

void idealGas(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.01;
  constexpr double kSmallestEnthalpy = 0.5;  // kJ/kmol
  findings.compareDifference(subject, Key::IGH, "at 298.15 K", subject(Key::IGH, kStandardTemperature), 0.0,
                             kSmallestEnthalpy);
  for (const auto& [key, overT] : {std::pair(Key::IGH, false), {Key::IGS, true}}) {
    const auto range = subject.range(key, Key::IGCP);
    if (!range) continue;
    constexpr int kSteps = 10;
    bool agrees = true;
    for (int i = 0; i <= kSteps && agrees; ++i) {
      const double T = range->at(i / double{kSteps});
      agrees = findings.compare(subject, Key::IGCP,
                                std::string("from the slope of ") + (overT ? "IGS" : "IGH") + atKelvins(T),
                                subject(Key::IGCP, T), subject.slope(key, T) * (overT ? T : 1.0), kTolerance);
    }
    if (agrees)
      findings.compare(subject, key, "for the change over the range, from the integral of IGCP",
                       subject(key, range->high) - subject(key, range->low),
                       subject.integral(Key::IGCP, range->low, range->high, overT), kTolerance);
  }
}

}  // namespace qs::bank
