#include "hostkit/arrays.h"

#include <algorithm>
#include <limits>

#include "com/query.h"

namespace qs::hostkit {
namespace {

HRESULT tooLarge(LONG rows, LONG columns) noexcept {
  return because(E_OUTOFMEMORY, {"a matrix of ", rows, " by ", columns, " does not fit in memory"});
}

}  // namespace

double* RealMatrix::element(LONG row, LONG column) {
  if (row < 0 || row >= rows_ || column < 0 || column >= columns_) return nullptr;
  return values_.data() + area(row, columns_) + column;
}

HRESULT RealMatrix::outside(LONG row, LONG column, const char* member) const noexcept {
  return report(E_BOUNDS, {"row ", row, ", column ", column, " is outside a matrix of ", rows_, " by ", columns_},
                member);
}

HRESULT RealMatrix::get_Value(LONG row, LONG column, double* value) noexcept {
  if (!value) return report(E_POINTER);
  const double* found = element(row, column);
  if (!found) return outside(row, column);
  *value = *found;
  return S_OK;
}

HRESULT RealMatrix::put_Value(LONG row, LONG column, double value) noexcept {
  double* found = element(row, column);
  if (!found) return outside(row, column);
  *found = value;
  return S_OK;
}

HRESULT RealMatrix::get_Rows(LONG* rows) noexcept {
  if (!rows) return report(E_POINTER);
  *rows = rows_;
  return S_OK;
}

HRESULT RealMatrix::get_Columns(LONG* columns) noexcept {
  if (!columns) return report(E_POINTER);
  *columns = columns_;
  return S_OK;
}

LONG ElementsOf<IRealMatrixDisp>::count() {
  LONG count = 0;
  check(required<IElements>(array.get())->get_Count(&count));
  return count;
}

Variant ElementsOf<IRealMatrixDisp>::at(LONG position) {
  LONG columns = 0;
  check(array->get_Columns(&columns));
  double value = 0.0;
  check(array->get_Value(position / columns, position % columns, &value));
  return Variant(value);
}

HRESULT RealMatrix::get_Count(LONG* count) noexcept {
  if (!count) return report(E_POINTER);
  if (values_.size() > static_cast<std::size_t>(std::numeric_limits<LONG>::max()))
    return report(E_BOUNDS, {"the matrix has more elements than a count can say"});
  *count = static_cast<LONG>(values_.size());
  return S_OK;
}

HRESULT RealMatrix::get__NewEnum(IUnknown** enumerator) noexcept {
  return newEnumerator(ElementsOf<IRealMatrixDisp>{ComPtr<IRealMatrixDisp>(this)}, enumerator);
}

HRESULT RealMatrix::SetSize(LONG rows, LONG columns) noexcept {
  if (rows < 0 || columns < 0) return report(E_INVALIDARG, {"the size is ", rows, " by ", columns});
  return guarded([&] {
    if (area(rows, columns) > values_.max_size()) return tooLarge(rows, columns);
    std::vector<double> values(static_cast<std::size_t>(area(rows, columns)), Elements<double>::kEmpty);
    const LONG keptColumns = std::min(columns, columns_);
    for (LONG row = 0; row < std::min(rows, rows_); ++row)
      std::copy_n(values_.data() + area(row, columns_), keptColumns, values.data() + area(row, columns));
    values_.swap(values);
    rows_ = rows;
    columns_ = columns;
    return S_OK;
  });
}

HRESULT RealMatrix::Copy(IRealMatrixDisp* source) noexcept {
  if (!source) return report(E_INVALIDARG, {"the matrix to copy is null"});
  return guarded([&] {
    LONG rows = 0;
    LONG columns = 0;
    check(source, source->get_Rows(&rows), {"the rows of the matrix to copy"});
    check(source, source->get_Columns(&columns), {"the columns of the matrix to copy"});
    if (rows < 0 || columns < 0)
      return because(E_INVALIDARG, {"the matrix to copy has the size ", rows, " by ", columns});
    if (area(rows, columns) > values_.max_size()) return tooLarge(rows, columns);
    std::vector<double> values;
    for (LONG row = 0; row < rows; ++row)
      for (LONG column = 0; column < columns; ++column) {
        double value = 0.0;
        if (const HRESULT got = source->get_Value(row, column, &value); FAILED(got))
          fail(source, got, {"row ", row, ", column ", column, " of the matrix to copy"});
        values.push_back(value);
      }
    values_.swap(values);
    rows_ = rows;
    columns_ = columns;
    return S_OK;
  });
}

}  // namespace qs::hostkit
