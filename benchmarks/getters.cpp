#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <random>
#include <stdexcept>
#include <string>

#include "benchmarks/bench.h"
#include "benchmarks/empty_objects.h"
#include "com/bstr.h"
#include "hostkit/module_loader.h"

namespace qs::bench {
namespace {

constexpr double kPressure = 101.325;

// In K, in no order that a processor could learn.
const auto kTemperatures = [] {
  std::array<double, 1024> temperatures;
  std::mt19937 random;
  for (double& temperature : temperatures) temperature = std::uniform_real_distribution(280.0, 600.0)(random);
  return temperatures;
}();

// Both sides of each comparison run in this loop.
template <class Function>
void runOverTemperatures(benchmark::State& state, Function value) {
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(value(kTemperatures[i++ % kTemperatures.size()]));
}

// Any typed getter serves: all are one call of the virtual table with the same arguments.
double getTC(IBasicCompound* compound, double temperature) {
  LONG dependencies = 0;
  double value = 0.0;
  compound->get_TC(temperature, kPressure, eNoExtrapolation, &dependencies, &value);
  return value;
}

void addGetter(const std::string& name, const ComPtr<IBasicCompound>& compound) {
  benchmark::RegisterBenchmark(name.c_str(), [compound](benchmark::State& state) {
    runOverTemperatures(state, [object = compound.get()](double temperature) { return getTC(object, temperature); });
  });
}

using Coefficients = std::array<double, 5>;

// A form of equation, written out independently, with coefficients of water whose values are near 1: a saturation
// pressure in MPa, and heat capacities of the ideal gas and of the liquid in 10 J/(mol K).
struct DIPPR101 {
  static constexpr auto kName = "DIPPR101";
  static constexpr auto kShape = PropCurveDIPPR101;
  static constexpr Coefficients kCoefficients = {59.8335, -7258.2, -7.3037, 4.1653e-6, 2.0};
  static double value(const Coefficients& c, double t) {
    return std::exp(c[0] + c[1] / t + c[2] * std::log(t) + c[3] * std::pow(t, c[4]));
  }
};
struct DIPPR107 {
  static constexpr auto kName = "DIPPR107";
  static constexpr auto kShape = PropCurveDIPPR107;
  static constexpr Coefficients kCoefficients = {3.3363, 2.679, 2610.5, 0.8896, 1169.0};
  static double value(const Coefficients& c, double t) {
    const double a = c[2] / (t * std::sinh(c[2] / t));
    const double b = c[4] / (t * std::cosh(c[4] / t));
    return c[0] + c[1] * a * a + c[3] * b * b;
  }
};
struct VELDB1 {
  static constexpr auto kName = "VELDB1";
  static constexpr auto kShape = PropCurveVELDB1;
  static constexpr Coefficients kCoefficients = {27.637, -0.20901, 8.125e-4, -1.4116e-6, 9.3701e-10};
  static double value(const Coefficients& c, double t) {
    const double t2 = t * t;
    return c[0] + c[1] * t + c[2] * t2 + c[3] * t2 * t + c[4] * t2 * t2;
  }
};

ComPtr<IBasicCompound> compoundWith(tagEquationShapeEnum shape, const Coefficients& coefficients,
                                    tagXYShapeEnum yShape) {
  const auto parameters = host::createInstance<IRealArrayDisp>(__uuidof(::HostRealArray));
  if (!parameters) throw std::runtime_error("the class RealArray cannot be created");
  parameters->put_Size(static_cast<LONG>(coefficients.size()));
  for (std::size_t i = 0; i < coefficients.size(); ++i) {
    parameters->put_IthValue(static_cast<LONG>(i), coefficients[i]);
  }
  auto compound = newCompound();
  const Bstr name(OLESTR("TC"));
  ComPtr<ICompoundPropPut>::from(compound.get())
      ->SetEquationProperty(name.get(), 1, shape, 1.0, 2000.0, 1e-5, 1e15, parameters.get());
  ComPtr<ICompEqnXYShape>::from(compound.get())
      ->SetEquationPropertyXYShape(name.get(), COMx, yShape, 1.0, 1.0, 1.0, 1.0, -32767.0, -32767.0);
  return compound;
}

// Registers a getter beside its formula, after a check that they are the same function.
template <class Function>
void addPair(const std::string& kind, const ComPtr<IBasicCompound>& compound, const Coefficients& coefficients,
             Function formula) {
  for (const double temperature : kTemperatures) {
    const double expected = formula(coefficients, temperature);
    if (!(std::abs(getTC(compound.get(), temperature) - expected) <= 1e-12 * std::abs(expected)))
      throw std::runtime_error(kind + ": the getter does not give the value of the formula");
  }
  addGetter("get/" + kind, compound);
  benchmark::RegisterBenchmark(("inline/" + kind).c_str(), [coefficients, formula](benchmark::State& state) {
    Coefficients unknown = coefficients;
    benchmark::DoNotOptimize(unknown);  // from here on they are no constants to the compiler
    runOverTemperatures(state, [&](double temperature) { return formula(unknown, temperature); });
  });
}

// The value of a correlation under its name, beside its getter.
void addByName(const std::string& kind, const ComPtr<IBasicCompound>& compound) {
  const auto properties = ComPtr<ICompoundProp>::from(compound.get());
  benchmark::RegisterBenchmark(("get by name/" + kind).c_str(), [properties](benchmark::State& state) {
    const Bstr name(OLESTR("TC"));
    runOverTemperatures(state, [&](double temperature) {
      LONG dependencies = 0;
      double value = 0.0;
      properties->GetPropertyValue(name.get(), temperature, kPressure, eNoExtrapolation, &dependencies, &value);
      return value;
    });
  });
}

void addName(const std::string& title, const ComPtr<IBasicCompound>& compound, INT index) {
  const auto properties = ComPtr<ICompoundProp>::from(compound.get());
  benchmark::RegisterBenchmark(title.c_str(), [properties, index](benchmark::State& state) {
    for (auto _ : state) {
      Bstr name;
      tagPropTypeEnum type{};
      benchmark::DoNotOptimize(properties->GetPropertyName(1, index, name.out(), &type));
    }
  });
}

template <class Form>
void addForm() {
  const std::string name = Form::kName;
  addPair(name, compoundWith(Form::kShape, Form::kCoefficients, COMx), Form::kCoefficients,
          [](const Coefficients& c, double t) { return Form::value(c, t); });
  addPair(name + " of lnY", compoundWith(Form::kShape, Form::kCoefficients, COMlnx), Form::kCoefficients,
          [](const Coefficients& c, double t) { return std::exp(Form::value(c, t)); });
}

}  // namespace

void addGetters() {
  addGetter("empty call", ComPtr<IBasicCompound>(emptyCompound()));
  const auto point = newCompound();
  ComPtr<ICompoundPropPut>::from(point.get())->SetPointProperty(Bstr(OLESTR("TC")).get(), 1, 647.096);
  if (getTC(point.get(), 300.0) != 647.096) throw std::runtime_error("a point property does not keep its value");
  addGetter("get/point", point);
  addForm<DIPPR101>();
  addByName("DIPPR101", compoundWith(DIPPR101::kShape, DIPPR101::kCoefficients, COMx));
  addName("first name", newCompound(), 0);
  addName("last name", newCompound(), 104);
  addForm<DIPPR107>();
  addForm<VELDB1>();
}

}  // namespace qs::bench
