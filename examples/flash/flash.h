// The calculation of the flash example, which is the host's: it reads properties from compounds, splits a feed and
// stores what it finds in phases. Failing calls end it with qs::Error.
#pragma once

#include <qscontainers.hpp>

#include <string_view>
#include <vector>

namespace flash {

using Reals = std::vector<double>;

struct Feed {
  Reals composition;   // mole fractions
  double temperature;  // K
  double pressure;     // kPa
};

// The number of a name among a host's properties.
LONG numberOf(const qs::ComPtr<IEnumeratedPropertyRegistry>& registry, std::string_view name);

// Flashes a feed of ideal phases. `phases` were made for these compounds, one feed and at least two equilibrium phases,
// with the numbers of `registry`. They keep the feed, the vapour (equilibrium phase 0) and the liquid (1) with
// conditions, molar fractions, compositions and ln fugacity coefficients, the liquid also the derivative of these in
// temperature. A phase that does not form is inactive and of fraction 0; what it keeps as its composition would form
// first.
void calculate(const qs::Collection& compounds, const Feed& feed, const qs::Phases& phases,
               const qs::ComPtr<IEnumeratedPropertyRegistry>& registry);

}  // namespace flash
