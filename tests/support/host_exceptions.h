// A host whose floating-point exceptions interrupt it.
#pragma once

namespace qs::test {

// From here on invalid operations, divisions by zero, overflow and underflow do; inexact results do not.
void unmaskExceptions();

}  // namespace qs::test
