#include "bank/chemsep_equations.h"

#include <algorithm>
#include <iterator>

#include "math/functions.h"

namespace qs::bank {
namespace {

using database::Correlation;
using Given = LibraryCorrelation;

Correlation of(tagEquationShapeEnum form, std::vector<double> coefficients, tagXYShapeEnum yShape = COMx) {
  Correlation correlation;
  correlation.form = form;
  correlation.coefficients = std::move(coefficients);
  correlation.yShape = yShape;
  return correlation;
}

template <tagEquationShapeEnum form, std::size_t count>
Correlation same(const Given& given) {
  return of(form, {given.coefficients.begin(), given.coefficients.begin() + count});
}

template <std::size_t degree>
Correlation polynomial(const Given& given) {
  std::vector<double> coefficients(5);
  for (std::size_t i = 0; i <= degree; ++i) coefficients[i] = given.coefficients[i];
  return of(PropCurveVELDB1, std::move(coefficients));
}

template <bool quadratic>
Correlation logarithmic(const Given& given) {
  const auto& [A, B, C, D, E] = given.coefficients;
  return of(PropCurveVELDB1, {A, B, quadratic ? C : 0.0, 0.0, 0.0}, COMlnx);
}

std::optional<double> critical(const Given& given) { return given.criticalTemperature; }

// The distance from the critical temperature, as a part of it.
double distance(const Given& given, double T) { return 1.0 - T / *given.criticalTemperature; }

constexpr LibraryEquation kEquations[] = {
    {1, "A", nullptr, polynomial<0>, nullptr},
    {2, "A + B T", nullptr, polynomial<1>, nullptr},
    {3, "A + B T + C T^2", nullptr, polynomial<2>, nullptr},
    {4, "A + B T + C T^2 + D T^3", nullptr, polynomial<3>, nullptr},
    {5, "A + B T + C T^2 + D T^3 + E T^4", nullptr, polynomial<4>, nullptr},
    {10, "exp(A - B/(C + T))", nullptr,
     [](const Given& given) {
       const auto& [A, B, C, D, E] = given.coefficients;
       return of(PropCurveVELDB5, {A, -B, C, 0.0, 0.0, 0.0});
     },
     nullptr},
    {12, "exp(A + B T)", nullptr, logarithmic<false>, nullptr},
    {13, "exp(A + B T + C T^2)", nullptr, logarithmic<true>, nullptr},
    {16, "A + exp(B/T + C + D T + E T^2)", nullptr, nullptr,
     [](const Given& given, double T) {
       const auto& [A, B, C, D, E] = given.coefficients;
       return A + math::exp(B / T + C + D * T + E * T * T);
     }},
    {100, "A + B T + C T^2 + D T^3 + E T^4", nullptr, polynomial<4>, nullptr},
    {101, "exp(A + B/T + C ln T + D T^E)", nullptr, same<PropCurveDIPPR101, 5>, nullptr},
    {102, "A T^B/(1 + C/T + D/T^2)", nullptr, same<PropCurveDIPPR102, 4>, nullptr},
    {104, "A + B/T + 1e6 C/T^3 + 1e16 D/T^8 + 1e18 E/T^9", nullptr,
     [](const Given& given) {
       const auto& [A, B, C, D, E] = given.coefficients;
       return of(PropCurveDIPPR104, {A, B, 1e6 * C, 1e16 * D, 1e18 * E});
     },
     nullptr},
    {105, "A/B^(1 + (1 - T/C)^D)", [](const Given& given) { return std::optional(given.coefficients[2]); },
     same<PropCurveVELDB7, 4>, nullptr},
    {106, "A (1 - Tr)^(B + C Tr + D Tr^2 + E Tr^3)", critical,
     [](const Given& given) {
       const auto& [A, B, C, D, E] = given.coefficients;
       return of(PropCurveDIPPR106, {A, B, C, D, E, *given.criticalTemperature});
     },
     nullptr},
    {116, "A + B t^0.35 + C t^(2/3) + D t + E t^(4/3)", critical, nullptr,
     [](const Given& given, double T) {
       const auto& [A, B, C, D, E] = given.coefficients;
       const double t = distance(given, T);
       return A + B * math::pow(t, 0.35) + C * math::pow(t, 2.0 / 3.0) + D * t + E * math::pow(t, 4.0 / 3.0);
     }},
    {120, "A - B/(T + C)", nullptr, nullptr,
     [](const Given& given, double T) {
       const auto& [A, B, C, D, E] = given.coefficients;
       return A - B / (T + C);
     }},
    {121, "A + B/T + C ln T + D T^E", nullptr, same<PropCurveANTO1, 5>, nullptr},
    {200, "E exp((A t + B t^1.5 + C t^2.5 + D t^5)/(1 - t))", critical, nullptr,
     [](const Given& given, double T) {
       const auto& [A, B, C, D, E] = given.coefficients;
       const double t = distance(given, T);
       return E *
              math::exp((A * t + B * math::pow(t, 1.5) + C * math::pow(t, 2.5) + D * math::pow(t, 5.0)) / (1.0 - t));
     }},
};

}  // namespace

const LibraryEquation* findEquation(int number) {
  const auto* found = std::ranges::find(kEquations, number, &LibraryEquation::number);
  return found == std::end(kEquations) ? nullptr : found;
}

}  // namespace qs::bank
