#include "bank/examination.h"

#include <cmath>
#include <utility>

#include "com/not_set.h"
#include "platform/number_text.h"
#include "props/derivatives.h"
#include "props/evaluation.h"

namespace qs::bank {
namespace {

constexpr double kPressure = kAtmosphere;  // at which properties are evaluated; few depend on it

double known(double value) { return isNumber(value) ? value : kNotKnown; }

// A factor by which values are wrong when a unit is.
constexpr std::pair<double, const char*> kFactors[] = {
    {100.0, "100"},
    {1000.0, "1000"},
    {1e6, "1000000"},
    {4.184, "4.184, for calories"},
    {kGasConstant, "the gas constant, 8.314"},
    {1000.0 * kGasConstant, "1000 times the gas constant, 8314"},
};

// What explains a value that is so many times what it should be; empty where nothing does.
std::string factorText(double ratio) {
  constexpr double kNear = 0.1;
  for (const auto& [factor, name] : kFactors) {
    for (const auto& [quotient, how] : {std::pair(ratio / factor, "too large"), {ratio * factor, "too small"}}) {
      if (std::abs(quotient - 1.0) < kNear) return std::string("; ") + how + " by a factor of " + name + "?";
    }
  }
  return {};
}

std::string comparison(double found, double expected) {
  return numberText(found) + " instead of " + numberText(expected);
}

}  // namespace

Subject::Subject(const Compound& compound) : compound_(compound) {
  for (const Key key : kKeysInOrder) properties_[static_cast<std::size_t>(key)] = propertyOf(compound.data, key);
}

std::optional<Atoms> Subject::atoms() const {
  auto read = atomsOf(data().formula);
  auto* atoms = std::get_if<Atoms>(&read);
  return atoms && !atoms->empty() ? std::optional(std::move(*atoms)) : std::nullopt;
}

double Subject::operator()(Key key) const {
  const auto found = data().constants.find(key);
  return found == data().constants.end() ? kNotKnown : found->second;
}

double Subject::operator()(Key key, double T) const {
  const CQSAbstractProp* property = curve(key);
  if (!property) return (*this)(key);
  double value = kNotKnown;
  LONG dependencies = 0;
  if (const auto valid = range(key); !valid || !valid->has(T)) return kNotKnown;
  property->GetValue(T, kPressure, eNoExtrapolation, &dependencies, &value);
  return known(value);
}

double Subject::slope(Key key, double T) const {
  const CQSAbstractProp* property = curve(key);
  const auto valid = range(key);
  Derivatives result;
  if (!property || !valid || !valid->has(T) || !derivativesOf(*property->equation(), T, kPressure, result))
    return kNotKnown;
  return known(result.first);
}

double Subject::integral(Key key, double from, double to, bool overT) const {
  const CQSAbstractProp* property = curve(key);
  if (!property) return kNotKnown;
  return qs::integral(*property, overT ? Integrand::YOverT : Integrand::Y, from, to, kPressure).value_or(kNotKnown);
}

const CQSAbstractProp* Subject::curve(Key key) const {
  const CQSAbstractProp* property = properties_[static_cast<std::size_t>(key)].get();
  return property && property->equation() ? property : nullptr;
}

std::optional<Range> Subject::range(Key key) const {
  const CQSAbstractProp* property = curve(key);
  if (!property) return std::nullopt;
  const Range range{property->equation()->tMin, property->equation()->tMax};
  if (!std::isfinite(range.low) || !std::isfinite(range.high) || range.low > range.high) return std::nullopt;
  return range;
}

std::optional<Range> Subject::range(Key a, Key b) const {
  const auto first = range(a), second = range(b);
  if (!first || !second) return std::nullopt;
  const Range common{std::max(first->low, second->low), std::min(first->high, second->high)};
  return common.low < common.high ? std::optional(common) : std::nullopt;
}

std::vector<double> Subject::continued(Key key, std::span<const double> temperatures) const {
  const double critical = (*this)(Key::TC);
  std::vector<double> values(temperatures.size());
  evaluate(curve(key), eStatusNotSet, temperatures,
           {.P = kPressure,
            .policy = kKeys[static_cast<std::size_t>(key)].policy,
            .criticalTemperature = std::isnan(critical) ? kEmptyValue : critical,
            .noValue = kNotKnown},
           {.values = values.data()});
  return values;
}

const Subject::Samples& Subject::samples(Key key) const {
  constexpr int kSteps = 100;
  Samples& samples = samples_[static_cast<std::size_t>(key)];
  const auto valid = range(key);
  if (!samples.temperatures.empty() || !valid) return samples;
  for (int i = 0; i < kSteps; ++i) samples.temperatures.push_back(valid->at(i / double{kSteps}));
  samples.temperatures.push_back(valid->high);
  samples.values = continued(key, samples.temperatures);
  return samples;
}

void Findings::add(const Compound& compound, std::string_view field, std::string message) {
  add(compound.line, field, std::move(message));
  list_.back().compound = database::describe(compound.data);
}

void Findings::add(const Compound& compound, Key key, std::string message) {
  add(compound, narrow(nameOf(key)), std::move(message));
  const auto provenance = compound.provenance.find(key);
  if (provenance != compound.provenance.end() && provenance->second.line > 0)
    list_.back().line = provenance->second.line;
}

void Findings::add(int line, std::string_view field, std::string message) {
  Finding& finding = list_.emplace_back();
  finding.rule = rule_.name;
  finding.severity = rule_.severity;
  finding.file = utf8(source_.file);
  finding.line = line;
  finding.field = field;
  finding.message = std::move(message);
}

bool Findings::compare(const Subject& subject, Key key, const std::string& what, double found, double expected,
                       double tolerance) {
  const double ratio = found / expected;
  if (!(std::abs(ratio - 1.0) > tolerance)) return true;
  const double percent = std::round((ratio - 1.0) * 1000.0) / 10.0;
  add(subject.compound(), key,
      comparison(found, expected) + " (" + (percent > 0.0 ? "+" : "") + numberText(percent) + " %) " + what +
          factorText(ratio));
  return false;
}

void Findings::compareDifference(const Subject& subject, Key key, const std::string& what, double found,
                                 double expected, double tolerance) {
  if (std::abs(found - expected) > tolerance)
    add(subject.compound(), key, comparison(found, expected) + ' ' + what + factorText(found / expected));
}

std::string numberText(double value) {
  std::string text;
  appendDouble(text, value);
  return text;
}

std::string atKelvins(double T) { return " at " + numberText(T) + " K"; }

}  // namespace qs::bank
