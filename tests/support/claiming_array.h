// An array of a host that states a size and gives only some of its elements, each 0, or throws.
#pragma once

#include <climits>

#include "tests/support/host_object.h"

namespace qs::test {

template <class I, class T>
class ClaimingArray final : public Stub<I> {
 public:
  explicit ClaimingArray(LONG given, LONG stated = INT_MAX) : given_(given), stated_(stated) {}
  STDMETHODIMP get_IthValue(LONG index, T* value) override {
    if (throws) throw 1;
    ++reads;
    if (index >= given_) return E_BOUNDS;
    *value = 0;
    return S_OK;
  }
  STDMETHODIMP get_Size(LONG* size) noexcept override {
    *size = stated_;
    return S_OK;
  }

  int reads = 0;
  bool throws = false;

 private:
  LONG given_, stated_;
};

using ClaimingIntegers = ClaimingArray<IIntegerArrayDisp, LONG>;
using ClaimingReals = ClaimingArray<IRealArrayDisp, double>;

}  // namespace qs::test
