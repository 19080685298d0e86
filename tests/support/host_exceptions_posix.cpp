#include <fenv.h>

#include "tests/support/host_exceptions.h"

void qs::test::unmaskExceptions() { feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW); }
