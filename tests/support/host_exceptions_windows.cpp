#include <float.h>

#include "tests/support/host_exceptions.h"

void qs::test::unmaskExceptions() { _controlfp(_EM_INEXACT, _MCW_EM); }
