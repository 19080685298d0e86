// The values of properties in one call: of one at many temperatures, or of many at one.
#pragma once

#include <limits>
#include <span>

#include "props/block_functions.h"
#include "props/curve.h"
#include "props/property.h"

namespace qs {

// Numbers from the first on need no comparison with the empty value, those to the second are finite.
inline constexpr double kAboveEmpty = -32766.0, kMostNumber = std::numeric_limits<double>::max();

// Writes to `values`, which has as many places and may be the same array, what GetValue writes at each of the
// temperatures, in K, and pressure P, in kPa: bit for bit the same, and `noValue` in the place of the empty value and
// where it writes nothing. Returns true only where all of them are known to be finite and above kAboveEmpty.
// Allocates nothing for constants and equations, and leaves the floating-point state as it was; the host's exceptions
// are masked while an equation is evaluated. An external component is asked for each value; the caller keeps the
// property alive meanwhile. Throws what GetValue throws.
bool evaluate(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
              const BlockFunctions& functions = *supportedBlockFunctions().back(), double noValue = kEmptyValue);

// The same with the derivatives by T, per K: bit for bit the first of derivativesOf, and `noValue` where it has no
// result and for an external component. Either array may be that of the temperatures.
void evaluateWithSlopes(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
                        double* slopes, const BlockFunctions& functions = *supportedBlockFunctions().back(),
                        double noValue = kEmptyValue);

// The values at one temperature of properties that are equations within their ranges, together those that are alike: of
// one form, with exponents multiplied out alike and without transformations but of ln Y. The empty value for null, and
// for those that must be evaluated by themselves.
void evaluateAlike(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
                   std::span<const BlockFunctions* const> functions = supportedBlockFunctions());

}  // namespace qs
