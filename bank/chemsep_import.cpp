#include "bank/chemsep_import.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "bank/chemsep_equations.h"
#include "bank/chemsep_library.h"
#include "bank/names.h"
#include "bank/properties.h"
#include "bank/refit.h"
#include "bank/units.h"
#include "platform/number_text.h"

namespace qs::bank {
namespace {

using database::Correlation;

constexpr double kStandard = 298.15;              // K
constexpr double kWaterAt60Fahrenheit = 999.016;  // kg/m3

struct ConstantRow {
  std::string_view element;
  Key key;
  std::string_view note = {};
};
constexpr ConstantRow kConstants[] = {
    {"MolecularWeight", Key::MW},
    {"CriticalTemperature", Key::TC},
    {"CriticalPressure", Key::PC},
    {"CriticalVolume", Key::VC},
    {"CriticalCompressibility", Key::ZC},
    {"AcentricityFactor", Key::ACEN},
    {"NormalBoilingPointTemperature", Key::NBP},
    {"NormalMeltingPointTemperature", Key::MP},
    {"HeatOfFusionAtMeltingPoint", Key::HFUS},
    {"DipoleMoment", Key::DM},
    {"RadiusOfGyration", Key::RG},
    {"SpecificGravity", Key::SLDN, "specific gravity at 60 F times 999.016"},
    {"SolubilityParameter", Key::SP},
    {"HeatOfFormation", Key::IGHF25},
    {"GibbsEnergyOfFormation", Key::IGGF25},
    {"HeatOfCombustion", Key::IGHC25, "net; the compound is a gas at 298.15 K"},
    {"UniquacR", Key::UNIQUACR},
    {"UniquacQ", Key::UNIQUACQ},
    {"COSTALDVolume", Key::COSTALDVCHAR},
    {"CostaldAcentricFactor", Key::COSTALDACEN},
    {"WilsonVolume", Key::WilsonMVOL},
    {"ChaoSeaderLiquidVolume", Key::ChaoSeaderMVOL},
    {"ChaoSeaderAcentricFactor", Key::ChaoSeaderACEN},
    {"ChaoSeaderSolubilityParameter", Key::ChaoSeaderSOLP},
};

// Where several rows have the same key, the first whose element can be taken gives the value.
struct CorrelationRow {
  std::string_view element;
  Key key;
};
constexpr CorrelationRow kCorrelations[] = {
    {"VaporPressure", Key::VP},
    {"AntoineVaporPressure", Key::VP},
    {"LiquidDensity", Key::LDN},
    {"SolidDensity", Key::SDN},
    {"HeatOfVaporization", Key::HVP},
    {"LiquidHeatCapacityCp", Key::LCP},
    {"SolidHeatCapacityCp", Key::SOLCP},
    {"RPPHeatCapacityCp", Key::IGH},
    {"IdealGasHeatCapacityCp", Key::IGH},
    {"SecondVirialCoefficient", Key::SVR},
    {"LiquidViscosity", Key::LVS},
    {"LiquidViscosityRPS", Key::LVS},
    {"VaporViscosity", Key::VVS},
    {"LiquidThermalConductivity", Key::LTC},
    {"VaporThermalConductivity", Key::VTC},
    {"SurfaceTension", Key::ST},
};

// The names of bank/units.def for those that libraries write in another way.
constexpr Named<std::string_view> kUnitNames[] = {
    {"J/kmol/K", "J/(kmol K)"}, {"W/m/K", "W/(m K)"}, {"J0.5/m1.5", "(J/m3)^0.5"},
    {"Coulomb.m", "C m"},       {"Pa.s", "Pa s"},
};
constexpr std::string_view kMolarDensity = "kmol/m3";

// What a source has no place for.
constexpr std::string_view kWithoutPlace[] = {
    "ApiSrkS1",
    "ApiSrkS2",
    "Asog",
    "Charge",
    "DiameterLJ",
    "EnergyLJ",
    "Family",
    "FullerVolume",
    "GCmethod",
    "MatthiasCopemanC1",
    "MatthiasCopemanC2",
    "MatthiasCopemanC3",
    "ModifiedUnifac",
    "Parachor",
    "RacketParameter",
    "RelativeStaticPermittivity",
    "Smiles",
    "TriplePointPressure",
    "TriplePointTemperature",
    "Umr",
    "UnifacLLE",
    "UniquacQP",
    "VanDerWaalsArea",
    "VanDerWaalsVolume",
    "LiquidVolumeAtNormalBoilingPoint",
};

constexpr std::string_view kLetters[] = {"A", "B", "C", "D", "E"};

// The bytes that a database has for a text.
namespace longest {
#define BANK_TEXT(key, field, record_name, size, member) [[maybe_unused]] constexpr std::size_t field = size;
#include "props/identity.def"
}  // namespace longest

constexpr double kAnyPressure = 101.325;

bool fits(std::string_view text, std::size_t longest) {
  return !text.empty() && text.size() <= longest &&
         std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

// Of a deviation, with three digits.
std::string percentText(double deviation) {
  std::string text;
  appendDouble(text, roundedToDigits(100.0 * deviation, 3));
  return text + " %";
}

// The last number of four digits in a title that may be a year.
std::optional<int> yearIn(std::string_view title) {
  constexpr std::string_view kDigits = "0123456789";
  std::optional<int> year;
  for (std::size_t at = title.find_first_of(kDigits), end; at < title.size(); at = title.find_first_of(kDigits, end)) {
    end = std::min(title.find_first_not_of(kDigits, at), title.size());
    const auto number = wholeInteger(title.substr(at, end - at));
    if (number && *number >= 1900 && *number < 2100) year = *number;
  }
  return year;
}

double valueAt(const database::CompoundData& compound, Key key, double T) {
  LONG dependencies = 0;
  double value = 0.0;
  propertyOf(compound, key)->GetValue(T, kAnyPressure, eNoExtrapolation, &dependencies, &value);
  return value;
}

// The enthalpy that is zero at the standard temperature, and the constant with which the entropy there is the absolute
// one, from a heat capacity of the form VELDB1.
Correlation enthalpyOf(const Correlation& heatCapacity, double absoluteEntropy) {
  database::CompoundData compound;
  Correlation& enthalpy = compound.correlations[Key::IGH];
  enthalpy.form = PropCurveVELDB3;
  enthalpy.coefficients.assign(database::coefficientCount(Key::IGH, PropCurveVELDB3), 0.0);
  for (std::size_t i = 0; i < heatCapacity.coefficients.size(); ++i)
    enthalpy.coefficients[i + 1] = heatCapacity.coefficients[i] / static_cast<double>(i + 1);
  const double constant = -valueAt(compound, Key::IGH, kStandard);
  const double entropyConstant = absoluteEntropy - valueAt(compound, Key::IGS, kStandard);
  enthalpy.coefficients.front() = constant;
  enthalpy.coefficients.back() = entropyConstant;
  enthalpy.tmin = heatCapacity.tmin;
  enthalpy.tmax = heatCapacity.tmax;
  return enthalpy;
}

class Importer {
 public:
  Importer(const std::filesystem::path& file, const ChemsepOptions& options, std::vector<Finding>& findings)
      : file_(utf8(file)), options_(options), findings_(findings) {
    source_.file = file;
  }

  void add(const LibraryElement& element) {
    compound_ = {};
    compound_.line = element.line;
    if (element.name != "compound") return fault(element.line, element.name, "not a compound");
    readNaming(element);
    elements_.clear();
    for (const LibraryElement& item : element.content)
      if (!elements_.emplace(item.name, &item).second) leaveOut(item.name, "given again; the first one counts");
    elements_.erase("CompoundID");
    if (take("LibraryIndex") && !options_.libraryNumbers) leaveOut("LibraryIndex", "the compounds are numbered anew");
    readText("StructureFormula", longest::formula, compound_.data.formula);
    readText("CAS", longest::cas, compound_.data.cas);
    readGroups();
    for (const ConstantRow& row : kConstants) readConstant(row);
    keepCombustionOfGas();
    absoluteEntropy_ = absoluteEntropy();
    for (const CorrelationRow& row : kCorrelations) readCorrelation(row);
    if (absoluteEntropy_ && !compound_.data.correlations.contains(Key::IGH))
      leaveOut("AbsEntropy", "there is no ideal-gas heat capacity");
    for (const auto& [name, item] : elements_)
      leaveOut(name, std::ranges::find(kWithoutPlace, name) == std::end(kWithoutPlace) ? "not known"
                                                                                       : "no key or member for it");
    source_.compounds.push_back(std::move(compound_));
  }

  ChemsepImport finish(const std::string& title) {
    const bool isPublic = title.find("ChemSep") != std::string::npos;
    source_.description = "Imported from a library in ChemSep's XML form: " + title;
    source_.origins[kOrigin] = {
        title, isPublic ? "Harry Kooijman and Ross Taylor" : "not stated in the library",
        isPublic ? "Artistic License 2.0" : "not stated in the library",
        "converted to the units of this file; equations brought to other forms as the notes say", yearIn(title)};
    source_.identityOrigins = {
        {"number", kOrigin}, {"name", kOrigin}, {"formula", kOrigin}, {"cas", kOrigin}, {"unifac", kOrigin}};
    if (!options_.libraryNumbers) {
      source_.origins[kNumbering] = {"Numbers that qsdb gave to the compounds in the order of the library",
                                     "whoever imported the library",
                                     "none",
                                     {},
                                     {}};
      source_.identityOrigins["number"] = kNumbering;
    }
    ChemsepImport made{std::move(source_), {}};
    for (auto& [what, left] : leftOut_) made.leftOut.push_back(std::move(left));
    return made;
  }

 private:
  static constexpr const char* kOrigin = "library";
  static constexpr const char* kNumbering = "numbering";

  void fault(int line, std::string field, std::string message) {
    findings_.push_back({.rule = "import",
                         .file = file_,
                         .line = line,
                         .compound = compound_.data.number == 0 && compound_.data.name.empty()
                                         ? ""
                                         : database::describe(compound_.data),
                         .field = std::move(field),
                         .message = std::move(message)});
  }
  void leaveOut(std::string_view element, std::string_view reason) {
    LeftOut& left = leftOut_[{std::string(element), std::string(reason)}];
    if (left.times++ == 0) left = {std::string(element), std::string(reason), database::describe(compound_.data), 1};
  }

  // The element of a name, which is no longer among those that are left then.
  const LibraryElement* take(std::string_view name) {
    const auto found = elements_.find(name);
    if (found == elements_.end()) return nullptr;
    const LibraryElement* element = found->second;
    elements_.erase(found);
    return element;
  }

  // The attributes of an element, with a fault for what is missing or no number. `field` names it in messages.
  const std::string* attribute(const LibraryElement& element, const std::string& field, const char* name) {
    const std::string* value = element.attribute(name);
    if (!value) fault(element.line, field, std::string("no attribute \"") + name + '"');
    return value;
  }
  std::optional<double> number(const LibraryElement& element, const std::string& field) {
    const std::string* text = attribute(element, field, "value");
    if (!text) return std::nullopt;
    const auto value = wholeDouble(trimmed(*text));
    if (!value) fault(element.line, field, '"' + *text + "\" is not a finite number");
    return value;
  }
  std::optional<std::int32_t> integer(const LibraryElement& element, const std::string& field, const char* name) {
    const std::string* text = attribute(element, field, name);
    if (!text) return std::nullopt;
    const auto value = wholeInteger(trimmed(*text));
    if (!value) fault(element.line, field, '"' + *text + "\" is not an integer");
    return value;
  }
  // The unit as bank/units.def has it.
  std::optional<std::string> unitIn(const LibraryElement& element) {
    const std::string* unit = attribute(element, element.name, "units");
    if (!unit) return std::nullopt;
    const auto* known = valueOf(kUnitNames, trimmed(*unit));
    return std::string(known ? *known : trimmed(*unit));
  }
  // The value in the unit of a key.
  std::optional<double> converted(const LibraryElement& element, Key key) {
    auto value = number(element, element.name);
    const auto unit = unitIn(element);
    if (!value || !unit) return std::nullopt;
    const std::string refusal = convertNumber(unitOf(key), *unit, *value);
    if (!refusal.empty()) leaveOut(element.name, refusal);
    return refusal.empty() ? value : std::nullopt;
  }

  void readNaming(const LibraryElement& element) {
    const LibraryElement* name = element.find("CompoundID");
    if (const std::string* text = name ? name->attribute("value") : nullptr) compound_.data.name = trimmed(*text);
    if (options_.libraryNumbers)
      readNumber(element);
    else
      giveNumber();
    if (!fits(compound_.data.name, longest::name))
      fault((name ? *name : element).line, "CompoundID",
            "the name is not 1 to " + std::to_string(longest::name) + " printable ASCII characters");
  }
  void giveNumber() {
    const auto next = std::int64_t{options_.firstNumber} + static_cast<std::int64_t>(source_.compounds.size());
    if (next > std::numeric_limits<std::int32_t>::max())
      throw std::runtime_error(file_ + ": more compounds than there are numbers from " +
                               std::to_string(options_.firstNumber) + " on");
    compound_.data.number = static_cast<std::int32_t>(next);
  }
  void readNumber(const LibraryElement& element) {
    const LibraryElement* index = element.find("LibraryIndex");
    if (!index) return fault(element.line, "LibraryIndex", "there is no number");
    const auto found = integer(*index, index->name, "value");
    if (!found) return;
    compound_.data.number = *found;
    if (*found < 1) return fault(index->line, index->name, "a number is 1 or more");
    if (!numbers_.insert(*found).second) fault(index->line, index->name, "the number was given before");
  }
  void readText(const char* name, std::size_t longest, std::string& target) {
    const LibraryElement* element = take(name);
    const std::string* text = element ? attribute(*element, name, "value") : nullptr;
    if (!text || trimmed(*text).empty()) return;
    if (!fits(trimmed(*text), longest))
      return leaveOut(name, "more than " + std::to_string(longest) + " characters, or some outside ASCII");
    target = trimmed(*text);
  }
  void readGroups() {
    const LibraryElement* groups = take("UnifacVLE");
    if (!groups) return;
    for (const LibraryElement& group : groups->content) {
      const auto subgroup = integer(group, groups->name, "id"), count = integer(group, groups->name, "value");
      if (!subgroup || !count) continue;
      constexpr int kMost = std::numeric_limits<std::int16_t>::max();
      if (*subgroup < 1 || *subgroup > kMost || *count < 1 || *count > kMost)
        fault(group.line, groups->name, "a sub-group or a count is not within 1 to " + std::to_string(kMost));
      else
        compound_.data.unifac.push_back({*subgroup, *count});
    }
  }

  Provenance provenanceOf(const LibraryElement& element, std::string note,
                          tagValueKindEnum kind = eKindNotKnown) const {
    Provenance provenance;
    provenance.origin = kOrigin;
    provenance.kind = kind;
    provenance.note = std::move(note);
    provenance.line = element.line;
    return provenance;
  }

  void readConstant(const ConstantRow& row) {
    const LibraryElement* element = take(row.element);
    if (!element) return;
    std::optional<double> value;
    if (row.key == Key::SLDN) {
      value = number(*element, element->name);
      if (value) *value *= kWaterAt60Fahrenheit;
    } else {
      value = unitOf(row.key) == "-" ? number(*element, element->name) : converted(*element, row.key);
    }
    if (!value) return;
    compound_.data.constants[row.key] = *value;
    compound_.provenance[row.key] = provenanceOf(*element, std::string(row.note));
  }
  std::optional<double> constant(Key key) const {
    const auto found = compound_.data.constants.find(key);
    return found == compound_.data.constants.end() ? std::nullopt : std::optional(found->second);
  }

  // The heat of combustion is that of the compound as it is at the standard temperature, the key's that of its gas.
  void keepCombustionOfGas() {
    if (!constant(Key::IGHC25) || constant(Key::NBP).value_or(kStandard) < kStandard) return;
    compound_.data.constants.erase(Key::IGHC25);
    compound_.provenance.erase(Key::IGHC25);
    leaveOut("HeatOfCombustion", "of a liquid or solid; the key is for the ideal gas");
  }

  std::optional<double> absoluteEntropy() {
    const LibraryElement* element = take("AbsEntropy");
    return element ? converted(*element, Key::IGS) : std::nullopt;
  }

  void readCorrelation(const CorrelationRow& row) {
    const LibraryElement* element = take(row.element);
    if (!element) return;
    if (const auto known = origins_.find(row.key); compound_.data.correlations.contains(row.key))
      return leaveOut(row.element, narrow(nameOf(row.key)) + " comes from " + std::string(known->second));
    std::string note;
    tagValueKindEnum kind = eKindNotKnown;
    auto correlation = correlationOf(*element, row.key, note, kind);
    if (!correlation) return;
    if (row.key == Key::IGH) {
      if (!absoluteEntropy_) return leaveOut(row.element, "there is no AbsEntropy for the entropy constant");
      correlation = enthalpyOf(*correlation, *absoluteEntropy_);
      if (kind == eKindNotKnown) kind = eKindDerived;
      addTo(note, "integral of " + std::string(row.element) +
                      " from 298.15 K; the seventh coefficient is the entropy constant, from AbsEntropy");
    } else if (row.element != firstElementOf(row.key)) {
      addTo(note, "from " + std::string(row.element));
    }
    compound_.data.correlations[row.key] = std::move(*correlation);
    compound_.provenance[row.key] = provenanceOf(*element, std::move(note), kind);
    origins_[row.key] = row.element;
  }
  static std::string_view firstElementOf(Key key) {
    return std::ranges::find(kCorrelations, key, &CorrelationRow::key)->element;
  }
  static void addTo(std::string& note, const std::string& part) { note += (note.empty() ? "" : "; ") + part; }

  // In the unit of the key; for IGH, the heat capacity in the form VELDB1.
  std::optional<Correlation> correlationOf(const LibraryElement& element, Key key, std::string& note,
                                           tagValueKindEnum& valueKind) {
    const LibraryElement* kind = need(element, "eqno");
    const auto equationNumber = kind ? integer(*kind, element.name + ", eqno", "value") : std::nullopt;
    const auto unit = unitIn(element);
    auto given = givenOf(element);
    if (!equationNumber || !unit || !given) return std::nullopt;
    std::string refusal;
    auto correlation = inOtherForm(equationNumber.value_or(0), *given, key, note, valueKind, refusal);
    if (correlation) refusal = convert(*correlation, key == Key::IGH ? Key::IGCP : key, *unit);
    if (refusal.empty()) return correlation;
    leaveOut(element.name, refusal);
    return std::nullopt;
  }

  // In the unit of the library, or nothing and why.
  std::optional<Correlation> inOtherForm(std::int32_t number, LibraryCorrelation& given, Key key, std::string& note,
                                         tagValueKindEnum& valueKind, std::string& refusal) const {
    const auto refuse = [&](const std::string& why) {
      refusal = why;
      return std::nullopt;
    };
    const std::string name = "equation " + std::to_string(number);
    const LibraryEquation* equation = findEquation(number);
    if (!equation) return refuse(name + " is not known");
    given.criticalTemperature = constant(Key::TC);
    if (equation->end) {
      const auto end = equation->end(given);
      if (!end) return refuse(name + " needs the critical temperature");
      if (given.tmax > *end) {
        addTo(note, "Tmax cut from " + exactText(given.tmax) + " K to the end of the equation");
        given.tmax = *end;
      }
    }
    if (given.tmin > given.tmax) return refuse("Tmin is above Tmax");
    const bool isPolynomialWanted = key == Key::IGH;
    if (equation->exact) {
      Correlation exact = equation->exact(given);
      exact.tmin = given.tmin;
      exact.tmax = given.tmax;
      if (isPolynomialWanted && (exact.form != PropCurveVELDB1 || exact.yShape != COMx))
        return refuse(name + " has no integral among the forms");
      return exact;
    }
    const auto policy = kKeys[static_cast<std::size_t>(key)].policy;
    const Curve curve{[&](double T) { return equation->value(given, T); }, given.tmin, given.tmax,
                      policy == eTangentLnYOverInverseT,
                      policy == eTangentToCritical ? given.criticalTemperature : std::nullopt};
    auto refitted = isPolynomialWanted ? refitQuartic(curve) : refit(curve);
    if (!refitted) return refuse(name + " is not positive in its whole range, and has no form of its own");
    if (refitted->deviation > kLargestDeviation)
      return refuse(name + " has no form of its own, and every refit deviates by more than " +
                    percentText(kLargestDeviation));
    valueKind = eKindFitted;
    addTo(note, "refitted from " + std::string(equation->formula) + "; largest deviation " +
                    percentText(refitted->deviation));
    return std::move(refitted->correlation);
  }

  // Returns why it cannot.
  std::string convert(Correlation& correlation, Key key, const std::string& unit) const {
    if (unit != kMolarDensity || unitOf(key) != "kg/m3") return convertCorrelation(key, unit, correlation);
    const auto weight = constant(Key::MW);
    return weight ? scaleCorrelation(key, *weight, 1.0, correlation)
                  : "there is no molecular weight for the conversion";
  }

  std::optional<LibraryCorrelation> givenOf(const LibraryElement& element) {
    LibraryCorrelation given;
    const auto limit = [&](std::string_view name) {
      const LibraryElement* found = need(element, name);
      return found ? number(*found, element.name + ", " + found->name) : std::nullopt;
    };
    const auto tmin = limit("Tmin"), tmax = limit("Tmax");
    bool isGiven = tmin && tmax;
    given.tmin = tmin.value_or(0.0);
    given.tmax = tmax.value_or(0.0);
    for (std::size_t i = 0; i < std::size(kLetters); ++i) {
      const LibraryElement* letter = element.find(kLetters[i]);
      if (!letter) continue;
      const auto value = number(*letter, element.name + ", " + letter->name);
      isGiven = isGiven && value;
      given.coefficients[i] = value.value_or(0.0);
    }
    for (const LibraryElement& item : element.content)
      if (item.name != "eqno" && item.name != "Tmin" && item.name != "Tmax" &&
          std::ranges::find(kLetters, item.name) == std::end(kLetters))
        leaveOut(element.name + ", " + item.name, "not known");
    return isGiven ? std::optional(given) : std::nullopt;
  }
  const LibraryElement* need(const LibraryElement& element, std::string_view name) {
    const LibraryElement* found = element.find(name);
    if (!found) fault(element.line, element.name, "there is no element \"" + std::string(name) + '"');
    return found;
  }

  const std::string file_;
  const ChemsepOptions options_;
  std::vector<Finding>& findings_;
  Source source_;
  std::set<std::int32_t> numbers_;
  std::map<std::pair<std::string, std::string>, LeftOut> leftOut_;

  // Of the compound that is being read.
  Compound compound_;
  std::map<std::string_view, const LibraryElement*> elements_;
  std::optional<double> absoluteEntropy_;
  std::map<Key, std::string_view> origins_;
};

}  // namespace

ChemsepImport importChemsep(const std::filesystem::path& file, const ChemsepOptions& options,
                            std::vector<Finding>& findings) {
  Importer importer(file, options, findings);
  const std::string title = readLibrary(file, [&](const LibraryElement& element) { importer.add(element); });
  return importer.finish(title);
}

}  // namespace qs::bank
