// The derivatives that a phase keeps.
#include <algorithm>

#include "com/host_arrays.h"
#include "phase/phase.h"

namespace qs {
namespace {

// What a script passes for a variable: a reference to its variant.
const VARIANT& referred(const VARIANT& value) {
  return value.vt == (VT_BYREF | VT_VARIANT) && value.pvarVal ? *value.pvarVal : value;
}

[[noreturn]] void refuse() { throw CQSCOMError(DISP_E_TYPEMISMATCH); }

template <class I>
ComPtr<I> objectFrom(const VARIANT& value) {
  if (value.vt != VT_DISPATCH) refuse();
  auto object = ComPtr<I>::from(value.pdispVal);
  if (!object) refuse();
  return object;
}

// The elements of a safe array of doubles, locked for as long as this lives.
class LockedReals {
 public:
  explicit LockedReals(SAFEARRAY* array) : array_(array) {
    void* data = nullptr;
    check(SafeArrayAccessData(array_, &data));
    data_ = static_cast<const double*>(data);
  }
  LockedReals(const LockedReals&) = delete;
  LockedReals& operator=(const LockedReals&) = delete;
  ~LockedReals() { SafeArrayUnaccessData(array_); }

  LONG extent(UINT dimension) const {
    LONG first = 0, last = 0;
    check(SafeArrayGetLBound(array_, dimension, &first));
    check(SafeArrayGetUBound(array_, dimension, &last));
    return static_cast<LONG>(static_cast<LONGLONG>(last) - first + 1);
  }
  std::span<const double> first(std::size_t count) const { return {data_, count}; }

 private:
  SAFEARRAY* array_;
  const double* data_;
};

bool holdsReals(const VARIANT& value, UINT dimensions) {
  return value.vt == (VT_ARRAY | VT_R8) && SafeArrayGetDim(value.parray) == dimensions;
}

ComPtr<IRealArrayDisp> arrayFrom(const VARIANT& value) {
  if (!(value.vt & VT_ARRAY)) return objectFrom<IRealArrayDisp>(value);
  if (!holdsReals(value, 1)) refuse();
  const LockedReals reals(value.parray);
  return newRealArray(reals.first(static_cast<std::size_t>(reals.extent(1))));
}

ComPtr<IRealMatrixDisp> matrixFrom(const VARIANT& value) {
  if (!(value.vt & VT_ARRAY)) return objectFrom<IRealMatrixDisp>(value);
  if (!holdsReals(value, 2)) refuse();
  const LockedReals reals(value.parray);
  const LONG rows = reals.extent(1), columns = reals.extent(2);
  return newRealMatrix(rows, columns, reals.first(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns)));
}

}  // namespace

DerivativeRecord* COQSPhase::recordAt(INT index) noexcept {
  return index >= 0 && static_cast<std::size_t>(index) < derivatives_.size()
             ? &derivatives_[static_cast<std::size_t>(index)]
             : nullptr;
}

template <class Action>
HRESULT COQSPhase::withRecord(INT index, Action&& action) noexcept {
  DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  action(*record);
  return S_OK;
}

template <class I>
HRESULT COQSPhase::putObject(INT index, ComPtr<I> DerivativeRecord::*held, I* object) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) {
    if (object) record.*held = ComPtr(object);
  });
}

template <class I>
HRESULT COQSPhase::getObject(INT index, ComPtr<I> DerivativeRecord::*held, tagResultTypeEnum shape,
                             I** object) noexcept {
  if (!object) return E_POINTER;
  const DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  *object = record->shape == shape ? ComPtr(record->*held).release() : nullptr;
  return *object ? S_OK : S_FALSE;
}

INT COQSPhase::indexOf(LONG property, LONG derivative) const noexcept {
  const auto found = std::ranges::find_if(derivatives_, [&](const DerivativeRecord& record) {
    return record.property == property && record.derivative == derivative;
  });
  return found == derivatives_.end() ? kUnset : static_cast<INT>(found - derivatives_.begin());
}

HRESULT COQSPhase::ClearDerivativesProps() noexcept {
  // Releasing the objects of a host may lead back here: the phase must be without records by then.
  DerivativeRecords().swap(derivatives_);
  return S_OK;
}

HRESULT COQSPhase::AddDerivativeProp(LONG property, LONG derivative, tagResultTypeEnum propertyShape,
                                     tagResultTypeEnum shape, INT* index) noexcept {
  if (!index) return E_POINTER;
  return guarded([&] {
    INT found = indexOf(property, derivative);
    if (found == kUnset) {
      found = static_cast<INT>(derivatives_.size());
      DerivativeRecord& record = derivatives_.emplace_back();
      record.property = property;
      record.derivative = derivative;
      record.propertyShape = propertyShape;
      record.shape = shape;
    }
    *index = found;
    return S_OK;
  });
}

HRESULT COQSPhase::GetDerivativePropIndex(LONG property, LONG derivative, INT* index) noexcept {
  if (!index) return E_POINTER;
  *index = indexOf(property, derivative);
  return *index == kUnset ? S_FALSE : S_OK;
}

HRESULT COQSPhase::RemoveDerivativeProp(INT index, LONG property, LONG derivative) noexcept {
  DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  // Both numbers are compared with the record's property number.
  const bool checked = property != kUnset && derivative != kUnset;
  if (checked && (record->property != property || record->property != derivative)) return S_FALSE;
  const DerivativeRecord removed = std::move(*record);
  derivatives_.erase(derivatives_.begin() + index);
  return S_OK;
}

HRESULT COQSPhase::GetNumDerivativeProps(INT* count) noexcept {
  if (!count) return E_POINTER;
  *count = static_cast<INT>(derivatives_.size());
  return S_OK;
}

HRESULT COQSPhase::GetDerivativePropIDs(INT index, LONG* property, LONG* derivative) noexcept {
  if (!property || !derivative) return E_POINTER;
  const DerivativeRecord* record = recordAt(index);
  *property = record ? record->property : kUnset;
  *derivative = record ? record->derivative : kUnset;
  return record ? S_OK : S_FALSE;
}

HRESULT COQSPhase::SetNeedDerivative(INT index, BYTE needed) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.needed = needed; });
}

HRESULT COQSPhase::GetNeedDerivative(INT index, BYTE* needed) noexcept {
  if (!needed) return E_POINTER;
  return withRecord(index, [&](const DerivativeRecord& record) { *needed = record.needed; });
}

HRESULT COQSPhase::SetDerivativeStatus(INT index, tagDerivativeStatusEnum status) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.status = status; });
}

HRESULT COQSPhase::GetDerivativeStatus(INT index, tagDerivativeStatusEnum* status) noexcept {
  if (!status) return E_POINTER;
  return withRecord(index, [&](const DerivativeRecord& record) { *status = record.status; });
}

HRESULT COQSPhase::PutPointDerivative(INT index, double value) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.point = value; });
}

HRESULT COQSPhase::GetPointDerivative(INT index, double* value) noexcept {
  if (!value) return E_POINTER;
  const DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  *value = record->shape == RealPoint ? record->point : kUnset;
  return record->shape == RealPoint ? S_OK : S_FALSE;
}

HRESULT COQSPhase::PutArrayDerivative(INT index, IRealArrayDisp* array) noexcept {
  return putObject(index, &DerivativeRecord::array, array);
}

HRESULT COQSPhase::GetArrayDerivative(INT index, IRealArrayDisp** array) noexcept {
  return getObject(index, &DerivativeRecord::array, RealArray, array);
}

HRESULT COQSPhase::PutMatrixDerivative(INT index, IRealMatrixDisp* matrix) noexcept {
  return putObject(index, &DerivativeRecord::matrix, matrix);
}

HRESULT COQSPhase::GetMatrixDerivative(INT index, IRealMatrixDisp** matrix) noexcept {
  return getObject(index, &DerivativeRecord::matrix, RealMatrix, matrix);
}

HRESULT COQSPhase::PutVariantDerivative(INT index, VARIANT value) noexcept {
  return guarded([&] {
    const DerivativeRecord* record = recordAt(index);
    if (!record) return S_FALSE;
    const VARIANT& given = referred(value);
    switch (record->shape) {
      case RealPoint:
        if (given.vt != VT_R8) refuse();
        return PutPointDerivative(index, given.dblVal);
      case RealArray:
        return PutArrayDerivative(index, arrayFrom(given).get());
      case RealMatrix:
        return PutMatrixDerivative(index, matrixFrom(given).get());
      default:
        refuse();
    }
  });
}

HRESULT COQSPhase::GetVariantDerivative(INT index, VARIANT* value) noexcept {
  if (!value) return E_POINTER;
  const DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  Variant held;
  if (record->shape == RealPoint && record->point != kUnset) held = Variant(record->point);
  if (record->shape == RealArray && record->array) held = Variant(ComPtr<IDispatch>(record->array.get()));
  if (record->shape == RealMatrix && record->matrix) held = Variant(ComPtr<IDispatch>(record->matrix.get()));
  *value = held.release();
  return value->vt == VT_EMPTY ? S_FALSE : S_OK;
}

HRESULT COQSPhase::GetResultValueType(INT index, tagResultTypeEnum* propertyShape, tagResultTypeEnum* shape) noexcept {
  if (!propertyShape || !shape) return E_POINTER;
  return withRecord(index, [&](const DerivativeRecord& record) {
    *propertyShape = record.propertyShape;
    *shape = record.shape;
  });
}

HRESULT COQSPhase::PutDerivativeType(INT index, tagDerivativeTypeEnum method) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.method = method; });
}

HRESULT COQSPhase::GetDerivativeType(INT index, tagDerivativeTypeEnum* method) noexcept {
  if (!method) return E_POINTER;
  return withRecord(index, [&](const DerivativeRecord& record) { *method = record.method; });
}

}  // namespace qs
