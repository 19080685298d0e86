#include "bank/checks.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

#include "bank/names.h"
#include "bank/rules.h"

namespace qs::bank {
namespace {

// Errors cannot be right; warnings may be, in rare compounds.
constexpr auto kError = Severity::Error, kWarning = Severity::Warning;
constexpr Rule kRules[] = {
    {"syntax", kError, "a source is JSON"},
    {"shape", kError, "members have the names and types that docs/database.md describes"},
    {"name", kError, "keys, forms, transformations, families and sources have known names"},
    {"unit", kError, "a value has a unit that can be converted to that of its key"},
    {"not-kept", kWarning, "a source can hold what the database holds"},
    {"storable", kError, "a database can hold the values", storableCompound, storableBank},
    {"cas-check-digit", kError, "the last digit of a CAS number follows from the others", casCheckDigit},
    {"formula", kError, "a formula consists of elements", formula},
    {"molecular-weight", kError, "MW is the sum of the atomic weights of the formula", molecularWeight},
    {"same-cas", kError, "a CAS number belongs to one compound", nullptr, sameCas},
    {"same-name", kError, "a name or synonym belongs to one compound, once", nullptr, sameName},
    {"copied-coefficients", kWarning, "two compounds never have the same coefficients", nullptr, sameCoefficients},
    {"bounds", kError, "every value lies within what is known of any compound", bounds},
    {"order", kWarning, "MP, NBP and TC, and FLML and FLMU, rise in this order", order},
    {"critical-compressibility", kError, "ZC is PC VC / (R TC)", criticalCompressibility},
    {"formation", kError, "IGHF25, IGGF25, IGSF25 and IGS agree", formation},
    {"combustion", kWarning, "IGHC25 follows from IGHF25 and those of the products", combustion},
    {"finite", kError, "a correlation has a number everywhere in its range", finite},
    {"limits", kError, "no liquid is above the critical temperature, no solid above the melting point", limits},
    {"monotony", kWarning,
     "vapour pressure and vapour viscosity rise with temperature; densities, liquid viscosity and "
     "surface tension fall",
     monotony},
    {"critical-zero", kWarning, "heat of vaporisation and surface tension vanish at the critical temperature",
     criticalZero},
    {"boiling-point", kError, "VP at NBP is 101.325 kPa", boilingPoint},
    {"critical-pressure", kError, "VP at TC is PC", criticalPressure},
    {"acentric-factor", kWarning, "ACEN is defined by VP at 0.7 TC", acentricFactor},
    {"clapeyron", kError, "HVP follows from the slope of VP and the volumes of vapour and liquid", clapeyron},
    {"trouton", kWarning, "the entropy of vaporisation at NBP is alike for all compounds", trouton},
    {"liquid-density", kWarning, "LDN follows roughly from VC", liquidDensity},
    {"standard-density", kError, "SLDN is LDN at 60 F", standardDensity},
    {"liquid-viscosity", kWarning, "LVS at 0.7 TC is alike for all compounds", liquidViscosity},
    {"ideal-gas", kError, "IGCP is the slope of IGH and T times that of IGS", idealGas},
    {"doubtful", kWarning, "whoever made the source doubts the value", doubtful},
    {"waiver", kError, "a waiver has a reason and waives something"},
};
constexpr const Rule& kOfWaivers = kRules[std::size(kRules) - 1];
static_assert(kOfWaivers.name == "waiver");

// What a waiver is for: rule, compound as findings name it, field.
using Waived = std::tuple<std::string_view, std::string_view, std::string_view>;

void applyWaivers(const Source& source, std::vector<Finding>& list) {
  std::map<LONG, std::string> compounds;
  for (const Compound& compound : source.compounds)
    compounds.try_emplace(compound.data.number, database::describe(compound.data));

  std::multimap<Waived, Finding*> found;
  for (Finding& finding : list) found.emplace(Waived{finding.rule, finding.compound, finding.field}, &finding);
  std::vector<Finding> faults;
  Findings findings(source, kOfWaivers, faults);
  for (const Waiver& waiver : source.waivers) {
    const auto [first, last] = found.equal_range({waiver.rule, compounds[waiver.compound], waiver.field});
    const std::string what = "of " + waiver.rule + " for compound " + std::to_string(waiver.compound);
    if (std::ranges::find(kRules, waiver.rule, &Rule::name) == std::end(kRules))
      findings.add(waiver.line, waiver.field, what + ": no such rule" + suggestionFrom(kRules, waiver.rule));
    else if (waiver.reason.empty())
      findings.add(waiver.line, waiver.field, what + ": no reason");
    else if (first == last)
      findings.add(waiver.line, waiver.field, what + ": there is no such finding");
    for (auto place = first; place != last; ++place) place->second->waiver = waiver.reason;
  }
  std::ranges::move(faults, std::back_inserter(list));
}

}  // namespace

std::span<const Rule> rules() { return kRules; }

std::vector<Finding> check(const Source& source, const std::function<void(std::size_t)>& done) {
  std::vector<Finding> list;
  std::size_t examined = 0;
  for (const Compound& compound : source.compounds) {
    const Subject subject(compound);
    for (const Rule& rule : kRules) {
      Findings findings(source, rule, list);
      if (rule.ofCompound) rule.ofCompound(subject, findings);
    }
    done(++examined);
  }
  for (const Rule& rule : kRules) {
    Findings findings(source, rule, list);
    if (rule.ofBank) rule.ofBank(source, findings);
  }
  applyWaivers(source, list);
  std::ranges::stable_sort(list, {}, &Finding::line);
  return list;
}

}  // namespace qs::bank
