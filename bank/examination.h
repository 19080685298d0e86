// What the rules are written with: a compound under examination, and where they report.
#pragma once

#include <array>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "bank/checks.h"
#include "bank/elements.h"
#include "bank/properties.h"

namespace qs::bank {

inline constexpr double kGasConstant = 8.314462618;  // kJ/(kmol K)
inline constexpr double kAtmosphere = 101.325;       // kPa
inline constexpr double kStandardTemperature = 298.15;
inline constexpr double kNotKnown = std::numeric_limits<double>::quiet_NaN();

struct Range {
  double low, high;  // K

  bool has(double T) const { return low <= T && T <= high; }
  double at(double part) const { return low + (high - low) * part; }
};

// A compound with its properties as a database gives them to hosts.
class Subject {
 public:
  explicit Subject(const Compound& compound);

  const Compound& compound() const { return compound_; }
  const database::CompoundData& data() const { return compound_.data; }

  // Of a formula that can be read.
  std::optional<Atoms> atoms() const;

  // Of a single value; kNotKnown where there is none.
  double operator()(Key key) const;
  // Of a single value, or of a correlation within its range; kNotKnown elsewhere.
  double operator()(Key key, double T) const;
  // Of a correlation, per K; kNotKnown as above.
  double slope(Key key, double T) const;
  // Of a correlation between two temperatures within its range, the value or value/T.
  double integral(Key key, double from, double to, bool overT) const;

  // Null where the key has no correlation.
  const CQSAbstractProp* curve(Key key) const;
  // Of a correlation with finite limits in their order.
  std::optional<Range> range(Key key) const;
  // What two correlations have in common.
  std::optional<Range> range(Key a, Key b) const;

  // Of a correlation, beyond its range as hosts are recommended to continue it; kNotKnown where there is no number.
  std::vector<double> continued(Key key, std::span<const double> temperatures) const;

  // The temperatures and values of a correlation at its limits and evenly between.
  struct Samples {
    std::vector<double> temperatures, values;
  };
  const Samples& samples(Key key) const;

 private:
  const Compound& compound_;
  std::array<PropertyPtr, kKeyCount> properties_;
  mutable std::array<Samples, kKeyCount> samples_;
};

// Takes what one rule finds.
class Findings {
 public:
  Findings(const Source& source, const Rule& rule, std::vector<Finding>& list)
      : source_(source), rule_(rule), list_(list) {}

  void add(const Compound& compound, Key key, std::string message);
  // Of a member of the identity.
  void add(const Compound& compound, std::string_view field, std::string message);
  // Of no compound.
  void add(int line, std::string_view field, std::string message);

  // Reports a value, "found instead of expected" and then `what`, that deviates by more than `tolerance`, a part of
  // what it should be, and the factor that explains it, if there is one. Returns whether there is nothing to report, as
  // where either number is not known.
  bool compare(const Subject& subject, Key key, const std::string& what, double found, double expected,
               double tolerance);
  // The same with a tolerance in the unit of the values.
  void compareDifference(const Subject& subject, Key key, const std::string& what, double found, double expected,
                         double tolerance);

 private:
  const Source& source_;
  const Rule& rule_;
  std::vector<Finding>& list_;
};

// With six digits.
std::string numberText(double value);
// " at 378.15 K".
std::string atKelvins(double T);

}  // namespace qs::bank
