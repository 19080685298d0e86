// The thermodynamics of the flash example, against the same flash solved by bisection in extended precision.
#include <gtest/gtest.h>

#include <numeric>

#include "examples/flash/raoult.h"

namespace qs::test {
namespace {

struct Mixture {
  const char* name;
  std::vector<double> feed, ratios;
};
const Mixture kMixtures[] = {
    {"five compounds", {0.15, 0.25, 0.30, 0.20, 0.10}, {7.5, 2.4, 0.76, 0.26, 0.09}},
    {"near the bubble point", {0.2, 0.8}, {2.0, 0.75001}},
    {"near the dew point", {0.5, 0.5}, {3.0, 0.59999}},
    {"wide boiling", {0.01, 0.98, 0.01}, {1e4, 1.02, 1e-4}},
};

long double bisected(const Mixture& mixture) {
  long double low = 0, high = 1;
  for (int i = 0; i < 200; ++i) {
    const long double middle = (low + high) / 2;
    long double liquid = 0, vapour = 0;
    for (std::size_t j = 0; j < mixture.feed.size(); ++j) {
      const long double ratio = mixture.ratios[j];
      const long double x = mixture.feed[j] / (1 - middle + middle * ratio);
      liquid += x;
      vapour += x * ratio;
    }
    (vapour > liquid ? low : high) = middle;
  }
  return low;
}

TEST(FlashExample, AgreesWithTheFlashWrittenDirectly) {
  for (const Mixture& mixture : kMixtures) {
    SCOPED_TRACE(mixture.name);
    const flash::Split split = flash::isothermal(mixture.feed, mixture.ratios);
    EXPECT_NEAR(split.vapourFraction, static_cast<double>(bisected(mixture)), 1e-10);
    EXPECT_GT(split.vapourFraction, 0.0);
    EXPECT_LT(split.vapourFraction, 1.0);
    EXPECT_NEAR(std::accumulate(split.liquid.begin(), split.liquid.end(), 0.0), 1.0, 1e-10);
    EXPECT_NEAR(std::accumulate(split.vapour.begin(), split.vapour.end(), 0.0), 1.0, 1e-10);
    for (std::size_t i = 0; i < mixture.feed.size(); ++i) {
      EXPECT_NEAR(split.vapourFraction * split.vapour[i] + (1 - split.vapourFraction) * split.liquid[i],
                  mixture.feed[i], 1e-10);
    }
  }
}

TEST(FlashExample, OnePhaseOutsideTheEnvelope) {
  EXPECT_EQ(flash::isothermal({0.5, 0.5}, {0.9, 0.5}).vapourFraction, 0.0);
  EXPECT_EQ(flash::isothermal({0.5, 0.5}, {2.0, 1.1}).vapourFraction, 1.0);
}

}  // namespace
}  // namespace qs::test
