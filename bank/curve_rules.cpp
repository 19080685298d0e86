// Correlations, each by itself.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "bank/rules.h"
#include "props/evaluation.h"

namespace qs::bank {

// As evaluation with status gives them, which takes what is beside a limit by rounding for the limit.
void finite(const Subject& subject, Findings& findings) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const Key key : kKeysInOrder) {
    const auto range = subject.range(key);
    if (!range) continue;
    std::vector<double> beside;
    for (const double limit : {range->low, range->high})
      for (const double towards : {0.0, kInfinity}) beside.push_back(std::nextafter(limit, towards));
    const auto& [temperatures, values] = subject.samples(key);
    const auto examine = [&](std::span<const double> at, std::span<const double> found) {
      const auto fault = std::ranges::find_if_not(found, isNumber);
      if (fault == found.end()) return true;
      findings.add(subject.compound(), key,
                   "no number" + atKelvins(at[static_cast<std::size_t>(fault - found.begin())]));
      return false;
    };
    if (examine(temperatures, values)) examine(beside, subject.continued(key, beside));
  }
}

void limits(const Subject& subject, Findings& findings) {
  constexpr Key kOfLiquids[] = {Key::LDN, Key::VDN, Key::VP, Key::HVP,  Key::LCP,
                                Key::LVS, Key::LTC, Key::ST, Key::LIQH, Key::LIQS};
  constexpr Key kOfSolids[] = {Key::SDN, Key::SOLH, Key::SOLS, Key::SOLCP, Key::SOLTC, Key::SUBP};
  const auto examine = [&](std::span<const Key> keys, Key end, const char* what) {
    for (const Key key : keys)
      if (const auto range = subject.range(key); range && range->high > subject(end))
        findings.add(subject.compound(), key,
                     "the range ends at " + numberText(range->high) + " K, above the " + what + ", " +
                         numberText(subject(end)) + " K");
  };
  examine(kOfLiquids, Key::TC, "critical temperature");
  examine(kOfSolids, Key::MP, "melting point");
}

void monotony(const Subject& subject, Findings& findings) {
  constexpr std::pair<Key, bool> kRises[] = {{Key::VP, true},   {Key::SUBP, true}, {Key::VDN, true},  {Key::VVS, true},
                                             {Key::LDN, false}, {Key::SDN, false}, {Key::LVS, false}, {Key::ST, false}};
  constexpr double kRounding = 1e-9;
  for (const auto& [key, rises] : kRises) {
    const auto& [temperatures, values] = subject.samples(key);
    for (std::size_t i = 1; i < values.size(); ++i) {
      const double step = rises ? values[i] - values[i - 1] : values[i - 1] - values[i];
      if (!(step < -kRounding * std::abs(values[i]))) continue;
      findings.add(subject.compound(), key,
                   std::string(rises ? "falls" : "rises") + " from " + numberText(values[i - 1]) +
                       atKelvins(temperatures[i - 1]) + " to " + numberText(values[i]) + atKelvins(temperatures[i]));
      break;
    }
  }
}

void criticalZero(const Subject& subject, Findings& findings) {
  constexpr struct {
    Key key;
    double exponent;   // of 1 - T/TC, to which the value is nearly proportional
    double tolerance;  // a part of the value at 0.7 TC
  } kKeysAtZero[] = {{Key::HVP, 0.38, 0.15}, {Key::ST, 11.0 / 9.0, 0.05}};
  constexpr double kNear = 0.95;  // what ends farther from TC says nothing about it
  const double critical = subject(Key::TC);
  for (const auto& [key, exponent, tolerance] : kKeysAtZero) {
    const auto range = subject.range(key);
    if (!range || !(range->high >= kNear * critical) || !(range->low < kNear * critical)) continue;
    const double end = std::min(range->high, critical), start = std::max(range->low, 0.7 * critical);
    const double value = subject(key, end), scale = subject(key, start);
    const double expected = scale * std::pow((critical - end) / (critical - start), exponent);
    findings.compareDifference(subject, key, "towards the critical temperature," + atKelvins(end), value, expected,
                               tolerance * std::abs(scale));
  }
}

}  // namespace qs::bank
