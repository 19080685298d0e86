#include "com/host_arrays.h"

#include "com/error.h"

namespace qs {
namespace {

template <class Array, class T>
ComPtr<Array> newArray(REFCLSID clsid, std::span<const T> values) {
  ComPtr<IDispatch> created;
  check(CoCreateInstance(clsid, nullptr, CLSCTX_ALL, __uuidof(IDispatch), reinterpret_cast<void**>(created.out())));
  ComPtr<Array> array;
  check(created->QueryInterface(__uuidof(Array), reinterpret_cast<void**>(array.out())));
  check(array->put_Size(static_cast<LONG>(values.size())));
  for (std::size_t i = 0; i < values.size(); ++i) check(array->put_IthValue(static_cast<LONG>(i), values[i]));
  return array;
}

}  // namespace

ComPtr<IIntegerArrayDisp> newIntegerArray(std::span<const LONG> values) {
  return newArray<IIntegerArrayDisp>(__uuidof(HostIntegerArray), values);
}

ComPtr<IRealArrayDisp> newRealArray(std::span<const double> values) {
  return newArray<IRealArrayDisp>(__uuidof(HostRealArray), values);
}

}  // namespace qs
