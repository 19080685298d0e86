// The derivatives that a phase keeps.
#include <algorithm>

#include "automation/script_values.h"
#include "phase/phase.h"

namespace qs {
namespace {

// An array or a matrix that a caller gives.
template <class I>
ComPtr<I> shapeFrom(const VARIANT& value) {
  auto shape = interfaceFrom<I>(value);
  if (!shape) fail(DISP_E_TYPEMISMATCH, {"the derivative is an array or a matrix, and the value is none"});
  return shape;
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
HRESULT COQSPhase::getObject(INT index, ComPtr<I> DerivativeRecord::*held, tagResultTypeEnum shape, I** object,
                             const char* member) noexcept {
  if (!object) return report(E_POINTER, {}, member);
  const DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  *object = record->shape == shape ? ComPtr(record->*held).release() : nullptr;
  return *object ? S_OK : S_FALSE;
}

INT COQSPhase::indexOf(LONG property, LONG derivative) const noexcept {
  const auto found = std::ranges::find_if(derivatives_, [&](const DerivativeRecord& record) {
    return record.property == property && record.derivative == derivative;
  });
  return found == derivatives_.end() ? kEmptyInteger : static_cast<INT>(found - derivatives_.begin());
}

HRESULT COQSPhase::ClearDerivativesProps() noexcept {
  // Releasing a host's objects may call back; by then the phase must have no records.
  DerivativeRecords().swap(derivatives_);
  return S_OK;
}

HRESULT COQSPhase::AddDerivativeProp(LONG property, LONG derivative, tagResultTypeEnum propertyShape,
                                     tagResultTypeEnum shape, INT* index) noexcept {
  if (!index) return report(E_POINTER);
  return guarded([&] {
    INT found = indexOf(property, derivative);
    if (found == kEmptyInteger) {
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
  if (!index) return report(E_POINTER);
  *index = indexOf(property, derivative);
  return *index == kEmptyInteger ? S_FALSE : S_OK;
}

HRESULT COQSPhase::RemoveDerivativeProp(INT index, LONG property, LONG derivative) noexcept {
  DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  // Both numbers are compared with the record's property number.
  const bool checked = property != kEmptyInteger && derivative != kEmptyInteger;
  if (checked && (record->property != property || record->property != derivative)) return S_FALSE;
  const DerivativeRecord removed = std::move(*record);
  derivatives_.erase(derivatives_.begin() + index);
  return S_OK;
}

HRESULT COQSPhase::GetNumDerivativeProps(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = static_cast<INT>(derivatives_.size());
  return S_OK;
}

HRESULT COQSPhase::GetDerivativePropIDs(INT index, LONG* property, LONG* derivative) noexcept {
  if (!property || !derivative) return report(E_POINTER);
  const DerivativeRecord* record = recordAt(index);
  *property = record ? record->property : kEmptyInteger;
  *derivative = record ? record->derivative : kEmptyInteger;
  return record ? S_OK : S_FALSE;
}

HRESULT COQSPhase::SetNeedDerivative(INT index, BYTE needed) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.needed = needed; });
}

HRESULT COQSPhase::GetNeedDerivative(INT index, BYTE* needed) noexcept {
  if (!needed) return report(E_POINTER);
  return withRecord(index, [&](const DerivativeRecord& record) { *needed = record.needed; });
}

HRESULT COQSPhase::SetDerivativeStatus(INT index, tagDerivativeStatusEnum status) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.status = status; });
}

HRESULT COQSPhase::GetDerivativeStatus(INT index, tagDerivativeStatusEnum* status) noexcept {
  if (!status) return report(E_POINTER);
  return withRecord(index, [&](const DerivativeRecord& record) { *status = record.status; });
}

HRESULT COQSPhase::PutPointDerivative(INT index, double value) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.point = value; });
}

HRESULT COQSPhase::GetPointDerivative(INT index, double* value) noexcept {
  if (!value) return report(E_POINTER);
  const DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  *value = record->shape == RealPoint ? record->point : kEmptyValue;
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
    switch (record->shape) {
      case RealPoint:
        if (behind(value).vt == VT_EMPTY)
          return because(DISP_E_TYPEMISMATCH, {"the derivative is a number, and the value is empty"});
        return PutPointDerivative(index, numberFrom(value));
      case RealArray:
        return PutArrayDerivative(index, shapeFrom<IRealArrayDisp>(value).get());
      case RealMatrix:
        return PutMatrixDerivative(index, shapeFrom<IRealMatrixDisp>(value).get());
      default:
        return because(DISP_E_TYPEMISMATCH, {"the derivative has the shape ", record->shape, ", which takes no value"});
    }
  });
}

HRESULT COQSPhase::GetVariantDerivative(INT index, VARIANT* value) noexcept {
  if (!value) return report(E_POINTER);
  const DerivativeRecord* record = recordAt(index);
  if (!record) return S_FALSE;
  Variant held;
  if (record->shape == RealPoint && record->point != kEmptyValue) held = Variant(record->point);
  if (record->shape == RealArray && record->array) held = Variant(ComPtr<IDispatch>(record->array.get()));
  if (record->shape == RealMatrix && record->matrix) held = Variant(ComPtr<IDispatch>(record->matrix.get()));
  *value = held.release();
  return value->vt == VT_EMPTY ? S_FALSE : S_OK;
}

HRESULT COQSPhase::GetResultValueType(INT index, tagResultTypeEnum* propertyShape, tagResultTypeEnum* shape) noexcept {
  if (!propertyShape || !shape) return report(E_POINTER);
  return withRecord(index, [&](const DerivativeRecord& record) {
    *propertyShape = record.propertyShape;
    *shape = record.shape;
  });
}

HRESULT COQSPhase::PutDerivativeType(INT index, tagDerivativeTypeEnum method) noexcept {
  return withRecord(index, [&](DerivativeRecord& record) { record.method = method; });
}

HRESULT COQSPhase::GetDerivativeType(INT index, tagDerivativeTypeEnum* method) noexcept {
  if (!method) return report(E_POINTER);
  return withRecord(index, [&](const DerivativeRecord& record) { *method = record.method; });
}

}  // namespace qs
