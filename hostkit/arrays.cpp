#include "hostkit/arrays.h"

#include <algorithm>

namespace qs::hostkit {

double* RealMatrix::element(LONG row, LONG column) {
  if (row < 0 || row >= rows_ || column < 0 || column >= columns_) return nullptr;
  return values_.data() + area(row, columns_) + column;
}

HRESULT RealMatrix::get_Value(LONG row, LONG column, double* value) noexcept {
  if (!value) return E_POINTER;
  const double* found = element(row, column);
  if (!found) return E_BOUNDS;
  *value = *found;
  return S_OK;
}

HRESULT RealMatrix::put_Value(LONG row, LONG column, double value) noexcept {
  double* found = element(row, column);
  if (!found) return E_BOUNDS;
  *found = value;
  return S_OK;
}

HRESULT RealMatrix::get_Rows(LONG* rows) noexcept {
  if (!rows) return E_POINTER;
  *rows = rows_;
  return S_OK;
}

HRESULT RealMatrix::get_Columns(LONG* columns) noexcept {
  if (!columns) return E_POINTER;
  *columns = columns_;
  return S_OK;
}

HRESULT RealMatrix::SetSize(LONG rows, LONG columns) noexcept {
  if (rows < 0 || columns < 0) return E_INVALIDARG;
  return guarded([&] {
    if (area(rows, columns) > values_.max_size()) return E_OUTOFMEMORY;
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
  if (!source) return E_INVALIDARG;
  return guarded([&] {
    LONG rows = 0;
    LONG columns = 0;
    check(source->get_Rows(&rows));
    check(source->get_Columns(&columns));
    if (rows < 0 || columns < 0) return E_INVALIDARG;
    if (area(rows, columns) > values_.max_size()) return E_OUTOFMEMORY;
    std::vector<double> values;
    for (LONG row = 0; row < rows; ++row)
      for (LONG column = 0; column < columns; ++column) {
        double value = 0.0;
        check(source->get_Value(row, column, &value));
        values.push_back(value);
      }
    values_.swap(values);
    rows_ = rows;
    columns_ = columns;
    return S_OK;
  });
}

}  // namespace qs::hostkit
