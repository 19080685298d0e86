// A host's floating-point state and the typed getters: no value inside its range raises an exception that the host has
// unmasked, and the state is left as it was found.
#include <immintrin.h>

#include <array>
#include <cfenv>
#include <cmath>

#include "tests/support/compounds.h"
#include "tests/support/host_exceptions.h"

namespace qs::test {
namespace {

constexpr double kCritical = 647.14;

// What is masked, how results are rounded, and what becomes of subnormal numbers, in vector and in scalar registers.
std::array<unsigned, 2> state() {
  unsigned short scalar;
  asm volatile("fnstcw %0" : "=m"(scalar));
  return {_mm_getcsr() & ~unsigned{_MM_EXCEPT_MASK}, scalar};
}

// The usual state comes first: where it shows an exception, no host that unmasks it ends the program.
void (*const kHosts[])() = {[] {}, unmaskExceptions, [] { std::fesetround(FE_UPWARD); },
                            [] { _mm_setcsr(_mm_getcsr() | 0x8040); }};  // subnormal numbers are zeros

struct Curve {
  LONG form;
  std::vector<double> coefficients;
  LONG xShape = COMx, yShape = COMx;
  double tMin = 273.16, tMax = kCritical, yPower = 1.0;
};

class FloatingPointState : public CompoundTest {
 protected:
  static void expectLeftAlone(const Curve& c) {
    const auto compound = newCompound();
    const Bstr key(OLESTR("VP"));
    query<ICompoundPropPut>(compound)->SetEquationProperty(key.get(), 1, tagEquationShapeEnum(c.form), c.tMin, c.tMax,
                                                           1, 1e5, reals(c.coefficients).get());
    query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(key.get(), tagXYShapeEnum(c.xShape),
                                                                 tagXYShapeEnum(c.yShape), kCritical, kCritical, 1.0,
                                                                 c.yPower, kCritical, 100.0);
    std::fenv_t own;
    std::fegetenv(&own);
    const unsigned ownVector = _mm_getcsr();
    for (const double T : {c.tMin, 0.8 * c.tMin + 0.2 * c.tMax, 0.5 * (c.tMin + c.tMax), c.tMax}) {
      for (const auto prepare : kHosts) {
        LONG dependencies = 0;
        double value = std::nan("");
        std::feclearexcept(FE_ALL_EXCEPT);
        prepare();
        const auto before = state();
        compound->get_VP(T, 101.325, eNoExtrapolation, &dependencies, &value);
        const auto after = state();
        const int raised = std::fetestexcept(FE_ALL_EXCEPT) & ~FE_INEXACT;
        std::fesetenv(&own);
        _mm_setcsr(ownVector);  // which mingw's function above does not do
        ASSERT_TRUE(before == after && std::isfinite(value) && raised == 0)
            << "form " << c.form << ", shapes " << c.xShape << " and " << c.yShape << " at " << T << ": raised "
            << raised;
      }
    }
  }
};

TEST_F(FloatingPointState, IsLeftAloneByEveryForm) {
  const std::vector<double> common{10.0, 1.2, 0.5, 1e-3, 1e-7, 1e-9, 1.0}, vapour{73.6, -7258.0, -7.3, 4.2e-6, 2.0};
  for (const LONG form : {0, 1, 2, 4, 5, 9, 10, 12, 13, 14, 16, 17, 19, 20, 21, 22, 23, 24, 25, 27, 28})
    expectLeftAlone({form, common});
  for (const LONG form : {18, 29, 30, 31, 32, 33, 34, 36, 37}) expectLeftAlone({form, common, COM1mxr});
  for (const LONG form : {7, 26, 35}) expectLeftAlone({form, common, COMxr, COMx, 273.16, 647.0});
  for (const LONG form : {3, 11, 21}) expectLeftAlone({form, vapour});
  expectLeftAlone({PropCurveVELDB7, {5.459, 0.30542, kCritical, 0.081}});
  expectLeftAlone({PropCurveDIPPR106, {5.2e7, 0.32, -0.212, 0.258, 0.0, kCritical}});
  for (const double tMin : {2.0, 3.7, 5.0, 50.0})  // C/T of 1305, for which sinh is infinite, 705.5, 522 and 52
    expectLeftAlone({PropCurveDIPPR107, {33363, 26790, 2610.5, 8896, 1169}, COMx, COMx, tMin, 2273.15});
  expectLeftAlone({PropCurvePPDS9, {0.5, 1.1, 500.0, 150.0, 2e-5}, COMxppdsm1});
}

// The trigonometric ones are the C library's. The square of e^X is a number up to 350.
TEST_F(FloatingPointState, IsLeftAloneByEveryTransformation) {
  for (LONG shape = COMx; shape <= COMlnxp; ++shape) {
    if ((shape >= COMsinx && shape <= COMtan1mxr) || (shape > COMrootxodx && shape < COMxdp)) continue;
    expectLeftAlone({PropCurvePOLY2, {0.0, 1.0, 0.0}, shape, COMx, 273.16, shape == COMexpx ? 350.0 : 647.0});
    expectLeftAlone({PropCurvePOLY2, {0.0, 1e-3, 0.0}, COMx, shape, 273.16, kCritical, 2.0});
  }
}

}  // namespace
}  // namespace qs::test
