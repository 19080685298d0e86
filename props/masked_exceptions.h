// What is infinite or no number beyond a property's range must not stop the host.
#pragma once

#include <xmmintrin.h>

namespace qs {

// Masks the floating-point exceptions, and restores the floating-point state.
class MaskedExceptions {
 public:
  MaskedExceptions() : state_(_mm_getcsr()) {
    if ((~state_ & _MM_MASK_MASK) != 0) _mm_setcsr(state_ | _MM_MASK_MASK);
  }
  MaskedExceptions(const MaskedExceptions&) = delete;
  MaskedExceptions& operator=(const MaskedExceptions&) = delete;
  ~MaskedExceptions() { _mm_setcsr(state_); }

 private:
  unsigned state_;
};

}  // namespace qs
