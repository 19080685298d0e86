// The names that sources and reports have for enumerated values.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include "bank/source.h"
#include "props/forms.h"

namespace qs::bank {

template <class T>
struct Named {
  std::string_view name;
  T value;
};

inline constexpr Named<tagCompoundFamilyEnum> kFamilies[] = {
    {"Hydrocarbon", eHydrocarbon},
    {"Solid", eSolid},
    {"Miscellaneous", eMiscellaneous},
    {"Amine", eAmine},
    {"Alcohol", eAlcohol},
    {"Ketone", eKetone},
    {"Aldehyde", eAldehyde},
    {"Ester", eEster},
    {"CarboxylicAcid", eCarboxylicAcid},
    {"Halogen", eHalogen},
    {"Nitrile", eNitrile},
    {"Phenol", ePhenol},
    {"Ether", eEther},
    {"Polymer", ePolymer},
};

// The members of a compound that identify it.
inline constexpr auto kIdentityMembers = std::to_array<std::string_view>({
    "number",
#define BANK_FIELD(key, field, record_name, member) member,
#include "props/identity.def"
    "synonyms",
    "unifac",
});

inline constexpr Named<tagValueKindEnum> kKinds[] = {
    {"measured", eKindMeasured}, {"fitted", eKindFitted},   {"estimated", eKindEstimated},
    {"derived", eKindDerived},   {"decided", eKindDecided},
};

inline constexpr Named<tagValueQualityEnum> kQualities[] = {
    {"good", eQualityGood},
    {"usable", eQualityUsable},
    {"doubtful", eQualityDoubtful},
};

inline constexpr auto kTransformations = [] {
  constexpr std::string_view kByNumber[] = {
      "COMx",    "COMxr",       "COM1mxr",    "COMlogx",         "COMlogxr",   "COMlog1mxr", "COMlnx",
      "COMlnxr", "COMln1mxr",   "COMexpx",    "COMexpxr",        "COMexp1mxr", "COMsinx",    "COMcosx",
      "COMtanx", "COMsinxr",    "COMcosxr",   "COMtanxr",        "COMsin1mxr", "COMcos1mxr", "COMtan1mxr",
      "COM1mx",  "COMxm1",      "COMxrm1",    "COMcuberoot1mxr", "COMxppdsm1", "COMlnxxo",   "COMxscale",
      "COMxxo",  "COMrootxodx", "COMscalexy", "COMydx",          "COMrootxdy", "COMxdp",     "COMxp",
      "COMlnxp",
  };
  static_assert(std::size(kByNumber) == COMlnxp);
  std::array<Named<tagXYShapeEnum>, std::size(kByNumber)> table{};
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = {kByNumber[i], static_cast<tagXYShapeEnum>(i + COMx)};
  return table;
}();

// The forms without their PropCurve, in the order of their numbers.
inline constexpr Named<tagEquationShapeEnum> kForms[] = {
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) {#name, PropCurve##name},
#include "props/forms.def"
};

// The value of a name; null when there is none.
template <class Table>
constexpr auto valueOf(const Table& table, std::string_view name) -> decltype(&std::begin(table)->value) {
  for (const auto& entry : table)
    if (entry.name == name) return &entry.value;
  return nullptr;
}

// The name of a value; empty when it has none.
template <class Table, class T>
constexpr std::string_view nameOf(const Table& table, T value) {
  for (const auto& entry : table)
    if (entry.value == value) return entry.name;
  return {};
}

// With the letters A to Z in lower case.
std::string lower(std::string_view text);

// The unit of the key table.
std::string unitOf(Key key);

// The shortest text from which the same number is read.
std::string exactText(double number);

// A text without the blanks, tabs and line ends around it.
std::string_view trimmed(std::string_view text);

// The name that is nearest to a mistyped one, by the number of characters to change, as "; did you mean "..."?"; empty
// where none is near.
std::string suggestion(std::string_view mistyped, const std::vector<std::string_view>& names);

// What messages say of a name that is no property key.
std::string unknownKeyText(const std::string& name);

template <class Table>
std::string suggestionFrom(const Table& table, std::string_view mistyped) {
  std::vector<std::string_view> names;
  for (const auto& entry : table) names.push_back(entry.name);
  return suggestion(mistyped, names);
}

}  // namespace qs::bank
