#include "benchmarks/evaluation.h"

#include <map>
#include <stdexcept>
#include <vector>

#include "benchmarks/compounds.h"
#include "benchmarks/lines.h"
#include "props/evaluator.h"
#include "props/new_property.h"

namespace qs::bench {
namespace {

constexpr double kPressure = 101.325;
constexpr LPCOLESTR kName = OLESTR("TC");
constexpr std::size_t kMany = 100'000, kBatch = 2'048, kOnes = 512, kMost = 1'000'000, kCompounds = 54;

std::vector<double> temperatures, results(kMost), slopes(kMost);
std::vector<LONG> statuses(kMost);

constexpr double kMin = 273.16, kMax = 647.096;

// An equation of water as a compound's property, and by itself.
struct Subject {
  Subject(LONG shape, const std::vector<double>& coefficients)
      : compound(compoundWith(shape, coefficients, kMin, kMax)),
        arrays(ComPtr<ICompoundEvaluationArrays>::from(compound.get())),
        properties(ComPtr<ICompoundProp>::from(compound.get())),
        equation(newEquation(Key::TC, {shape, kMin, kMax, 1e-5, 1e15, coefficients})) {}

  void evaluate(std::size_t count, double* values, double* derivatives, LONG* found) const {
    check(arrays->EvaluateArray(kName, static_cast<LONG>(count), temperatures.data(), kPressure, eAsFormGoesOn, values,
                                derivatives, nullptr, found));
  }

  ComPtr<IBasicCompound> compound;
  ComPtr<ICompoundEvaluationArrays> arrays;
  ComPtr<ICompoundProp> properties;
  PropertyPtr equation;
};

void addOnes(Rounds& rounds, const std::string& name, const Subject& subject) {
  const auto add = [&](const std::string& what, auto call) {
    rounds.add(what + " " + name, kOnes, [=] {
      for (std::size_t i = 0; i < kOnes; ++i) results[i] = call(temperatures[i]);
    });
  };
  const auto property = std::make_shared<Bstr>(WideView(kName));
  add("by name", [&subject, property](double T) {
    LONG dependencies = 0;
    double value = 0.0;
    subject.properties->GetPropertyValue(property->get(), T, kPressure, eNoExtrapolation, &dependencies, &value);
    return value;
  });
  add("with status", [&subject](double T) {
    LONG status = 0;
    double value = 0.0;
    subject.arrays->EvaluateArray(kName, 1, &T, kPressure, eNotSetOutside, &value, nullptr, nullptr, &status);
    if (status != eStatusInside) throw std::runtime_error("a temperature is outside");
    return value;
  });
  add("integral", [&subject](double T) {
    constexpr double kFrom = 280.0;
    double integral = 0.0;
    subject.arrays->IntegrateArray(kName, eIntegralOfY, 1, &kFrom, &T, kPressure, eNotSetOutside, &integral, nullptr);
    return integral;
  });
  const auto values = std::make_shared<std::vector<double>>(kOnes);
  subject.evaluate(kOnes, values->data(), nullptr, nullptr);
  rounds.add("inverse " + name, kOnes, [&subject, values] {
    for (std::size_t i = 0; i < kOnes; ++i)
      subject.arrays->FindTemperatures(kName, 1, &(*values)[i], kPressure, &results[i], nullptr);
  });
  // The curves do not reach it, so that there is nothing to refine.
  rounds.add("scan " + name, kOnes, [&subject] {
    constexpr double kBeyond = 1e300;
    for (std::size_t i = 0; i < kOnes; ++i)
      subject.arrays->FindTemperatures(kName, 1, &kBeyond, kPressure, &results[i], nullptr);
  });
}

// With forms and exponents as often as the bundled compounds' vapour pressures have them.
ComPtr<ICompoundCollection> manyCompounds(std::vector<ComPtr<IBasicCompound>>& compounds) {
  auto list = newObject<ICompoundCollection>(__uuidof(::COQSCompoundCollection));
  for (std::size_t i = 0; i < kCompounds; ++i) {
    const double B = -7258.2 * (1.0 + 0.001 * static_cast<double>(i));
    if (i % 18 == 0)
      compounds.push_back(compoundWith(PropCurveVELDB5, {59.8335, B, 0.0, -7.3037, 4.1653e-6, 2.0}, kMin, kMax));
    else if (i % 18 == 6)
      compounds.push_back(compoundWith(PropCurveDIPPR101, {59.8335, B, -7.3037, 1e-18, 6.0}, kMin, kMax));
    else
      compounds.push_back(
          compoundWith(PropCurveDIPPR101, {59.8335, B, -7.3037, 4.1653e-6, i % 27 == 1 ? 1.0 : 2.0}, kMin, kMax));
    check(list->AddCompound(compounds.back().get()));
  }
  return list;
}

}  // namespace

int measureEvaluation() {
  temperatures.resize(kMost);
  // In an order that no processor could learn: the steps of a golden section.
  for (std::size_t i = 0; i < kMost; ++i) {
    const double part = static_cast<double>(i) * 0.6180339887498949;
    temperatures[i] = 280.0 + 320.0 * (part - static_cast<double>(static_cast<std::size_t>(part)));
  }
  const std::map<std::string, Subject> subjects = [] {
    std::map<std::string, Subject> made;
    made.emplace(std::piecewise_construct, std::tuple("DIPPR101"),
                 std::tuple(PropCurveDIPPR101, std::vector{59.8335, -7258.2, -7.3037, 4.1653e-6, 2.0}));
    made.emplace(std::piecewise_construct, std::tuple("DIPPR106"),
                 std::tuple(PropCurveDIPPR106, std::vector{5.2053e7, 0.3199, -0.212, 0.25795, 0.0, 647.096}));
    made.emplace(std::piecewise_construct, std::tuple("DIPPR107"),
                 std::tuple(PropCurveDIPPR107, std::vector{3.3363, 2.679, 2610.5, 0.8896, 1169.0}));
    made.emplace(std::piecewise_construct, std::tuple("VELDB1"),
                 std::tuple(PropCurveVELDB1, std::vector{27.637, -0.20901, 8.125e-4, -1.4116e-6, 9.3701e-10}));
    return made;
  }();

  Rounds large;
  for (const std::string name : {"DIPPR101", "VELDB1"}) {
    const Subject& subject = subjects.at(name);
    large.add("evaluator " + name, kMany,
              [&] { evaluate(*subject.equation, std::span(temperatures).first(kMany), kPressure, results.data()); });
    large.add("values " + name, kMany, [&] { subject.evaluate(kMany, results.data(), nullptr, nullptr); });
    large.add("statuses " + name, kMany, [&] { subject.evaluate(kMany, results.data(), nullptr, statuses.data()); });
    large.add("most " + name, kMost, [&] { subject.evaluate(kMost, results.data(), nullptr, nullptr); });
    large.add("thousand " + name, 1'000, [&] { subject.evaluate(1'000, results.data(), nullptr, nullptr); });
  }
  large.run(40);

  Rounds rounds;
  for (const auto& each : subjects) {
    const auto& name = each.first;
    const Subject& subject = each.second;
    addOnes(rounds, name, subject);
    rounds.add("batch " + name, kBatch, [&] { subject.evaluate(kBatch, results.data(), nullptr, nullptr); });
    rounds.add("slopes " + name, kBatch, [&] { subject.evaluate(kBatch, results.data(), slopes.data(), nullptr); });
  }
  std::vector<ComPtr<IBasicCompound>> compounds;
  const auto list = manyCompounds(compounds);
  const auto listArrays = ComPtr<ICompoundCollectionEvaluationArrays>::from(list.get());
  constexpr int kCalls = 20;
  rounds.add("compounds in one call", kCalls * kCompounds, [&] {
    for (int call = 0; call < kCalls; ++call)
      check(listArrays->EvaluateCompoundArray(kName, kCompounds, nullptr, 1, temperatures.data(), kPressure,
                                              eNotSetOutside, results.data(), nullptr, nullptr, statuses.data()));
  });
  rounds.add("compounds one by one", kCalls * kCompounds, [&] {
    LONG dependencies = 0;
    for (int call = 0; call < kCalls; ++call)
      for (std::size_t i = 0; i < kCompounds; ++i)
        compounds[i]->get_TC(temperatures[0], kPressure, eNoExtrapolation, &dependencies, &results[i]);
  });
  rounds.run(300);

  RoundLines ofLarge(large), lines(rounds);
  ofLarge.ratio("100,000 values of DIPPR101 / the evaluator alone", "values DIPPR101", "evaluator DIPPR101", 1.05);
  ofLarge.ratio("the same with status / without", "statuses DIPPR101", "values DIPPR101", 1.2);
  ofLarge.ratio("1,000,000 values of DIPPR101 / 1,000", "most DIPPR101", "thousand DIPPR101", 1.3);
  ofLarge.print("1,000,000 values of VELDB1 / 1,000", "most VELDB1", "thousand VELDB1");
  for (const std::string name : {"DIPPR101", "DIPPR106", "DIPPR107"})
    lines.ratio("value and slope of " + name + " / the value", "slopes " + name, "batch " + name, 2.5);
  for (const std::string name : {"DIPPR101", "VELDB1"})
    lines.ratio(name + " with status / GetPropertyValue", "with status " + name, "by name " + name, 1.2);
  const bool wide = supportedBlockFunctions().size() > 1;
  lines.ratio("54 compounds in one call / typed getters", "compounds in one call", "compounds one by one",
              wide ? 0.7 : 1.0);
  for (const std::string name : {"DIPPR107", "VELDB1"})
    lines.ratio("closed integral of " + name + " / one value", "integral " + name, "with status " + name, 6.0);
  lines.print("integral of DIPPR101 by quadrature / one value", "integral DIPPR101", "with status DIPPR101");
  lines.ratio("inverse of DIPPR101 / one value", "inverse DIPPR101", "with status DIPPR101", 40.0);
  lines.ratioLess("the same without the scan / one value", "inverse DIPPR101", "scan DIPPR101", "with status DIPPR101",
                  15.0);
  return ofLarge.shortCount() + lines.shortCount();
}

}  // namespace qs::bench
