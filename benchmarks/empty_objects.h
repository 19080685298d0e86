// Objects of which every method returns at once and nothing else: what a call through their interface costs.
#pragma once

#include "interfaces/interfaces.h"

namespace qs::bench {

// Lent; they live as long as the process, are not counted and have no other interface.
__attribute__((visibility("default"))) IBasicCompound* emptyCompound();
__attribute__((visibility("default"))) ICompoundCollection* emptyCollection();
__attribute__((visibility("default"))) IBasicPhase* emptyPhase();

}  // namespace qs::bench
