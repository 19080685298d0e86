// Correlation equations: property objects that depend on temperature.
#pragma once

#include "props/property.h"

namespace qs {

// Creates the equation of a tagEquationShapeEnum, of type EquationProp, with empty coefficients, for the caller to
// own. E_FAIL, with *out as it was, for a number that is no shape; E_OUTOFMEMORY, with *out null.
HRESULT CreateEquationProp(LONG shape, CQSAbstractProp** out);

}  // namespace qs
