// Inverses: the temperature of a value, against changes of sign of the formulas in long double, and what is special.
#include "props/inverse.h"

#include <cmath>
#include <functional>

#include "tests/support/curve_formulas.h"
#include "tests/support/numbers.h"

namespace qs {
namespace {

using test::Real;

std::unique_ptr<CQSAbstractProp> curveOf(LONG shape, const std::vector<double>& coefficients, double tMin,
                                         double tMax) {
  auto curve = test::curveOf(shape, coefficients);
  curve->SetTRange(tMin, tMax);
  return curve;
}

// Whether the computed curve has the value or crosses it between the temperature and a neighbour.
bool isSolution(const CQSAbstractProp& curve, double T, double value) {
  const auto difference = [&](double at) { return evaluate(curve, at, test::kPressure).value - value; };
  const double here = difference(T), below = difference(std::nextafter(T, 0.0)),
               above = difference(std::nextafter(T, kInfinity));
  return here == 0.0 || (here < 0.0) != (below < 0.0) || (here < 0.0) != (above < 0.0);
}

// The value is the curve's at 0.612; between which points of the scan the formula crosses it is known beforehand.
void expectInverse(const CQSAbstractProp& curve, const std::function<Real(Real)>& formula) {
  constexpr double kMin = 0.4, kMax = 0.8;
  const double value = evaluate(curve, 0.612, test::kPressure).value;
  const auto pointAt = [&](int i) { return kMin + (kMax - kMin) * i / 63; };
  int changes = 0;
  double lowest = 0.0;
  for (int i = 0; i < 63; ++i)
    if ((formula(pointAt(i)) < value) != (formula(pointAt(i + 1)) < value) && changes++ == 0) lowest = pointAt(i);
  for (const BlockFunctions* functions : supportedBlockFunctions()) {
    const Solution solution = temperatureAt(curve, value, test::kPressure, *functions);
    EXPECT_EQ(solution.crossings, std::min(changes, 2));
    EXPECT_TRUE(lowest - 1e-9 <= solution.temperature && solution.temperature <= lowest + 0.4 / 63 + 1e-9);
    EXPECT_TRUE(isSolution(curve, solution.temperature, value)) << solution.temperature;
  }
}

TEST(Inverse, IsThatOfEveryForm) {
  for (const EquationForm& form : kEquationForms) {
    if (form.shape == PropCurveVoid) continue;
    SCOPED_TRACE(narrow(form.className));
    const auto coefficients = test::coefficientsFor(form);
    expectInverse(*curveOf(form.shape, coefficients, 0.4, 0.8),
                  [&](Real x) { return test::valueOfForm(form, coefficients, x); });
  }
}

TEST(Inverse, IsThatOfEveryTransformation) {
  for (const auto& [shape, formula] : test::transformationFormulas()) {
    SCOPED_TRACE(formula);
    const auto curve = curveOf(PropCurvePOLY2, {0.3, 1.1, 0.0}, 0.4, 0.8);
    curve->SetXYShape(shape, COMx);
    expectInverse(*curve, [text = &formula](Real x) { return 0.3 + 1.1 * test::transformed(*text, x); });

    const auto t = [text = &formula](double y) { return static_cast<double>(test::transformed(*text, y)); };
    const double from = t(0.5), to = t(0.7);
    const auto back = curveOf(PropCurvePOLY2, {2.0 * from - to, to - from, 0.0}, 1.0, 2.0);
    back->SetXYShape(COMx, shape);
    const double value = shape == COMxscale ? -0.6 : 0.6;
    const Solution solution = temperatureAt(*back, value, test::kPressure);
    EXPECT_EQ(solution.crossings, 1);
    EXPECT_NEAR(solution.temperature, 1.0 + (t(0.6) - from) / (to - from), 1e-13);
    EXPECT_TRUE(isSolution(*back, solution.temperature, value));
  }
}

// Steep, flat and noisy curves, and one with an unbounded slope at its end.
TEST(Inverse, CrossesBetweenNeighbours) {
  const std::unique_ptr<CQSAbstractProp> curves[] = {
      curveOf(PropCurveDIPPR101, {66.7, -7258.2, -7.3037, 4.1653e-6, 2.0}, 273.16, 647.1),
      curveOf(PropCurveDIPPR101, {-52.843, 3703.6, 5.866, -5.879e-29, 10.0}, 273.16, 646.15),
      curveOf(PropCurveVELDB4, {600.0, -60000.0, 0.0, 0.0, 1.0}, 100.0, 900.0),
      curveOf(PropCurveDIPPR106, {5e7, 0.05, 0.0, 0.0, 0.0, 647.14}, 273.16, 647.14),
      curveOf(PropCurvePOLY2, {1e9, 1e-6, 0.0}, 1.0, 1000.0),
      curveOf(PropCurveVELDB1, {30.0, 0.01, 1e-5, -1e-9, 1e-13}, 1e-5, 1e10),
  };
  for (const auto& curve : curves) {
    double tMin = 0.0, tMax = 0.0;
    curve->GetTRange(&tMin, &tMax);
    for (int i = 1; i < 200; ++i) {
      const double value = std::nextafter(evaluate(*curve, tMin + (tMax - tMin) * i / 200).value, kInfinity);
      const Solution solution = temperatureAt(*curve, value, test::kPressure);
      EXPECT_GE(solution.crossings, 1);
      EXPECT_TRUE(isSolution(*curve, solution.temperature, value)) << &curve - curves << " " << solution.temperature;
    }
  }
}

TEST(Inverse, OfNoneOneOrSeveral) {
  const auto ofShape = [](LONG shape, double tMin, double tMax) {
    auto curve = curveOf(PropCurvePOLY2, {0.0, 1.0, 0.0}, tMin, tMax);
    curve->SetXYShape(shape, COMx);
    return curve;
  };
  const auto line = [&](double tMin, double tMax) { return ofShape(COMx, tMin, tMax); };
  const auto pole = [&](double at) {  // 2/(T - at) - 1, and a range of which every point of the scan is a whole number
    auto curve = ofShape(COMxppdsm1, 300.0, 363.0);
    curve->SetAB(at + 2.0, at);
    return curve;
  };
  const auto parabola = [](double tMin, double tMax) {
    return curveOf(PropCurvePOLY2, {1e5, -650.0, 1.0}, tMin, tMax);
  };
  const struct {
    const char* what;
    std::unique_ptr<CQSAbstractProp> curve;
    double value;
    int crossings;
    double temperature = kEmptyValue;
  } rows[] = {
      {"the start", line(300.0, 363.0), 300.0, 1, 300.0},
      {"the end", line(300.0, 363.1), 363.1, 1, 363.1},
      {"a point of the scan", line(300.0, 363.0), 317.0, 1, 317.0},
      {"below the range", line(300.0, 363.0), 299.9, 0},
      {"above the range", line(300.0, 363.0), 363.1, 0},
      {"one temperature", line(300.0, 300.0), 300.0, 1, 300.0},
      {"two neighbours", line(300.0, std::nextafter(300.0, 301.0)), 300.0, 1, 300.0},
      {"several", parabola(200.0, 500.0), 0.0, 2, 250.0},
      {"the higher one", parabola(300.0, 500.0), 0.0, 1, 400.0},
      {"twice between two points", parabola(300.5, 363.5), -5624.9, 0},
      {"everywhere", curveOf(PropCurvePOLY2, {5.0, 0.0, 0.0}, 300.0, 400.0), 5.0, 2, 300.0},
      {"after a pole", pole(320.25), 0.0, 1, 322.25},
      {"a pole alone", pole(320.25), -1.0, 0},
      {"a pole between two numbers", ofShape(COMtanx, 1.0, 2.0), 0.0, 0},
      {"a pole next to a point", ofShape(COMtanx, 1.5707963267948966, 2.0), 0.0, 0},
      {"a pole in a point", pole(320.0), -1.0, 0},
      {"before what is no number", ofShape(COMln1mxr, 0.5, 1.5), -3.0, 1, 0.9 * (1.0 - std::exp(-3.0))},
      {"next to what is no number", ofShape(COMln1mxr, 0.5, 1.5), -20.0, 0},
      {"no number", line(300.0, 400.0), kNaN, 0},
      {"infinity", pole(320.0), kInfinity, 0},
      {"the empty value", curveOf(PropCurvePOLY2, {-32767.0, 0.0, 0.0}, 300.0, 400.0), -32767.0, 0},
      {"a range that is none", line(400.0, 300.0), 350.0, 0},
      {"a range from zero", line(0.0, 400.0), 350.0, 0},
      {"a range of no numbers", line(kNaN, 400.0), 350.0, 0},
      {"no form", equation(PropCurveVoid), 1.0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const Solution solution = temperatureAt(*row.curve, row.value, test::kPressure);
    EXPECT_EQ(solution.crossings, row.crossings);
    EXPECT_NEAR(solution.temperature, row.temperature, 1e-15 * std::fabs(row.temperature));
  }
  CQSPointProp constant;
  constant.SetValue(350.0);
  EXPECT_EQ(temperatureAt(constant, 350.0, test::kPressure).crossings, 0);
}

}  // namespace
}  // namespace qs
