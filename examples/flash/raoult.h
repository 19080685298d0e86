// The thermodynamics of the flash example, which is the host's: ideal phases in equilibrium (Raoult's law) at a given
// temperature and pressure.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

namespace flash {

struct Split {
  double vapourFraction;               // moles of vapour per mole of feed
  std::vector<double> liquid, vapour;  // mole fractions
};

// The equation of Rachford and Rice: zero at the vapour fraction where the mole fractions of both phases add up to one.
// `feed` are mole fractions, `ratios` the equilibrium ratios y/x.
inline double rachfordRice(const std::vector<double>& feed, const std::vector<double>& ratios, double vapourFraction) {
  double sum = 0;
  for (std::size_t i = 0; i < feed.size(); ++i)
    sum += feed[i] * (ratios[i] - 1) / (1 + vapourFraction * (ratios[i] - 1));
  return sum;
}

// Newton's method between the bubble point and the dew point, where the function falls; outside, a single phase.
inline double solveVapourFraction(const std::vector<double>& feed, const std::vector<double>& ratios) {
  if (rachfordRice(feed, ratios, 0) <= 0) return 0;
  if (rachfordRice(feed, ratios, 1) >= 0) return 1;
  double low = 0, high = 1, fraction = 0.5;
  for (int i = 0; i < 100; ++i) {
    double value = 0, slope = 0;
    for (std::size_t j = 0; j < feed.size(); ++j) {
      const double term = (ratios[j] - 1) / (1 + fraction * (ratios[j] - 1));
      value += feed[j] * term;
      slope -= feed[j] * term * term;
    }
    (value > 0 ? low : high) = fraction;
    double next = fraction - value / slope;
    if (!(next > low && next < high)) next = (low + high) / 2;
    if (std::abs(next - fraction) < 1e-15) return next;
    fraction = next;
  }
  return fraction;
}

// Splits a feed. Both compositions are given for a single phase too: that of the absent phase is the one that would
// form first, up to its sum.
inline Split isothermal(const std::vector<double>& feed, const std::vector<double>& ratios) {
  Split split{solveVapourFraction(feed, ratios), {}, {}};
  for (std::size_t i = 0; i < feed.size(); ++i) {
    split.liquid.push_back(feed[i] / (1 + split.vapourFraction * (ratios[i] - 1)));
    split.vapour.push_back(ratios[i] * split.liquid.back());
  }
  return split;
}

}  // namespace flash
