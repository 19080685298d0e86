// The same bits everywhere: of one value and of blocks of them, in every instruction set, on every system.
// value_bits.txt has the bits' hashes; after a change of functions, coefficients or numbers here, its lines are those
// that a failed test shows.
#include <bit>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>

#include "props/derivatives.h"
#include "props/evaluator.h"
#include "tests/support/files.h"
#include "tests/support/numbers.h"
#include "tests/support/properties.h"
#include "tests/support/ulps.h"

namespace qs {
namespace {

using Values = std::vector<double>;

constexpr double kP = 2.5;

// Which NaN an operation gives is not fixed.
std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(std::isnan(value) ? kNaN : value); }

std::uint64_t hashOf(const Values& values) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const double value : values) hash = (hash ^ bitsOf(value)) * 0x100000001b3;
  return hash;
}

// Numbers of all magnitudes, more of them where forms and transformations are defined, and what is special.
Values numbers() {
  Values result{0.0,  -0.0, 1.0,       -1.0,       0.9,      1e-310, 4.9e-324, -1e-320, 1e308,
                kNaN, 2.0,  kInfinity, -kInfinity, -32767.0, 1e-100, 1e100,    300.0,   647.096};
  std::mt19937_64 random;
  const auto between = [&](double low, double high) {
    return low + (high - low) * (static_cast<double>(random() >> 11) * 0x1p-53);
  };
  while (result.size() < 12'000) {
    result.push_back(between(0.0, 1.0));
    result.push_back(between(1.0, 1000.0));
    result.push_back(between(-5.0, 5.0));
    result.push_back(std::bit_cast<double>(random()));
  }
  return result;
}

struct Case {
  std::string name;
  std::unique_ptr<CQSAbstractProp> property;
};

Case caseOf(const EquationForm& form, double exponent, LONG xShape = COMx, LONG yShape = COMx, double power = 1.0) {
  Values coefficients{1.75, 0.6, 1.25, 0.8, 0.02, 1.5, 3.0};
  if (form.exponent != letter::None && exponent != 0.0)
    coefficients[static_cast<std::size_t>(form.exponent)] = exponent;
  Case result{narrow(form.className), equation(form.shape)};
  result.property->SetParameters(coefficients.data(), form.coefficients);
  result.property->SetXYShape(xShape, yShape);
  result.property->SetXYNorm(0.9, 0.9);
  result.property->SetXYPow(xShape == COMx ? 1.0 : power, yShape == COMx ? 1.0 : power);
  result.property->SetAB(3.0, 1.25);
  if (exponent != 0.0) result.name += "^" + std::to_string(static_cast<int>(exponent));
  if (xShape != COMx) result.name += " X" + std::to_string(xShape);
  if (yShape != COMx) result.name += " Y" + std::to_string(yShape);
  if (power != 1.0) result.name += " power";
  return result;
}

bool isTrigonometric(LONG shape) { return shape >= COMsinx && shape <= COMtan1mxr; }

// Every form, with an exponent that is multiplied out and one that is not, and every transformation.
std::vector<Case> cases() {
  std::vector<Case> result;
  for (const EquationForm& form : kEquationForms) {
    result.push_back(caseOf(form, 0.0));
    if (form.exponent == letter::None) continue;
    for (const double exponent : {-1.0, 2.0, 3.0, 4.0, 6.0}) result.push_back(caseOf(form, exponent));
  }
  for (LONG shape = COMx; shape <= COMlnxp + 1; ++shape) {
    if (isTrigonometric(shape)) continue;
    for (const double power : {1.0, 2.0, 0.4}) {
      result.push_back(caseOf(*findForm(PropCurvePOLY2), 0.0, shape, COMx, power));
      result.push_back(caseOf(*findForm(PropCurvePOLY2), 0.0, COMx, shape, power));
    }
  }
  return result;
}

Values oneByOne(const CQSAbstractProp& property, const Values& temperatures) {
  Values values;
  for (const double T : temperatures) {
    double value = kEmptyValue;
    LONG dependencies = 0;
    property.GetValue(T, kP, eNoExtrapolation, &dependencies, &value);
    values.push_back(value);
  }
  return values;
}

Values slopesOneByOne(const CQSAbstractProp& property, const Values& temperatures) {
  Values slopes;
  for (const double T : temperatures) {
    Derivatives derivatives;
    slopes.push_back(derivativesOf(*property.equation(), T, kP, derivatives) ? derivatives.first : kEmptyValue);
  }
  return slopes;
}

TEST(Evaluator, HasTheSameBitsInEveryInstructionSetAndSystem) {
  std::ifstream file(test::kSourceFolder / "tests/props/value_bits.txt");
  std::string expected;
  const Values temperatures = numbers();
  for (const auto& [name, property] : cases()) {
    const Values values = oneByOne(*property, temperatures), slopes = slopesOneByOne(*property, temperatures);
    std::ostringstream line;
    line << name << " " << std::hex << hashOf(values);
    std::getline(file, expected);
    EXPECT_EQ(line.str(), expected);
    for (const BlockFunctions* functions : supportedBlockFunctions()) {
      Values inBlocks = temperatures;
      evaluate(*property, inBlocks, kP, inBlocks.data(), *functions);
      EXPECT_EQ(hashOf(inBlocks), hashOf(values)) << name << " " << functions->instructionSet;
      inBlocks = temperatures;
      Values slopesInBlocks(temperatures.size());
      evaluateWithSlopes(*property, inBlocks, kP, inBlocks.data(), slopesInBlocks.data(), *functions);
      EXPECT_EQ(hashOf(inBlocks), hashOf(values)) << name << " " << functions->instructionSet;
      EXPECT_EQ(hashOf(slopesInBlocks), hashOf(slopes)) << name << " " << functions->instructionSet;
    }
  }
  EXPECT_FALSE(std::getline(file, expected)) << expected;
}

TEST(Evaluator, EvaluatesAlikeEquationsTogether) {
  std::vector<Case> all = cases();
  for (LONG shape = COMx; shape <= COMlnxp; ++shape) {
    all.push_back(caseOf(*findForm(PropCurveDIPPR101), 2.0, shape, COMlnx));
    all.push_back(caseOf(*findForm(PropCurveDIPPR101), 2.0, COMx, shape));
  }
  // A few of one, many of the next, and none between.
  std::vector<std::vector<const CQSAbstractProp*>> lists;
  for (std::size_t i = 0; i + 1 < all.size(); ++i) {
    lists.emplace_back(70, all[i + 1].property.get());
    for (const std::size_t place : {3u, 5u, 40u}) lists.back()[place] = all[i].property.get();
    lists.back()[7] = nullptr;
  }
  const auto supported = supportedBlockFunctions();
  for (std::size_t first = 0; first < all.size() - 1; ++first)
    for (const double T : {0.3, 0.95, 12.0, -32767.0, 0.0, kNaN})
      for (std::size_t sets = 1; sets <= supported.size(); ++sets) {
        const auto& properties = lists[first];
        Values values(properties.size());
        evaluateAlike(properties, T, kP, values.data(), supported.first(sets));
        for (std::size_t i = 0; i < values.size(); ++i) {
          const Equation* equation = properties[i] ? properties[i]->equation() : nullptr;
          const bool alone = !equation || equation->way == Equation::Way::Any || !equation->isWithin(T, kP) ||
                             equation->form.shape == PropCurveVoid;
          const Case& of = all[properties[i] == properties[0] ? first + 1 : first];
          const double expected = alone ? kEmptyValue : oneByOne(*of.property, {T})[0];
          ASSERT_EQ(bitsOf(values[i]), bitsOf(expected)) << of.name << " at " << T << ", sets " << sets;
        }
      }
}

// The C library's last bits are its own.
TEST(Evaluator, TrigonometricTransformationsAreWithinTwoUlps) {
  using Long = long double;
  Long (*const forward[])(Long) = {std::sin, std::cos, std::tan};
  Long (*const back[])(Long) = {std::asin, std::acos, std::atan};
  const double identity[] = {0.0, 1.0, 0.0};
  for (LONG i = 0; i < 3; ++i)
    for (const bool isOfX : {true, false}) {
      const LONG shape = COMsinx + i, none = COMx;
      const Case each = caseOf(*findForm(PropCurvePOLY2), 0.0, isOfX ? shape : none, isOfX ? none : shape);
      each.property->SetParameters(identity, 3);
      for (double x = -0.997; x < 1.0; x += 0.003) {
        double value = x;
        evaluate(*each.property, {&value, 1}, kP, &value);
        EXPECT_LE(ulps(value, (isOfX ? forward : back)[i](Long(x))), 2.0) << each.name << " at " << x;
      }
    }
}

}  // namespace
}  // namespace qs
