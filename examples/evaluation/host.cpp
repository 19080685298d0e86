// Evaluation in C++: vapour pressures from below to above the range of their data, each with its status; a boiling
// point as an inverse; and heats of vaporisation against the slope of the vapour pressure, by Clapeyron's equation.
//   evaluation DATABASE-DIRECTORY
//   evaluation DATABASE-DIRECTORY COMPOUND PROPERTY FROM TO      a property between two temperatures, by every policy
// Installed classes are used; without an installation the modules beside the program are.
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace {

using qs::Bstr;
using qs::ComPtr;

constexpr double kPressure = 101.325;      // kPa; none of these properties depends on it
constexpr double kGas = 8.31446261815324;  // kJ/(kmol K)
constexpr double kNoNumber = -32767.0;

void must(HRESULT result, const char* what) {
  if (FAILED(result)) throw std::runtime_error(std::string(what) + " failed");
}

std::string rounded(double value, int digits) {
  const double unit = std::pow(10, digits);
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), std::floor(value * unit + 0.5) / unit);
  return {text.data(), end.ptr};
}

// Six significant digits.
std::string text(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}

double numberOf(const std::string& text) {
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc())
    throw std::runtime_error(text + " is not a number");
  return value;
}

std::string column(const std::string& text) {
  constexpr std::size_t kWidth = 12;
  return std::string(text.size() < kWidth ? kWidth - text.size() : 0, ' ') + text;
}

std::string statusText(LONG status) {
  struct {
    LONG bit;
    const char* name;
  } constexpr kNames[] = {{eStatusInside, "inside"},
                          {eStatusBelow, "below"},
                          {eStatusAbove, "above"},
                          {eStatusByPolicy, "by policy"},
                          {eStatusNoConvergence, "not found"}};
  std::string text;
  for (const auto& [bit, name] : kNames)
    if (status & bit) text += (text.empty() ? "" : ", ") + std::string(name);
  return text;
}

ComPtr<IBasicCompound> newCompound() {
  static std::unique_ptr<qs::host::LoadedModule> module;
  auto compound = qs::host::createInstance<IBasicCompound>(__uuidof(COQSCompound));
  if (!compound && !module) {
    module = std::make_unique<qs::host::LoadedModule>("qscontainers");
    module->registerClass(__uuidof(COQSCompound));
    compound = qs::host::createInstance<IBasicCompound>(__uuidof(COQSCompound));
  }
  if (!compound) throw std::runtime_error("the class COQSCompound cannot be created");
  return compound;
}

// A compound of the database and its properties.
class Compound {
 public:
  Compound(const std::string& directory, INT number) {
    const auto compound = newCompound();
    if (ComPtr<ICompoundInitFromVelDB>::from(compound.get())->Init(Bstr(qs::widen(directory)).get(), number) != S_OK)
      throw std::runtime_error("compound " + std::to_string(number) + " cannot be read from " + directory);
    must(ComPtr<ICompoundID>::from(compound.get())->get_Name(name_.out()), "Name");
    scripts_ = ComPtr<ICompoundEvaluation>::from(compound.get());
    arrays_ = ComPtr<ICompoundEvaluationArrays>::from(compound.get());
  }

  std::string name() const { return qs::narrow(name_.view()); }

  struct Number {
    double value = 0;
    double slope = 0;
    LONG status = 0;
  };
  Number at(const OLECHAR* property, double temperature) const {
    Number number;
    must(arrays_->EvaluateArray(property, 1, &temperature, kPressure, eRecommended, &number.value, &number.slope,
                                nullptr, &number.status),
         "EvaluateArray");
    return number;
  }

  void printVapourPressures() const {
    double tMin = 0, tMax = 0, pMin = 0, pMax = 0;
    must(scripts_->GetRange(Bstr(OLESTR("VP")).get(), &tMin, &tMax, &pMin, &pMax), "GetRange");
    constexpr std::array kTemperatures{240.0, 255.0, 263.15, 298.15, 373.15, 500.0, 647.14, 700.0, 900.0};
    constexpr LONG kCount = std::size(kTemperatures);
    std::array<double, kCount> pressures;
    std::array<LONG, kCount> statuses;
    must(arrays_->EvaluateArray(OLESTR("VP"), kCount, kTemperatures.data(), kPressure, eRecommended, pressures.data(),
                                nullptr, nullptr, statuses.data()),
         "EvaluateArray");
    std::cout << name() << ", vapour pressure; data from " << rounded(tMin, 2) << " to " << rounded(tMax, 2) << " K\n"
              << column("K") << column("kPa") << "  status\n";
    for (std::size_t i = 0; i < kTemperatures.size(); ++i)
      std::cout << column(rounded(kTemperatures[i], 2)) << column(rounded(pressures[i], 4)) << "  "
                << statusText(statuses[i]) << "\n";
  }

  void printPolicies(const std::string& property, double from, double to) const {
    std::cout << "K form-goes-on not-set-outside value-at-limit tangent tangent-ln-Y-over-1/T tangent-to-critical\n";
    constexpr int kSteps = 100;
    for (int i = 0; i <= kSteps; ++i) {
      const double temperature = from + (to - from) * i / kSteps;
      std::cout << text(temperature);
      for (int policy = eAsFormGoesOn; policy < eRecommended; ++policy) {
        double value = 0;
        must(arrays_->EvaluateArray(qs::widen(property).c_str(), 1, &temperature, kPressure,
                                    static_cast<tagLimitPolicyEnum>(policy), &value, nullptr, nullptr, nullptr),
             "EvaluateArray");
        std::cout << " " << (std::isfinite(value) && value != kNoNumber ? text(value) : "-");
      }
      std::cout << "\n";
    }
  }

  Number boilingPoint(double pressure) const {
    Number number;
    must(arrays_->FindTemperatures(OLESTR("VP"), 1, &pressure, kPressure, &number.value, &number.status),
         "FindTemperatures");
    return number;
  }

  // Along the boiling curve, T dP/dT (Vg - Vl). The vapour's volume is that of an ideal gas, corrected by the second
  // virial coefficient where there is one. Acetic acid has none, and its vapour is far from ideal: most molecules are
  // in pairs.
  void printHeatsOfVaporisation() const {
    std::cout << name() << "\n"
              << column("kPa") << column("K") << column("kJ/kmol") << column("Clapeyron") << column("%") << "\n";
    for (const double pressure : {10.0, 50.0, 101.325, 500.0, 1000.0}) {
      const double T = boilingPoint(pressure).value;
      const double heat = at(OLESTR("HVP"), T).value;
      const Number virial = at(OLESTR("SVR"), T);
      const double vapour = kGas * T / pressure + (virial.status & eStatusNotSet ? 0.0 : virial.value);
      const double liquid = at(OLESTR("MW"), T).value / at(OLESTR("LDN"), T).value;
      const double clapeyron = T * at(OLESTR("VP"), T).slope * (vapour - liquid);
      std::cout << column(rounded(pressure, 3)) << column(rounded(T, 3)) << column(rounded(heat, 1))
                << column(rounded(clapeyron, 1)) << column(rounded(100.0 * (clapeyron / heat - 1.0), 2)) << "\n";
    }
  }

 private:
  ComPtr<ICompoundEvaluation> scripts_;
  ComPtr<ICompoundEvaluationArrays> arrays_;
  Bstr name_;
};

void run(const std::string& directory) {
  const Compound water(directory, 19);
  water.printVapourPressures();
  const auto [temperature, slope, status] = water.boilingPoint(50.0);
  std::cout << "\n"
            << water.name() << " boils at " << rounded(temperature, 4) << " K under 50 kPa: " << statusText(status)
            << "\n\nheats of vaporisation, and from the slope of the vapour pressure\n";
  for (const INT number : {19, 21, 46}) Compound(directory, number).printHeatsOfVaporisation();
  std::cout << "end of evaluation\n";
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv, argv + argc);
  if (argc != 2 && argc != 6) {
    std::cerr << "usage: evaluation DATABASE-DIRECTORY [COMPOUND PROPERTY FROM TO]\n";
    return 2;
  }
  CoInitialize(nullptr);
  try {
    if (argc == 2)
      run(arguments[1]);
    else
      Compound(arguments[1], static_cast<INT>(numberOf(arguments[2])))
          .printPolicies(arguments[3], numberOf(arguments[4]), numberOf(arguments[5]));
  } catch (const std::exception& error) {
    std::cerr << "evaluation: " << error.what() << "\n";
    return 1;
  }
  CoUninitialize();
}
