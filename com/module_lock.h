// The module's count of live objects and server locks.
#pragma once

#include <atomic>

#include "platform/com_types.h"

namespace qs {

extern std::atomic<LONG> moduleLocks;

// Keeps the module loaded for as long as it lives.
class ModuleLock {
 public:
  ModuleLock() { ++moduleLocks; }
  ModuleLock(const ModuleLock&) = delete;
  ModuleLock& operator=(const ModuleLock&) = delete;
  ~ModuleLock() { --moduleLocks; }
};

}  // namespace qs
