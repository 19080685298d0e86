#include "benchmarks/getters.h"

#include <array>
#include <cmath>
#include <random>
#include <stdexcept>
#include <utility>

#include "benchmarks/compounds.h"
#include "benchmarks/empty_objects.h"
#include "benchmarks/lines.h"
#include "com/bstr.h"
#include "hostkit/module_loader.h"
#include "props/evaluator.h"
#include "props/form_functions.h"
#include "props/key_table.h"
#include "props/new_property.h"

namespace qs::bench {
namespace {

constexpr double kPressure = 101.325;
constexpr std::size_t kCount = 2048;
using Numbers = std::array<double, kCount>;

// In K, in no order that a processor could learn.
const Numbers kTemperatures = [] {
  Numbers temperatures;
  std::mt19937 random;
  for (double& temperature : temperatures) temperature = std::uniform_real_distribution(280.0, 600.0)(random);
  return temperatures;
}();
Numbers results;

double square(double x) { return x * x; }

// Equations with coefficients of water, and their formulas, written out independently with the C library's functions
// and the exponent of DIPPR101 multiplied out.
struct Subject {
  std::string name;
  LONG shape;
  std::vector<double> coefficients;
  void (*library)(const double* c);
  void (*own)(const double* c);
  void (*ofLn)(const double* c);  // the exponential of that
};

template <class Function>
void overTemperatures(Function value) {
  for (std::size_t i = 0; i < kCount; ++i) results[i] = value(kTemperatures[i]);
}
template <class Form, std::size_t... i>
void ownLoop(const double* c, std::index_sequence<i...>) {
  overTemperatures([=](double t) { return Form::value(t, c[i]..., 2); });
}
template <class Form, std::size_t... i>
void ownLnLoop(const double* c, std::index_sequence<i...>) {
  overTemperatures([=](double t) { return math::exp(Form::value(t, c[i]..., 2)); });
}
template <class Form>
struct Own {
  using Coefficients = std::make_index_sequence<Form::kCoefficients>;
  static void value(const double* c) { ownLoop<Form>(c, Coefficients()); }
  static void ofLn(const double* c) { ownLnLoop<Form>(c, Coefficients()); }
};

const Subject kSubjects[] = {
    {"DIPPR101",
     PropCurveDIPPR101,
     {59.8335, -7258.2, -7.3037, 4.1653e-6, 2.0},
     [](const double* c) {
       overTemperatures([=](double t) { return std::exp(c[0] + c[1] / t + c[2] * std::log(t) + c[3] * t * t); });
     },
     Own<form::DIPPR101>::value,
     Own<form::DIPPR101>::ofLn},
    {"DIPPR106",
     PropCurveDIPPR106,
     {5.2053e7, 0.3199, -0.212, 0.25795, 0.0, 647.096},
     [](const double* c) {
       overTemperatures([=](double t) {
         const double x = t / c[5];
         return c[0] * std::pow(1.0 - x, c[1] + x * (c[2] + x * (c[3] + x * c[4])));
       });
     },
     Own<form::DIPPR106>::value,
     Own<form::DIPPR106>::ofLn},
    {"DIPPR107",
     PropCurveDIPPR107,
     {3.3363, 2.679, 2610.5, 0.8896, 1169.0},
     [](const double* c) {
       overTemperatures([=](double t) {
         return c[0] + c[1] * square(c[2] / (t * std::sinh(c[2] / t))) +
                c[3] * square(c[4] / (t * std::cosh(c[4] / t)));
       });
     },
     Own<form::DIPPR107>::value,
     Own<form::DIPPR107>::ofLn},
    {"VELDB1",
     PropCurveVELDB1,
     {27.637, -0.20901, 8.125e-4, -1.4116e-6, 9.3701e-10},
     [](const double* c) {
       overTemperatures([=](double t) {
         const double t2 = t * t;
         return c[0] + c[1] * t + c[2] * t2 + c[3] * t2 * t + c[4] * t2 * t2;
       });
     },
     Own<form::VELDB1>::value,
     Own<form::VELDB1>::ofLn},
};

// Any typed getter serves: all are one call of the virtual table with the same arguments.
void getterLoop(IBasicCompound* compound) {
  overTemperatures([=](double t) {
    LONG dependencies = 0;
    double value = 0.0;
    compound->get_TC(t, kPressure, eNoExtrapolation, &dependencies, &value);
    return value;
  });
}

void byNameLoop(ICompoundProp* compound) {
  const Bstr name(OLESTR("TC"));
  overTemperatures([&](double t) {
    LONG dependencies = 0;
    double value = 0.0;
    compound->GetPropertyValue(name.get(), t, kPressure, eNoExtrapolation, &dependencies, &value);
    return value;
  });
}

// A position among the names of fixed properties.
void nameLoop(ICompoundProp* compound, INT index) {
  for (std::size_t i = 0; i < kCount; ++i) {
    Bstr name;
    tagPropTypeEnum type{};
    compound->GetPropertyName(1, index, name.out(), &type);
  }
}

ComPtr<IBasicCompound> compoundWith(const Subject& subject, LONG yShape = COMx) {
  auto compound = bench::compoundWith(subject.shape, subject.coefficients, 1.0, 2000.0);
  const Bstr name(OLESTR("TC"));
  ComPtr<ICompEqnXYShape>::from(compound.get())
      ->SetEquationPropertyXYShape(name.get(), COMx, static_cast<tagXYShapeEnum>(yShape), 1.0, 1.0, 1.0, 1.0, -32767.0,
                                   -32767.0);
  return compound;
}

// Adds the loops of a form, after a check that all give the same values, and of the getter whose logarithm it is.
void addSubject(Rounds& rounds, const Subject& subject) {
  const auto compound = compoundWith(subject), lnY = compoundWith(subject, COMlnx);
  const std::shared_ptr<const CQSAbstractProp> property =
      newEquation(Key::TC, {subject.shape, 1.0, 2000.0, 1e-5, 1e15, subject.coefficients});
  const double* coefficients = subject.coefficients.data();
  rounds.add("library " + subject.name, kCount, [=] { subject.library(coefficients); });
  rounds.add("own " + subject.name, kCount, [=] { subject.own(coefficients); });
  rounds.add("get " + subject.name, kCount, [=] { getterLoop(compound.get()); });
  for (const BlockFunctions* functions : supportedBlockFunctions())
    rounds.add(functions->instructionSet + (" " + subject.name), kCount,
               [=] { evaluate(*property, kTemperatures, kPressure, results.data(), *functions); });

  subject.library(coefficients);
  const Numbers expected = results;
  const auto compare = [&](const std::string& name) {
    for (std::size_t i = 0; i < kCount; ++i)
      if (!(std::abs(results[i] - expected[i]) <= 1e-12 * std::abs(expected[i])))
        throw std::runtime_error(name + " does not give the values of " + subject.name);
    results.fill(0.0);
  };
  subject.own(coefficients);
  compare("the formula in the program's own functions");
  getterLoop(compound.get());
  compare("the getter");
  for (const BlockFunctions* functions : supportedBlockFunctions()) {
    evaluate(*property, kTemperatures, kPressure, results.data(), *functions);
    compare("the evaluator");
  }

  rounds.add("own lnY " + subject.name, kCount, [=] { subject.ofLn(coefficients); });
  rounds.add("get lnY " + subject.name, kCount, [=] { getterLoop(lnY.get()); });
}

}  // namespace

int measureGetters(std::span<const GetterBound> bounds) {
  Rounds rounds;
  for (const Subject& subject : kSubjects) addSubject(rounds, subject);
  const auto named = ComPtr<ICompoundProp>::from(compoundWith(kSubjects[0]).get());
  rounds.add("by name", kCount, [&] { byNameLoop(named.get()); });
  rounds.add("first name", kCount, [&] { nameLoop(named.get(), 0); });
  rounds.add("last name", kCount, [&] { nameLoop(named.get(), static_cast<INT>(kKeyCount) - 1); });
  const auto point = newObject<IBasicCompound>(__uuidof(::COQSCompound));
  ComPtr<ICompoundPropPut>::from(point.get())->SetPointProperty(Bstr(OLESTR("TC")).get(), 1, 647.096);
  rounds.add("point", kCount, [&] { getterLoop(point.get()); });
  rounds.add("empty call", kCount, [] { getterLoop(emptyCompound()); });
  rounds.run(1000);

  RoundLines lines(rounds);
  lines.excess("getter of a point property, over an empty call", "point", 1.0, "empty call", 3.0);
  for (const std::string name : {"DIPPR101", "DIPPR106", "DIPPR107", "VELDB1"}) {
    lines.excess("getter of " + name + ", over 1.25 x inline", "get " + name, 1.25, "own " + name, 5.0,
                 "library " + name);
    lines.excess("getter of " + name + " as lnY, over 1.25 x inline", "get lnY " + name, 1.25, "own lnY " + name, 8.0);
  }
  for (const auto& [name, bound] : bounds)
    lines.ratio("getter of " + name + " / the C library's loop", "get " + name, "library " + name, bound);
  const struct {
    std::string instructionSet;
    double ofLibrary, ofGetter;
  } blockBounds[] = {{"SSE2", 1.05, 0.7}, {"AVX2", 0.6, 0.4}, {"AVX512", 0.27, 0.2}};
  for (const auto& [instructionSet, ofLibrary, ofGetter] : blockBounds)
    for (const std::string name : {"DIPPR101", "DIPPR106", "DIPPR107"}) {
      const std::string title = "evaluator of " + name + ", " + instructionSet;
      lines.ratio(title + " / C library's loop", instructionSet + " " + name, "library " + name, ofLibrary);
      lines.ratio(title + " / getter's loop", instructionSet + " " + name, "get " + name, ofGetter);
    }
  lines.excess("getter of DIPPR101 by name, over its own getter", "by name", 1.0, "get DIPPR101", 20.0);
  lines.ratio("last name of a fixed property / the first", "last name", "first name", 1.25);
  return lines.shortCount();
}

}  // namespace qs::bench
