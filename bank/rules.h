// The rules, by the files that have them; docs/checks.md describes each.
#pragma once

#include "bank/examination.h"

namespace qs::bank {

// identity_rules.cpp
void storableCompound(const Subject&, Findings&);
void storableBank(const Source&, Findings&);
void casCheckDigit(const Subject&, Findings&);
void formula(const Subject&, Findings&);
void molecularWeight(const Subject&, Findings&);
void sameCas(const Source&, Findings&);
void sameName(const Source&, Findings&);
void sameCoefficients(const Source&, Findings&);

// constant_rules.cpp
void bounds(const Subject&, Findings&);
void order(const Subject&, Findings&);
void criticalCompressibility(const Subject&, Findings&);
void formation(const Subject&, Findings&);
void combustion(const Subject&, Findings&);
void doubtful(const Subject&, Findings&);

// curve_rules.cpp
void finite(const Subject&, Findings&);
void limits(const Subject&, Findings&);
void monotony(const Subject&, Findings&);
void criticalZero(const Subject&, Findings&);

// consistency_rules.cpp
void boilingPoint(const Subject&, Findings&);
void criticalPressure(const Subject&, Findings&);
void acentricFactor(const Subject&, Findings&);
void clapeyron(const Subject&, Findings&);
void trouton(const Subject&, Findings&);
void liquidDensity(const Subject&, Findings&);
void standardDensity(const Subject&, Findings&);
void liquidViscosity(const Subject&, Findings&);
void idealGas(const Subject&, Findings&);

}  // namespace qs::bank
