// Evaluates a formula as hosts display it, in long double: letters are variables or, in words, functions; factors may
// stand side by side, "lnX" needs no brackets, and a bracket that is never closed ends with the text.
#pragma once

#include <cmath>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qs::test {

class Formula {
 public:
  using Real = long double;
  using Variables = std::map<char, Real>;

  // Throws std::invalid_argument for a text that is no formula.
  static Real valueOf(std::string_view text, const Variables& variables) {
    Formula formula(text, variables);
    const Real value = formula.sum();
    if (!formula.rest_.empty()) throw std::invalid_argument(formula.rest_);
    return value;
  }

 private:
  Formula(std::string_view text, const Variables& variables) : rest_(text), variables_(variables) {
    std::erase(rest_, ' ');
  }

  bool take(std::string_view token) {
    const bool next = rest_.starts_with(token);
    if (next) rest_.erase(0, token.size());
    return next;
  }

  Real sum() {
    for (Real value = product();;) {
      if (take("+"))
        value += product();
      else if (take("-"))
        value -= product();
      else
        return value;
    }
  }
  Real product() {
    for (Real value = power();;) {
      if (take("/"))
        value /= power();
      else if (take("*") || rest_.find_first_not_of("+-)") == 0)
        value *= power();
      else
        return value;
    }
  }
  Real power() {
    const Real base = primary();
    return take("^") ? std::pow(base, power()) : base;
  }
  Real primary() {
    static constexpr std::pair<std::string_view, Real (*)(Real)> kFunctions[] = {
        {"sinh", std::sinh}, {"cosh", std::cosh},   {"sin", std::sin}, {"cos", std::cos}, {"tan", std::tan},
        {"exp", std::exp},   {"log10", std::log10}, {"log", std::log}, {"ln", std::log}};
    for (const auto& [name, function] : kFunctions)
      if (take(name)) return function(primary());
    if (take("-")) return -power();
    if (take("(")) {
      const Real value = sum();
      take(")");
      return value;
    }
    if (const auto variable = variables_.find(rest_[0]); variable != variables_.end()) {
      rest_.erase(0, 1);
      return variable->second;
    }
    std::size_t length = 0;
    const Real number = std::stold(rest_, &length);
    rest_.erase(0, length);
    return number;
  }

  std::string rest_;
  const Variables& variables_;
};

}  // namespace qs::test
