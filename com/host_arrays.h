// Array objects of the host's own classes, made from values.
#pragma once

#include <span>

#include "com/com_ptr.h"
#include "com/interfaces.h"

namespace qs {

// A new array with the values given. Throws CQSCOMError with the result of the class object or the call that failed, as
// REGDB_E_CLASSNOTREG where the host brings no such class.
ComPtr<IIntegerArrayDisp> newIntegerArray(std::span<const LONG> values);
ComPtr<IRealArrayDisp> newRealArray(std::span<const double> values);
// The same for a matrix, from its elements column by column.
ComPtr<IRealMatrixDisp> newRealMatrix(LONG rows, LONG columns, std::span<const double> values);

}  // namespace qs
