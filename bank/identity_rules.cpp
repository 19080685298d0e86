// What compounds are called, what they consist of, and what occurs twice.
#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "bank/elements.h"
#include "bank/rules.h"

namespace qs::bank {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The first compound with each text, as texts of further ones come.
class FirstUses {
 public:
  // Another compound's or an earlier use of the text; null for the first.
  const Compound* earlier(std::string text, const Compound& compound) {
    const auto [place, isNew] = uses_.try_emplace(std::move(text), &compound);
    return isNew ? nullptr : place->second;
  }

 private:
  std::unordered_map<std::string, const Compound*> uses_;
};

std::string lower(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

std::string place(const Compound& compound) {
  return database::describe(compound.data) + (compound.line > 0 ? ", line " + std::to_string(compound.line) : "");
}

// Why a database cannot hold a compound, as "compound 7 (Name), VP: what is wrong"; empty where it can.
std::string refusal(const database::CompoundData& compound) try {
  database::encodeDatabase({&compound, 1});
  return {};
} catch (const std::invalid_argument& error) {
  return error.what();
}

// The member of sources for a field of the data record.
std::string memberOf(const std::string& field) {
  static constexpr std::pair<std::string_view, std::string_view> kMembers[] = {
#define BANK_FIELD(key, field, record_name, member) {record_name, member},
#include "props/identity.def"
  };
  for (const auto& [recordName, member] : kMembers)
    if (recordName == field) return std::string(member);
  return field;
}

}  // namespace

void storableCompound(const Subject& subject, Findings& findings) {
  const std::string reason = refusal(subject.data());
  if (reason.empty()) return;
  const std::size_t start = database::describe(subject.data()).size() + 2;
  const std::size_t colon = reason.find(": ", start);
  if (colon == std::string::npos) return findings.add(subject.compound(), "", reason);
  const std::string field = reason.substr(start, colon - start), message = reason.substr(colon + 2);
  if (const auto key = findKey(widen(field)))
    findings.add(subject.compound(), *key, message);
  else
    findings.add(subject.compound(), memberOf(field), message);
}

void storableBank(const Source& source, Findings& findings) {
  std::unordered_map<std::int32_t, const Compound*> numbers;
  for (const Compound& compound : source.compounds) {
    const auto [first, isNew] = numbers.try_emplace(compound.data.number, &compound);
    if (!isNew) findings.add(compound, "number", "also that of " + place(*first->second));
  }
  // Under a key all compounds have single values or all have correlations.
  std::map<Key, const Compound*> constants;
  for (const Compound& compound : source.compounds)
    for (const auto& [key, value] : compound.data.constants) constants.try_emplace(key, &compound);
  for (const Compound& compound : source.compounds)
    for (const auto& [key, other] : constants)
      if (other != &compound && database::correlationOf(compound.data, key))
        findings.add(compound, key, "a correlation, but a single value in " + place(*other));
}

void casCheckDigit(const Subject& subject, Findings& findings) {
  const std::string& cas = subject.data().cas;
  if (cas.empty()) return;
  const std::size_t size = cas.size();
  // Two to seven digits, two digits and the check digit.
  bool isWellFormed = size >= 7 && size <= 12;
  int sum = 0, weight = 0;
  for (std::size_t i = 0; i < size && isWellFormed; ++i) {
    const char c = cas[size - 1 - i];
    const bool isHyphen = i == 1 || i == 4;
    isWellFormed = isHyphen ? c == '-' : isDigit(c);
    if (!isHyphen) sum += weight++ * (c - '0');
  }
  if (!isWellFormed)
    findings.add(subject.compound(), "cas", "\"" + cas + "\" is not of the form of 7732-18-5");
  else if (sum % 10 != cas.back() - '0')
    findings.add(subject.compound(), "cas", "the check digit of " + cas + " is not " + std::to_string(sum % 10));
}

void formula(const Subject& subject, Findings& findings) {
  const std::string& text = subject.data().formula;
  const auto read = atomsOf(text);
  if (const auto* fault = std::get_if<FormulaFault>(&read))
    findings.add(subject.compound(), "formula",
                 "\"" + text + "\": " + fault->reason + " at \"" + std::string(fault->rest) + '"');
}

void molecularWeight(const Subject& subject, Findings& findings) {
  constexpr double kTolerance = 0.0005;
  const auto atoms = subject.atoms();
  if (!atoms) return;
  double weight = 0.0;
  for (const auto& [element, count] : *atoms) weight += count * element->weight;
  findings.compare(subject, Key::MW, "from " + subject.data().formula, subject(Key::MW), weight, kTolerance);
}

void sameCas(const Source& source, Findings& findings) {
  FirstUses uses;
  for (const Compound& compound : source.compounds) {
    if (compound.data.cas.empty()) continue;
    if (const Compound* first = uses.earlier(compound.data.cas, compound))
      findings.add(compound, "cas", compound.data.cas + " is also that of " + place(*first));
  }
}

void sameName(const Source& source, Findings& findings) {
  FirstUses uses;
  for (const Compound& compound : source.compounds) {
    const auto use = [&](std::string_view field, const std::string& name, bool mayRepeat) {
      if (name.empty()) return;
      const Compound* first = uses.earlier(lower(name), compound);
      if (first && (first != &compound || !mayRepeat))
        findings.add(compound, field,
                     '"' + name + "\" is " + (first == &compound ? "there twice" : "also a name of " + place(*first)));
    };
    use("name", compound.data.name, false);
    for (const std::string& synonym : compound.data.synonyms) use("synonyms", synonym, false);
    use("iupac_name", compound.data.iupacName, true);
  }
}

void sameCoefficients(const Source& source, Findings& findings) {
  FirstUses uses;
  for (const Compound& compound : source.compounds) {
    for (const auto& [key, correlation] : compound.data.correlations) {
      // What has fewer numbers may agree by chance.
      constexpr std::ptrdiff_t kFewest = 2;
      if (std::ranges::count_if(correlation.coefficients, [](double c) { return c != 0.0; }) < kFewest) continue;
      std::string content{static_cast<char>(key), static_cast<char>(correlation.form)};
      for (const double coefficient : correlation.coefficients)
        content.append(reinterpret_cast<const char*>(&coefficient), sizeof coefficient);
      if (const Compound* first = uses.earlier(std::move(content), compound))
        findings.add(compound, key, "the coefficients of " + place(*first));
    }
  }
}

}  // namespace qs::bank
