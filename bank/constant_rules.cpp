// Single values, by themselves and with each other.
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "bank/bounds.h"
#include "bank/rules.h"

namespace qs::bank {

void bounds(const Subject& subject, Findings& findings) {
  const auto outside = [](Key key, double value) {
    const auto [lowest, highest] = boundsOf(key);
    return value < lowest || value > highest;
  };
  const auto report = [&](Key key, const std::string& what, const Bounds& allowed, const char* unit = "") {
    findings.add(subject.compound(), key,
                 what + " is not within " + numberText(allowed.lowest) + " to " + numberText(allowed.highest) + unit);
  };
  constexpr Bounds kTemperatures{0.0, 10000.0};
  for (const auto& [key, value] : subject.data().constants)
    if (outside(key, value)) report(key, numberText(value), boundsOf(key));
  for (const Key key : kKeysInOrder) {
    const auto range = subject.range(key);
    if (!range) continue;
    if (range->low < kTemperatures.lowest || range->high > kTemperatures.highest) {
      report(key, "the range from " + numberText(range->low) + " to " + numberText(range->high) + " K", kTemperatures,
             " K");
      continue;
    }
    const auto& [temperatures, values] = subject.samples(key);
    const auto found = std::ranges::find_if(values, [&](double value) { return outside(key, value); });
    if (found != values.end())
      report(key, numberText(*found) + atKelvins(temperatures[static_cast<std::size_t>(found - values.begin())]),
             boundsOf(key));
  }
}

void order(const Subject& subject, Findings& findings) {
  constexpr struct {
    Key lower, higher, reported;
  } kPairs[] = {{Key::MP, Key::NBP, Key::NBP},
                {Key::NBP, Key::TC, Key::NBP},
                {Key::MP, Key::TC, Key::MP},
                {Key::FLML, Key::FLMU, Key::FLML}};
  for (const auto& [lower, higher, reported] : kPairs)
    if (subject(lower) >= subject(higher))
      findings.add(subject.compound(), reported,
                   narrow(nameOf(lower)) + ", " + numberText(subject(lower)) + ", is not below " +
                       narrow(nameOf(higher)) + ", " + numberText(subject(higher)));
}

void criticalCompressibility(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.015;
  const double computed = subject(Key::PC) * subject(Key::VC) / (kGasConstant * subject(Key::TC));
  const double given = subject(Key::ZC);
  if (!std::isnan(given))
    return void(findings.compare(subject, Key::ZC, "from PC VC / (R TC)", given, computed, kTolerance));
  const auto [lowest, highest] = boundsOf(Key::ZC);
  if (computed < lowest || computed > highest)
    findings.compare(subject, Key::VC, "for PC VC / (R TC)", computed, 0.27, kTolerance);
}

void formation(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 500.0;  // kJ/kmol
  const double heat = subject(Key::IGHF25), gibbs = subject(Key::IGGF25);
  findings.compareDifference(subject, Key::IGSF25, "from IGHF25 and IGGF25", subject(Key::IGSF25),
                             (heat - gibbs) / kStandardTemperature, kTolerance / kStandardTemperature);
  const auto atoms = subject.atoms();
  if (!atoms) return;
  double entropy = 0.0;
  for (const auto& [element, count] : *atoms) entropy += count * element->entropy;
  findings.compareDifference(subject, Key::IGGF25, "from IGHF25 and IGS", gibbs,
                             heat - kStandardTemperature * (subject(Key::IGS, kStandardTemperature) - entropy),
                             kTolerance);
}

void combustion(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 300.0;  // kJ/kmol
  // Heats of formation of the products, of an atom; CODATA Key Values for Thermodynamics, 1989.
  constexpr std::pair<std::string_view, double> kProducts[] = {
      {"C", -393510.0}, {"H", -241826.0 / 2}, {"S", -296810.0}, {"N", 0.0},  {"O", 0.0}, {"Cl", 0.0},
      {"He", 0.0},      {"Ne", 0.0},          {"Ar", 0.0},      {"Kr", 0.0}, {"Xe", 0.0}};
  const auto atoms = subject.atoms();
  if (!atoms) return;
  double products = 0.0;
  for (const auto& [element, count] : *atoms) {
    const auto* product = std::ranges::find(kProducts, element->symbol, &std::pair<std::string_view, double>::first);
    if (product == std::end(kProducts)) return;
    products += count * product->second;
  }
  findings.compareDifference(subject, Key::IGHC25, "from IGHF25", subject(Key::IGHC25), products - subject(Key::IGHF25),
                             kTolerance);
}

void doubtful(const Subject& subject, Findings& findings) {
  for (const auto& [key, provenance] : subject.compound().provenance)
    if (provenance.quality == eQualityDoubtful)
      findings.add(subject.compound(), key, provenance.note.empty() ? "without a note" : provenance.note);
}

}  // namespace qs::bank
