// A compound of which every method returns at once and nothing else: what a call through the interface costs.
#pragma once

#include "com/interfaces.h"

namespace qs::bench {

// Lent; lives as long as the process. It is not counted and has no other interface.
__attribute__((visibility("default"))) IBasicCompound* emptyCompound();

}  // namespace qs::bench
