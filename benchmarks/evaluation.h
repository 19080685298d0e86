// What values with status, derivatives, integrals and inverses cost, through the interfaces of a compound and a
// collection.
#pragma once

namespace qs::bench {

// Prints a line per target, with the classes COQSCompound, COQSCompoundCollection and HostRealArray registered before.
// Returns how many are short.
int measureEvaluation();

}  // namespace qs::bench
