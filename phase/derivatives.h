// The derivatives that a phase keeps for its host, one record per property and derivative identifier.
#pragma once

#include <vector>

#include "com/com_ptr.h"
#include "interfaces/interfaces.h"
#include "phase/state.h"

namespace qs {

struct DerivativeRecord {
  LONG property = kEmptyInteger;
  LONG derivative = kEmptyInteger;
  tagResultTypeEnum propertyShape = NoResultType;
  tagResultTypeEnum shape = NoResultType;
  BYTE needed = 0;
  tagDerivativeStatusEnum status = xdsNoDerivativeStatus;
  tagDerivativeTypeEnum method = NoDerivativeType;
  double point = kEmptyValue;
  ComPtr<IRealArrayDisp> array;
  ComPtr<IRealMatrixDisp> matrix;
};

using DerivativeRecords = std::vector<DerivativeRecord>;

}  // namespace qs
