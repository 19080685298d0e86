// The calculation of the flash example, which is the host's: it reads properties from compounds, splits a feed and
// stores what it finds in phases. Failing calls end it with std::runtime_error.
#pragma once

#include <string>
#include <vector>

#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace flash {

using qs::ComPtr;
using Reals = std::vector<double>;

struct Feed {
  Reals composition;   // mole fractions
  double temperature;  // K
  double pressure;     // kPa
};

// A call that must succeed; `what` names it in the error.
void must(HRESULT result, const std::string& what);

ComPtr<IBasicCompound> compoundAt(const ComPtr<ICompoundCollection>& compounds, INT index);

// A property of a compound that must be set.
using Getter = HRESULT (STDMETHODCALLTYPE IBasicCompound::*)(double, double, tagExtrapolationEnum, LONG*, double*);
double valueOf(const ComPtr<IBasicCompound>& compound, Getter getter, double temperature, double pressure);

// The number of a name among a host's properties.
LONG numberOf(const ComPtr<IEnumeratedPropertyRegistry>& registry, const OLECHAR* name);

// Flashes a feed of ideal phases. `phases` are finalized for these compounds, one feed and at least two equilibrium
// phases, with the numbers of `registry`. They keep the feed, the vapour (equilibrium phase 0) and the liquid (1) with
// conditions, molar fractions, compositions and ln fugacity coefficients, the liquid also the derivative of these in
// temperature. A phase that does not form is inactive and of fraction 0; what it keeps as its composition would form
// first.
void calculate(const ComPtr<ICompoundCollection>& compounds, const Feed& feed, const ComPtr<IPhaseCollection>& phases,
               const ComPtr<IEnumeratedPropertyRegistry>& registry);

}  // namespace flash
