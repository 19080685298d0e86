#include "com/host_arrays.h"

#include "com/query.h"

namespace qs {
namespace {

template <class Array>
ComPtr<Array> newObject(REFCLSID clsid) {
  ComPtr<IDispatch> created;
  const HRESULT result = created.create(clsid, CLSCTX_ALL);
  if (FAILED(result)) fail(result, {"the host's array class: ", Meaning{result}});
  return required<Array>(created.get(), "array of the host");
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
  check(matrix.get(), matrix->SetSize(rows, columns), {"the size of a matrix"});
  auto value = values.begin();
  for (LONG column = 0; column < columns; ++column)
    for (LONG row = 0; row < rows; ++row)
      if (const HRESULT put = matrix->put_Value(row, column, *value++); FAILED(put))
        fail(matrix.get(), put, {"row ", row, ", column ", column, " of a matrix"});
  return matrix;
}

}  // namespace qs
