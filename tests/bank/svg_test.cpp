#include "bank/svg.h"

#include <gmock/gmock.h>

#include <cmath>
#include <sstream>

namespace {

using namespace qs::bank;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

TEST(Ticks, AreRoundNumbersWithinTheRange) {
  EXPECT_THAT(roundTicks(0.0, 1.0, 6), ElementsAre(0.0, 0.2, 0.4, 0.6, 0.8, 1.0));
  EXPECT_THAT(roundTicks(-0.35, 0.35, 5), ElementsAre(-0.2, 0.0, 0.2));
  EXPECT_THAT(roundTicks(163.1, 589.8, 6), ElementsAre(200.0, 300.0, 400.0, 500.0));
  EXPECT_THAT(roundTicks(4.1e-5, 2.2e-4, 5), ElementsAre(5e-5, 1e-4, 1.5e-4, 2e-4));
  EXPECT_THAT(logarithmicTicks(0.003, 20.0, 5), ElementsAre(0.01, 0.1, 1.0, 10.0));
  EXPECT_THAT(logarithmicTicks(3.0, 150.0, 6), ElementsAre(5.0, 10.0, 20.0, 50.0, 100.0));
  EXPECT_THAT(logarithmicTicks(1e-30, 1e30, 5), ElementsAre(1e-24, 1e-12, 1.0, 1e12, 1e24));
}

TEST(Ticks, AreFewForEveryRange) {
  const double huge = 1e300;
  for (const auto& [from, to] : std::vector<std::pair<double, double>>{{huge, std::nextafter(huge, 2e300)},
                                                                       {-1.7e308, 1.7e308},
                                                                       {0.0, 5e-324},
                                                                       {1.0, 1.0},
                                                                       {2.0, 1.0},
                                                                       {0.0, kNone}})
    EXPECT_THAT(roundTicks(from, to, 5), SizeIs(testing::Le(5u))) << from << ' ' << to;
}

Chart chartOf(std::vector<double> x, std::vector<double> y) {
  Chart chart;
  chart.x = std::move(x);
  chart.curves.push_back({"", std::move(y)});
  return chart;
}

std::string drawn(const Chart& chart) {
  Markup markup;
  appendChart(markup, chart);
  return markup.take();
}

// The axis is 524 wide with 3 % room at both ends, and 274 high.
TEST(Chart, DrawsCurvesInterruptedWhereThereIsNoNumber) {
  EXPECT_THAT(drawn(chartOf({0, 50, 100}, {0, 10, 0})),
              HasSubstr("<path class=\"l\" d=\"M111 294l247-254 247 254\"/>"));
  EXPECT_THAT(drawn(chartOf({0, 25, 50, 75, 100}, {0, kNone, 10, 0, INFINITY})),
              HasSubstr("d=\"M111 294h0M358 40l124 254\"/>"));
  EXPECT_THAT(drawn(chartOf({5}, {3})), HasSubstr("d=\"M358 167h0\"/>"));
  EXPECT_THAT(drawn(chartOf({11, 9}, {3, 3})), HasSubstr("d=\"M605 167l-494 0\"/>"));
  EXPECT_THAT(drawn(chartOf({}, {})), HasSubstr("<path class=\"l\" d=\"\"/>"));
}

TEST(Chart, IsLogarithmicWhereThatSuits) {
  EXPECT_THAT(drawn(chartOf({0, 1, 2}, {1, 10, 100})), HasSubstr("M111 304l247-137 247-137\""));
  EXPECT_THAT(drawn(chartOf({0, 1, 2}, {1, 10, 40})), Not(HasSubstr("l247-137")));
  EXPECT_THAT(drawn(chartOf({0, 1, 2}, {-1, 10, 100})), Not(HasSubstr("l247-137")));
}

TEST(Chart, MarksWhatIsWithinTheAxis) {
  Chart chart = chartOf({200, 400}, {1, 2});
  chart.title = "<&\">";
  chart.marks = {{300, "Tb"}, {500, "Tc"}};
  chart.limits = {200, 1e10};
  chart.isDoubtful = true;
  const std::string text = drawn(chart);
  EXPECT_THAT(text, HasSubstr("aria-label=\"&lt;&amp;&quot;&gt;\" class=\"d\""));
  EXPECT_THAT(text, HasSubstr("Tb</tspan>"));
  EXPECT_THAT(text, HasSubstr("<path class=\"m\" d=\"M358 30V304\"/><path class=\"i\" d=\"M111 30V304\"/>"));
  EXPECT_THAT(text, Not(HasSubstr("Tc")));
}

TEST(Chart, HasPlacesForEveryNumber) {
  constexpr double kMost = 0.9e290;
  for (const auto& y : std::vector<std::vector<double>>{{-kMost, kMost},
                                                        {0, 5e-324},
                                                        {kMost, kMost},
                                                        {5e-324, kMost},
                                                        {1, std::nextafter(1.0, 2.0)},
                                                        {kNone, kNone}}) {
    const std::string text = drawn(chartOf({1, 2}, y));
    std::istringstream curve(text.substr(text.find("class=\"l\" d=\"M") + 14));
    int x = 0, begin = 0;
    if (std::isfinite(y[0])) {
      ASSERT_TRUE(curve >> x >> begin);
      EXPECT_THAT(begin, testing::AllOf(testing::Ge(30), testing::Le(304))) << text;
    }
    EXPECT_THAT(text, Not(testing::AnyOf(HasSubstr("nan"), HasSubstr("inf")))) << y[0] << ' ' << y[1];
  }
}

}  // namespace
