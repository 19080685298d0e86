// Values, derivatives, integrals and inverses with their statuses, within ranges and beyond them by each policy.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "com/variant.h"
#include "props/key_table.h"
#include "tests/calls/calls.h"
#include "tests/support/components.h"
#include "tests/support/compounds.h"
#include "tests/support/numbers.h"

namespace qs::test {
namespace {

constexpr LONG kInside = eStatusInside, kBelow = eStatusBelow, kAbove = eStatusAbove, kPolicy = eStatusByPolicy,
               kHeld = eStatusByPolicy | eStatusClamped, kNotSet = eStatusNotSet, kNoNumber = eStatusNotANumber;

struct Numbers {
  double value, first, second;
  LONG status;
};

class CompoundEvaluation : public CompoundTest {
 protected:
  // From 300 to 400 K and 10 to 1000 kPa.
  void put(WideView name, tagEquationShapeEnum shape, const std::vector<double>& coefficients, double tMin = 300.0,
           double tMax = 400.0) {
    EXPECT_EQ(query<ICompoundPropPut>(compound)->SetEquationProperty(
                  Bstr(name).get(), findKey(name) ? 1 : 0, shape, tMin, tMax, 10.0, 1000.0, reals(coefficients).get()),
              S_OK);
  }
  void put(WideView name, double value) {
    query<ICompoundPropPut>(compound)->SetPointProperty(Bstr(name).get(), findKey(name) ? 1 : 0, value);
  }

  Numbers at(LPCOLESTR name, double T, tagLimitPolicyEnum policy, double P = 100.0) {
    Numbers found{};
    const HRESULT hr =
        arrays->EvaluateArray(name, 1, &T, P, policy, &found.value, &found.first, &found.second, &found.status);
    const LONG lacking = kNotSet | eStatusNoSuchProperty | kNoNumber;
    EXPECT_EQ(hr, found.status & lacking ? S_FALSE : S_OK);
    return found;
  }
  double getter(WideView name, double T) { return propertyOf(compound, name, T).value; }

  const ComPtr<IBasicCompound> compound = newCompound();
  const ComPtr<ICompoundEvaluationArrays> arrays = query<ICompoundEvaluationArrays>(compound);
  const ComPtr<ICompoundEvaluation> scripts = query<ICompoundEvaluation>(compound);
};

void expectSame(const Numbers& found, const Numbers& expected, const char* what) {
  EXPECT_EQ(found.status, expected.status) << what;
  EXPECT_NEAR(found.value, expected.value, 1e-13 * std::abs(expected.value)) << what;
  EXPECT_NEAR(found.first, expected.first, 1e-13 * std::abs(expected.first)) << what;
  EXPECT_NEAR(found.second, expected.second, 2e-13 * std::abs(expected.second)) << what;
}

// Y = 3 - 0.01 T + 0.0001 T^2 has 9 and 0.05 at 300 K, 15 and 0.07 at 400 K. e^(10 - 2000/T) is its own continuation
// in 1/T.
TEST_F(CompoundEvaluation, GoesOnByThePolicyOutsideTheRange) {
  for (const auto name : {OLESTR("LDN"), OLESTR("LCP"), OLESTR("Other")}) put(name, PropCurvePOLY2, {3.0, -0.01, 1e-4});
  put(OLESTR("VP"), PropCurveDIPPR101, {10.0, -2000.0, 0.0, 0.0, 1.0});
  put(OLESTR("HVP"), PropCurvePOLY2, {41.0, -0.1, 0.0});
  put(OLESTR("TC"), 450.0);
  const Numbers nothing{kEmpty, kEmpty, kEmpty, 0};
  const auto with = [](Numbers numbers, LONG status) { return numbers.status = status, numbers; };
  const auto exponential = [](double T) {
    const double y = std::exp(10.0 - 2000.0 / T), slope = 2000.0 / (T * T);
    return Numbers{y, y * slope, y * slope * (slope - 2.0 / T), 0};
  };
  const struct {
    LPCOLESTR name;
    double T;
    tagLimitPolicyEnum policy;
    Numbers expected;
  } kCases[] = {
      {OLESTR("LCP"), 350.0, eAsFormGoesOn, {11.75, 0.06, 2e-4, kInside}},
      {OLESTR("LCP"), 350.0, eRecommended, {11.75, 0.06, 2e-4, kInside}},
      {OLESTR("LCP"), 500.0, eAsFormGoesOn, {23.0, 0.09, 2e-4, kAbove | kPolicy}},
      {OLESTR("LCP"), 500.0, eNotSetOutside, with(nothing, kAbove | kNotSet)},
      {OLESTR("LCP"), 500.0, eValueAtLimit, {15.0, 0.0, 0.0, kAbove | kHeld}},
      {OLESTR("LCP"), 100.0, eValueAtLimit, {9.0, 0.0, 0.0, kBelow | kHeld}},
      {OLESTR("LCP"), 100.0, eRecommended, {9.0, 0.0, 0.0, kBelow | kHeld}},
      {OLESTR("LCP"), 500.0, eTangentAtLimit, {22.0, 0.07, 0.0, kAbove | kPolicy}},
      {OLESTR("LCP"), 100.0, eTangentAtLimit, {-1.0, 0.05, 0.0, kBelow | kPolicy}},
      {OLESTR("LDN"), 430.0, eRecommended, {17.1, 0.07, 0.0, kAbove | kPolicy}},
      {OLESTR("LDN"), 500.0, eTangentToCritical, {18.5, 0.0, 0.0, kAbove | kHeld}},
      {OLESTR("LDN"), 200.0, eTangentToCritical, {4.0, 0.05, 0.0, kBelow | kPolicy}},
      {OLESTR("LDN"), 100.0, eTangentToCritical, with(nothing, kBelow | kNotSet)},
      {OLESTR("HVP"), 405.0, eRecommended, {0.5, -0.1, 0.0, kAbove | kPolicy}},
      {OLESTR("HVP"), 460.0, eRecommended, with(nothing, kAbove | kNotSet)},
      {OLESTR("VP"), 250.0, eRecommended, with(exponential(250.0), kBelow | kPolicy)},
      {OLESTR("VP"), 900.0, eTangentLnYOverInverseT, with(exponential(900.0), kAbove | kPolicy)},
      {OLESTR("VP"), 1.0, eRecommended, {0.0, 0.0, 0.0, kBelow | kPolicy}},
      {OLESTR("Other"), 401.0, eRecommended, with(nothing, kAbove | kNotSet)},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(narrow(each.name) + " at " + std::to_string(each.T));
    expectSame(at(each.name, each.T, each.policy), each.expected, "alone");
    // Among others, of which most are inside, in a buffer that serves for all results in turn.
    std::vector<double> T(300, 350.0);
    T[7] = T[290] = each.T;
    std::vector<double> values = T, slopes = T;
    std::vector<LONG> statuses(T.size());
    arrays->EvaluateArray(each.name, 300, values.data(), 100.0, each.policy, values.data(), nullptr, nullptr, nullptr);
    arrays->EvaluateArray(each.name, 300, slopes.data(), 100.0, each.policy, nullptr, slopes.data(), nullptr,
                          statuses.data());
    for (const std::size_t i : {7u, 290u})
      expectSame({values[i], slopes[i], each.expected.second, statuses[i]}, each.expected, "among others");
    EXPECT_EQ(statuses[8], kInside);
    EXPECT_EQ(values[8], getter(each.name, 350.0));
  }
  // A curve that ends with an unbounded slope before the critical temperature of the compound.
  put(OLESTR("HVP"), PropCurveDIPPR106, {40.0, 0.38, 0.0, 0.0, 0.0, 400.0});
  expectSame(at(OLESTR("HVP"), 430.0, eRecommended), {0.0, 0.0, 0.0, kAbove | kHeld}, "unbounded slope");
  query<ICompoundPropPut>(compound)->ErasePropFromMap(Bstr(OLESTR("TC")).get(), 1);
  expectSame(at(OLESTR("LDN"), 430.0, eRecommended), {15.0, 0.0, 0.0, kAbove | kHeld}, "no critical temperature");
}

TEST_F(CompoundEvaluation, TakesFourUlpsBesideTheRangeForItsLimit) {
  // It is no number one ulp beyond its range.
  put(OLESTR("HVP"), PropCurveDIPPR106, {40.0, 0.38, 0.0, 0.0, 0.0, 400.0});
  for (const bool above : {false, true}) {
    double T = above ? 400.0 : 300.0;
    for (int ulps = 0; ulps <= 6; ++ulps, T = std::nextafter(T, above ? 1000.0 : 0.0)) {
      Numbers found{};
      arrays->EvaluateArray(OLESTR("HVP"), 1, &T, 100.0, eNotSetOutside, &found.value, nullptr, nullptr, &found.status);
      EXPECT_EQ(found.status, ulps <= 4 ? kInside : (above ? kAbove : kBelow) | kNotSet) << ulps;
      EXPECT_EQ(found.value, ulps <= 4 ? getter(OLESTR("HVP"), above ? 400.0 : 300.0) : kEmpty) << ulps;
    }
  }
  // The slope is infinite at the critical temperature.
  EXPECT_EQ(at(OLESTR("HVP"), 400.0, eNotSetOutside).status, kInside | kNoNumber);
  EXPECT_EQ(at(OLESTR("HVP"), 400.0, eAsFormGoesOn).first, -kInfinity);
}

TEST_F(CompoundEvaluation, HasTheGettersBitsAsTheFormGoesOn) {
  put(OLESTR("HVP"), PropCurveDIPPR106, {40.0, 0.38, 0.0, 0.0, 0.0, 405.0});
  put(OLESTR("VP"), PropCurveVELDB5, {60.0, -7000.0, 0.0, -6.0, 1e-17, 6.0});
  const std::vector<double> special = {350.0, 299.0, 500.0, 405.0, 406.0, 1.0, 0.0, -1.0, 1e10, kInfinity, kNaN};
  for (const auto name : {OLESTR("HVP"), OLESTR("VP")}) {
    for (const std::size_t count : {std::size_t{1}, special.size()}) {
      for (std::size_t from = 0; from + count <= special.size(); from += count) {
        std::vector<double> values(count), slopes(count);
        std::vector<LONG> statuses(count);
        arrays->EvaluateArray(name, static_cast<LONG>(count), &special[from], 100.0, eAsFormGoesOn, values.data(),
                              slopes.data(), nullptr, statuses.data());
        for (std::size_t i = 0; i < count; ++i) {
          const double T = special[from + i], expected = getter(name, T);
          EXPECT_EQ(std::bit_cast<std::uint64_t>(values[i]), std::bit_cast<std::uint64_t>(expected)) << T;
          EXPECT_EQ(at(name, T, eAsFormGoesOn).status, statuses[i]) << T;
          EXPECT_TRUE(std::isfinite(expected) || statuses[i] & kNoNumber) << T;
          EXPECT_TRUE(!(T > 1.0) || std::isnan(expected) || !std::isnan(slopes[i])) << T;
          if (!(T > 0.0 && std::isfinite(T))) continue;
          EXPECT_EQ(statuses[i] & (kInside | kBelow | kAbove), T < 300.0 ? kBelow : T > 400.0 ? kAbove : kInside) << T;
        }
      }
    }
  }
}

TEST_F(CompoundEvaluation, SaysWhyThereIsNoNumber) {
  put(OLESTR("VP"), PropCurvePOLY2, {1.0, 0.0, 0.0});
  put(OLESTR("LVS"), PropCurveVoid, {});
  put(OLESTR("LTC"), PropCurvePOLY2, {1.0, 0.0, 0.0});
  query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(Bstr(OLESTR("LTC")).get(), COMx, COMscalexy, 1, 1, 1, 1,
                                                               0, 0);
  put(OLESTR("LDN"), PropCurveANTO1, {1.0, 0.0, 1.0, 0.0, 0.0}, -400.0, -300.0);
  put(OLESTR("LCP"), PropCurvePOLY2, {1.0, 0.0, 0.0}, 400.0, 300.0);
  put(OLESTR("VCP"), PropCurvePOLY2, {1.0, 0.0, 0.0}, kNaN, kNaN);
  put(OLESTR("ST"), PropCurvePOLY2, {-32767.0, 0.0, 0.0});
  put(OLESTR("MW"), 18.0);
  put(OLESTR("RI"), kEmpty);
  put(OLESTR("SP"), kNaN);
  query<ICompoundPropPut>(compound)->SetVoidProperty(Bstr(OLESTR("NBP")).get(), 1);
  const LONG outside = kBelow | kAbove;
  const struct {
    LPCOLESTR name;
    double T, P;
    LONG status;
    double value;
  } kCases[] = {
      {OLESTR("VP"), 350.0, 100.0, kInside, 1.0},
      {OLESTR("VP"), 350.0, 9.0, kInside | eStatusOutsidePressure, 1.0},
      {OLESTR("VP"), 350.0, kNaN, kInside | eStatusOutsidePressure, 1.0},
      {OLESTR("VP"), 0.0, 100.0, kBelow | kNoNumber, kEmpty},
      {OLESTR("VP"), -1.0, 100.0, kBelow | kNoNumber, kEmpty},
      {OLESTR("VP"), kInfinity, 100.0, kAbove | kNoNumber, kEmpty},
      {OLESTR("VP"), kNaN, 100.0, kNoNumber, kEmpty},
      {OLESTR("PC"), 350.0, 100.0, kNotSet, kEmpty},
      {OLESTR("Vp"), 350.0, 100.0, eStatusNoSuchProperty, kEmpty},
      {OLESTR(""), 350.0, 100.0, eStatusNoSuchProperty, kEmpty},
      {nullptr, 350.0, 100.0, eStatusNoSuchProperty, kEmpty},
      {OLESTR("NBP"), 350.0, 100.0, kNotSet, kEmpty},
      {OLESTR("RI"), 350.0, 100.0, kNotSet, kEmpty},
      {OLESTR("SP"), 350.0, 100.0, kInside | kNoNumber, kEmpty},
      {OLESTR("MW"), 350.0, 100.0, kInside, 18.0},
      {OLESTR("MW"), 2e10, 100.0, kAbove | kHeld, 18.0},
      {OLESTR("LVS"), 350.0, 100.0, kNotSet, kEmpty},
      {OLESTR("LTC"), 350.0, 100.0, kNotSet, kEmpty},
      {OLESTR("ST"), 350.0, 100.0, kInside | kNotSet, kEmpty},
      {OLESTR("LDN"), 350.0, 100.0, kAbove | kNoNumber, kEmpty},
      {OLESTR("LCP"), 350.0, 100.0, outside | kNotSet, kEmpty},
      {OLESTR("VCP"), 350.0, 100.0, kNotSet, kEmpty},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE((each.name ? narrow(each.name) : "null") + " at " + std::to_string(each.T));
    std::vector<double> T(5, each.T), values(5);
    std::vector<LONG> statuses(5);
    for (const LONG count : {1, 5}) {
      const HRESULT hr = arrays->EvaluateArray(each.name, count, T.data(), each.P, eRecommended, values.data(), nullptr,
                                               nullptr, statuses.data());
      EXPECT_EQ(hr, each.value == kEmpty ? S_FALSE : S_OK);
      EXPECT_EQ(values[static_cast<std::size_t>(count) - 1], each.value);
      EXPECT_EQ(statuses[static_cast<std::size_t>(count) - 1], each.status);
    }
  }
}

TEST_F(CompoundEvaluation, AsksAComponentForValuesAlone) {
  ValueComponent component;
  const auto putComponent = [&](WideView name) {
    query<ICompoundPropPut>(compound)->SetCOMProperty(Bstr(name).get(), 1, Bstr(OLESTR("class")).get(), &component);
  };
  putComponent(OLESTR("VP"));
  double T[] = {300.0, 310.0, 320.0, 330.0, 340.0, 0.0}, values[6];
  LONG statuses[6];
  // It takes itself away at the first value.
  component.act = [&] { query<ICompoundPropPut>(compound)->ErasePropFromMap(Bstr(OLESTR("VP")).get(), 1); };
  EXPECT_EQ(arrays->EvaluateArray(OLESTR("VP"), 6, T, 100.0, eRecommended, values, nullptr, nullptr, statuses),
            S_FALSE);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(values[i], T[i] + 100.0);
  EXPECT_EQ(statuses[4], kInside);
  EXPECT_EQ(statuses[5], kBelow | kNoNumber);
  component.act = nullptr;
  putComponent(OLESTR("VP"));
  const Numbers found = at(OLESTR("VP"), 300.0, eRecommended);
  EXPECT_EQ(found.first, kEmpty);
  EXPECT_EQ(found.status, kInside | kNotSet);
  // A critical temperature that takes the density away.
  put(OLESTR("LDN"), PropCurvePOLY2, {900.0, -1.0, 0.0});
  putComponent(OLESTR("TC"));
  component.act = [&] { query<ICompoundPropPut>(compound)->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1); };
  EXPECT_EQ(at(OLESTR("LDN"), 410.0, eRecommended).status, kNotSet);
  const double value = 1.0;
  EXPECT_EQ(arrays->FindTemperatures(OLESTR("VP"), 1, &value, 100.0, values, statuses), S_FALSE);
  EXPECT_EQ(statuses[0], kNotSet);
  EXPECT_EQ(arrays->IntegrateArray(OLESTR("VP"), eIntegralOfY, 1, T, T + 1, 100.0, eAsFormGoesOn, values, statuses),
            S_FALSE);
  EXPECT_EQ(statuses[0], kNotSet);
  for (const auto name : {OLESTR("VP"), OLESTR("TC")})
    query<ICompoundPropPut>(compound)->ErasePropFromMap(Bstr(name).get(), 1);
}

// The same curve as above: its antiderivative is 3 T - 0.005 T^2 + 0.0001/3 T^3.
TEST_F(CompoundEvaluation, IntegratesByThePolicyAndFindsTemperatures) {
  put(OLESTR("LIQH"), PropCurvePOLY2, {3.0, -0.01, 1e-4});
  put(OLESTR("LDN"), PropCurvePOLY2, {3.0, -0.01, 1e-4});
  put(OLESTR("ST"), PropCurvePPDS1, {0.0, 1.0, 0.0, 0.0});
  put(OLESTR("IT"), PropCurvePPDS1, {0.0, 1.0, 0.0, 0.0}, 0.5, 1.55);
  put(OLESTR("LVS"), PropCurvePOLY2, {1.0, 0.0, 0.0}, kNaN, kNaN);
  put(OLESTR("MW"), 18.0);
  put(OLESTR("TC"), 450.0);
  const auto cubic = [](double a, double b) {
    const auto F = [](double T) { return 3.0 * T - 0.005 * T * T + 1e-4 / 3.0 * T * T * T; };
    return F(b) - F(a);
  };
  const struct {
    LPCOLESTR name;
    tagIntegrandEnum of;
    double from, to;
    tagLimitPolicyEnum policy;
    double expected;
    LONG status;
  } kCases[] = {
      {OLESTR("LIQH"), eIntegralOfY, 310.0, 390.0, eNotSetOutside, cubic(310.0, 390.0), kInside},
      {OLESTR("LIQH"), eIntegralOfY, 390.0, 310.0, eNotSetOutside, -cubic(310.0, 390.0), kInside},
      {OLESTR("LIQH"), eIntegralOfY, 350.0, 350.0, eRecommended, 0.0, kInside},
      {OLESTR("LIQH"), eIntegralOfYOverT, 310.0, 390.0, eRecommended,
       3.0 * std::log(390.0 / 310.0) - 0.8 + 5e-5 * (390.0 * 390.0 - 310.0 * 310.0), kInside},
      {OLESTR("LIQH"), eIntegralOfY, 200.0, 500.0, eNotSetOutside, kEmpty, kBelow | kAbove | kNotSet},
      {OLESTR("LIQH"), eIntegralOfY, 200.0, 500.0, eAsFormGoesOn, cubic(200.0, 500.0), kBelow | kAbove | kPolicy},
      {OLESTR("LIQH"), eIntegralOfY, 200.0, 500.0, eValueAtLimit, 900.0 + cubic(300.0, 400.0) + 1500.0,
       kBelow | kAbove | kPolicy},
      {OLESTR("LIQH"), eIntegralOfY, 200.0, 500.0, eRecommended, 650.0 + cubic(300.0, 400.0) + 1850.0,
       kBelow | kAbove | kPolicy},
      {OLESTR("LIQH"), eIntegralOfYOverT, 500.0, 450.0, eValueAtLimit, 15.0 * std::log(0.9), kAbove | kPolicy},
      {OLESTR("LDN"), eIntegralOfY, 380.0, 500.0, eRecommended, cubic(380.0, 400.0) + 837.5 + 925.0, kAbove | kPolicy},
      {OLESTR("MW"), eIntegralOfY, 100.0, 300.0, eRecommended, 3600.0, kInside},
      {OLESTR("MW"), eIntegralOfYOverT, 100.0, 300.0, eRecommended, 18.0 * std::log(3.0), kInside},
      {OLESTR("LIQH"), eIntegralOfY, 0.0, 350.0, eRecommended, kEmpty, kBelow | kNoNumber},
      {OLESTR("LIQH"), eIntegralOfY, kNaN, 350.0, eRecommended, kEmpty, kNoNumber},
      {OLESTR("ST"), eIntegralOfY, 0.5, 1.5, eAsFormGoesOn, kEmpty, kBelow | eStatusNoConvergence},
      {OLESTR("IT"), eIntegralOfY, 0.4, 1.6, eValueAtLimit, kEmpty, kBelow | kAbove | eStatusNoConvergence},
      {OLESTR("NBP"), eIntegralOfY, 310.0, 390.0, eRecommended, kEmpty, kNotSet},
      {OLESTR("LVS"), eIntegralOfY, 310.0, 390.0, eRecommended, kEmpty, kNotSet},
  };
  for (const auto& each : kCases) {
    SCOPED_TRACE(narrow(each.name) + " " + std::to_string(each.from) + " to " + std::to_string(each.to));
    double integral = 0.0;
    LONG status = 0;
    const HRESULT hr =
        arrays->IntegrateArray(each.name, each.of, 1, &each.from, &each.to, 100.0, each.policy, &integral, &status);
    EXPECT_EQ(hr, each.expected == kEmpty ? S_FALSE : S_OK);
    EXPECT_NEAR(integral, each.expected, 1e-12 * std::abs(each.expected));
    EXPECT_EQ(status, each.status);
  }
  const double values[] = {11.75, 8.0, 9.0, kNaN};
  double T[4];
  LONG statuses[4];
  EXPECT_EQ(arrays->FindTemperatures(OLESTR("LIQH"), 4, values, 100.0, T, statuses), S_FALSE);
  EXPECT_NEAR(T[0], 350.0, 1e-12 * 350.0);
  EXPECT_NEAR(T[2], 300.0, 1e-12 * 300.0);
  EXPECT_THAT((std::vector{T[1], T[3]}), testing::Each(kEmpty));
  EXPECT_THAT(statuses, testing::ElementsAre(kInside, eStatusNoConvergence, kInside, eStatusNoConvergence));
  put(OLESTR("LCP"), PropCurvePOLY2, {350.0 * 350.0, -700.0, 1.0});
  const double twice = 100.0;
  EXPECT_EQ(arrays->FindTemperatures(OLESTR("LCP"), 1, &twice, 100.0, T, statuses), S_OK);
  EXPECT_NEAR(T[0], 340.0, 1e-9);
  EXPECT_EQ(statuses[0], kInside | eStatusSeveralSolutions);
}

TEST_F(CompoundEvaluation, RefusesWhatItCannotRead) {
  put(OLESTR("VP"), PropCurvePOLY2, {1.0, 0.0, 0.0});
  double T[] = {310.0, 320.0, 330.0}, out[3] = {7.0, 7.0, 7.0};
  LONG statuses[3];
  const auto evaluate = [&](LONG count, const double* from, int policy, double* values, LONG* found) {
    return arrays->EvaluateArray(OLESTR("VP"), count, from, 100.0, within<tagLimitPolicyEnum>(policy), values, nullptr,
                                 nullptr, found);
  };
  EXPECT_EQ(evaluate(-1, T, 0, out, statuses), E_INVALIDARG);
  EXPECT_EQ(evaluate(3, T, -1, out, statuses), E_INVALIDARG);
  EXPECT_EQ(evaluate(3, T, 7, out, statuses), E_INVALIDARG);
  EXPECT_EQ(evaluate(3, nullptr, 0, out, statuses), E_POINTER);
  for (const LONG count : {1, 3}) EXPECT_EQ(evaluate(count, T, 0, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(evaluate(2, T, 0, T + 1, statuses), E_INVALIDARG);
  EXPECT_EQ(evaluate(2, T, 0, nullptr, reinterpret_cast<LONG*>(T)), E_INVALIDARG);
  EXPECT_EQ(evaluate(0, nullptr, 0, out, nullptr), S_OK);
  EXPECT_EQ(
      arrays->IntegrateArray(OLESTR("VP"), within<tagIntegrandEnum>(2.0), 1, T, T, 100.0, eAsFormGoesOn, out, statuses),
      E_INVALIDARG);
  EXPECT_THAT(out, testing::Each(7.0));

  Variant values, found;
  const Bstr name(OLESTR("VP"));
  const auto script = [&](const VARIANT& temperatures, int quantity) {
    return scripts->Evaluate(name.get(), within<tagQuantityEnum>(quantity), temperatures, 100.0, eRecommended,
                             found.address(), values.address());
  };
  EXPECT_EQ(script(VARIANT{}, 0), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(script(Variant(ComPtr<IDispatch>(compound.get())).get(), 0), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(script(Variant(310.0).get(), 3), E_INVALIDARG);
  EXPECT_EQ(values.get().vt, VT_EMPTY);
  EXPECT_EQ(scripts->Evaluate(name.get(), eValue, Variant(310.0).get(), 100.0, eRecommended, nullptr, values.address()),
            E_POINTER);
}

TEST_F(CompoundEvaluation, TakesAndReturnsOneNumberOrMany) {
  put(OLESTR("VP"), PropCurvePOLY2, {3.0, -0.01, 1e-4});
  const Bstr name(OLESTR("VP"));
  Variant values, statuses;
  EXPECT_EQ(scripts->Evaluate(name.get(), eFirstDerivative, Variant(LONG{350}).get(), 100.0, eRecommended,
                              statuses.address(), values.address()),
            S_OK);
  EXPECT_EQ(values.get().vt, VT_R8);
  EXPECT_NEAR(values.get().dblVal, 0.06, 1e-15);
  EXPECT_EQ(statuses.get().lVal, kInside);
  // A host's array, and a safe array that does not start from 0.
  SAFEARRAYBOUND bound{2, 5};
  Variant safe;
  safe.address()->vt = VT_ARRAY | VT_I4;
  safe.address()->parray = SafeArrayCreate(VT_I4, 1, &bound);
  std::copy_n(std::array<LONG, 2>{300, 401}.begin(), 2, static_cast<LONG*>(safe.get().parray->pvData));
  const Variant host(ComPtr<IDispatch>(reals({300.0, 401.0}).get()));
  for (const VARIANT* given : {&safe.get(), &host.get()}) {
    Variant many, found;
    EXPECT_EQ(scripts->Evaluate(name.get(), eValue, *given, 100.0, eRecommended, found.address(), many.address()),
              S_OK);
    ASSERT_EQ(many.get().vt, VT_ARRAY | VT_VARIANT);
    const auto* elements = static_cast<const VARIANT*>(many.get().parray->pvData);
    EXPECT_NEAR(elements[0].dblVal, 9.0, 1e-14);
    EXPECT_EQ(static_cast<const VARIANT*>(found.get().parray->pvData)[1].lVal, kAbove | kPolicy);
    LONG lower = -1;
    SafeArrayGetLBound(found.get().parray, 1, &lower);
    EXPECT_EQ(lower, 0);
  }
}

TEST_F(CompoundEvaluation, DescribesWhatThereIs) {
  put(OLESTR("VP"), PropCurvePOLY2, {3.0, -0.01, 1e-4});
  put(OLESTR("MW"), 18.0);
  const struct {
    LPCOLESTR name;
    HRESULT range, described;
    double tMin, pMax;
    std::string text;
  } kCases[] = {
      {OLESTR("VP"), S_OK, S_OK, 300.0, 1000.0, "2 19 Y = A + B*X + C*X^2 3 8 kPa Vapour Pressure 4"},
      {OLESTR("MW"), S_OK, S_OK, 1e-05, 1e+15, "1 1000 (null) 0 0 kg/kmol Molecular Weight 2"},
      {OLESTR("PC"), S_FALSE, S_FALSE, kEmpty, kEmpty, "0 1000 (null) 0 0 kPa Critical Pressure 2"},
      {OLESTR("Other"), S_FALSE, S_FALSE, kEmpty, kEmpty, "0 1000 (null) 0 0 (null) (null) 1"},
  };
  for (const auto& each : kCases) {
    const Bstr name(each.name);
    double range[4], described[4];
    EXPECT_EQ(scripts->GetRange(name.get(), range, range + 1, range + 2, range + 3), each.range);
    tagPropTypeEnum type{};
    tagEquationShapeEnum shape{};
    tagLimitPolicyEnum policy{};
    BSTR form = nullptr, unit = nullptr, help = nullptr;
    Variant coefficients, transformations;
    EXPECT_EQ(scripts->Describe(name.get(), &type, &shape, &form, coefficients.address(), described, described + 1,
                                described + 2, described + 3, transformations.address(), &unit, &help, &policy),
              each.described);
    const auto sizeOf = [](const Variant& list) {
      return std::to_string(list.get().vt ? list.get().parray->rgsabound[0].cElements : 0);
    };
    EXPECT_EQ(std::to_string(type) + " " + std::to_string(shape) + " " + narrow(taken(form)) + " " +
                  sizeOf(coefficients) + " " + sizeOf(transformations) + " " + narrow(taken(unit)) + " " +
                  narrow(taken(help)) + " " + std::to_string(policy),
              each.text);
    EXPECT_THAT(range, testing::ElementsAreArray(described));
    EXPECT_EQ((std::vector{range[0], range[3]}), (std::vector{each.tMin, each.pMax}));
  }
}

}  // namespace
}  // namespace qs::test
