// The temperature at which an equation has a value.
#pragma once

#include "props/block_functions.h"
#include "props/property.h"

namespace qs {

struct Solution {
  double temperature = kEmptyValue;  // in K, the lowest that was found
  int crossings = 0;                 // 0 none, 1 one, 2 several
};

// Where the equation, at pressure P in kPa, has a value within its temperature range. 64 points spread evenly over the
// range are looked at, so that what crosses the value twice between two of them is not found. Each change of sign is
// refined until GetValue gives the value or changes sign between neighbouring numbers, of which the temperature is the
// nearer one. A point that has the value is a solution; a change of sign at a pole is none, nor is one beside a point
// without a number. None too for a property that is no equation, and for a range or a value that is not finite.
Solution temperatureAt(const CQSAbstractProp& equation, double value, double P,
                       const BlockFunctions& functions = *supportedBlockFunctions().back());

}  // namespace qs
