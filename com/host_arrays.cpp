#include "com/host_arrays.h"

#include "com/query.h"

namespace qs {
namespace {

template <class Array>
ComPtr<Array> newObject(REFCLSID clsid) {
  ComPtr<IDispatch> created;
  check(created.create(clsid, CLSCTX_ALL));
  return required<Array>(created.get());
}

template <class Array, class T>
ComPtr<Array> newArray(REFCLSID clsid, std::span<const T> values) {
  auto array = newObject<Array>(clsid);
  setElements(array.get(), values);
  return array;
}

}  // namespace

ComPtr<IIntegerArrayDisp> newIntegerArray(std::span<const LONG> values) {
  return newArray<IIntegerArrayDisp>(__uuidof(HostIntegerArray), values);
}

ComPtr<IRealArrayDisp> newRealArray(std::span<const double> values) {
  return newArray<IRealArrayDisp>(__uuidof(HostRealArray), values);
}

ComPtr<IRealMatrixDisp> newRealMatrix(LONG rows, LONG columns, std::span<const double> values) {
  auto matrix = newObject<IRealMatrixDisp>(__uuidof(HostRealMatrix));
  check(matrix->SetSize(rows, columns));
  auto value = values.begin();
  for (LONG column = 0; column < columns; ++column)
    for (LONG row = 0; row < rows; ++row) check(matrix->put_Value(row, column, *value++));
  return matrix;
}

}  // namespace qs
