// Arrays of reals of a host whose calls can be made to fail one by one. Tests register their class in place of the host
// kit's; unless a FailingArrays lives, it makes the host kit's arrays.
#pragma once

#include <functional>

#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace qs::test {

class FailingArrays {
 public:
  static constexpr auto kFailure = static_cast<HRESULT>(0x80040A11);

  // Until the end of the scope new arrays are of this kind. Of all calls on them and on their class, call number
  // `failing`, counted from 0, does nothing and gives nothing, and answers `result`.
  // Whenever one is made, `onCreate` is called first.
  explicit FailingArrays(int failing, HRESULT result = kFailure, std::function<void()> onCreate = nullptr);
  FailingArrays(const FailingArrays&) = delete;
  FailingArrays& operator=(const FailingArrays&) = delete;
  ~FailingArrays();

  // Whether that call was made.
  bool reached() const;
  // From now on no call fails.
  void repair();
  // Arrays of this kind that were not released yet.
  static int live();

  // The class object, which passes on to `hostKit` what it does not make itself.
  static IClassFactory* classObject(ComPtr<IClassFactory> hostKit);
};

}  // namespace qs::test
