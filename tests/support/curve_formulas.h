// Values of forms and transformations in long double, from the formulas that hosts see and not from the functions under
// test.
#pragma once

#include <sstream>
#include <vector>

#include "props/forms.h"
#include "tests/support/formula.h"
#include "tests/support/properties.h"

namespace qs::test {

using Real = Formula::Real;

// Forms that compute something else than they display, because the stored data were fitted so.
inline const std::map<LONG, std::string> kComputed = {
    {PropCurveVELDB10, "B*ln(X) + 2*C*X + 1.5*D*X^2 + 1.33333333333*E*X^3 + 1.25*F*X^4 + G"},
    {PropCurveDIPPR115, "A + B/X + C*ln(X) + D*X^2 + E/X^2"},
    {PropCurveDIPPR116, "A + B*X^0.35 + C*X^(2/3) + D*X + E*X^(4/3)"},
    {PropCurveQUOT1, "A*B^(C + D/X + E/X^2)"},
};

inline Real valueOfForm(const EquationForm& form, const std::vector<double>& coefficients, Real x) {
  Formula::Variables variables{{'X', x}, {'R', 8.314}, {'e', std::exp(Real(1))}};
  for (std::size_t i = 0; i < coefficients.size(); ++i) variables[static_cast<char>('A' + i)] = coefficients[i];
  if (const auto computed = kComputed.find(form.shape); computed != kComputed.end())
    return Formula::valueOf(computed->second, variables);
  const std::string formula = narrow(form.formula);
  const Real right = Formula::valueOf(formula.substr(formula.find('=') + 1), variables);
  return formula.starts_with("lnY") ? std::exp(right) : right;
}

// Coefficients in the domain of every form.
inline std::vector<double> coefficientsFor(const EquationForm& form) {
  std::vector<double> coefficients{1.75, 0.6, 1.25, 0.8, 0.02, 1.5, 3.0};
  coefficients.resize(static_cast<std::size_t>(form.coefficients));
  return coefficients;
}

// The transformations of X by number, empty where a number is none: with the norm N, the pressure P, and the constants
// A and B.
inline std::map<LONG, std::string> transformationFormulas() {
  std::istringstream formulas(
      "X X/N 1-X/N log10(X) log10(X/N) log10(1-X/N) ln(X) ln(X/N) ln(1-X/N) exp(X) exp(X/N) exp(1-X/N) sin(X) cos(X) "
      "tan(X) sin(X/N) cos(X/N) tan(X/N) sin(1-X/N) cos(1-X/N) tan(1-X/N) 1-X X-1 X/N-1 (1-X/N)^(1/3) (A-B)/(X-B)-1 "
      "ln(XN) X/(X+N) XN N^0.5/X - - - X/P XP ln(XP)");
  std::map<LONG, std::string> result;
  LONG shape = COMx;
  for (std::string formula; formulas >> formula; ++shape)
    if (formula != "-") result[shape] = formula;
  return result;
}

constexpr double kNorm = 0.9;
constexpr double kPressure = 2.5;
constexpr double kA = 3.0;
constexpr double kB = 1.25;

inline Real transformed(const std::string& formula, Real x) {
  return Formula::valueOf(formula, {{'X', x}, {'N', kNorm}, {'P', kPressure}, {'A', kA}, {'B', kB}});
}

// An equation with those constants.
inline std::unique_ptr<CQSAbstractProp> curveOf(LONG shape, const std::vector<double>& coefficients) {
  auto curve = equation(shape);
  curve->SetParameters(coefficients.data(), static_cast<LONG>(coefficients.size()));
  curve->SetXYNorm(kNorm, kNorm);
  curve->SetAB(kA, kB);
  return curve;
}

}  // namespace qs::test
