// Allocations of this process that can be made to fail, and the number of blocks that are held.
#pragma once

#include <cstdint>

namespace qs::test {

// From now on allocation number `failing`, counted from 0, and with `andAllLater` every one after it, finds no memory:
// malloc, calloc, realloc and operator new, whoever calls them.
void failAllocation(std::int64_t failing, bool andAllLater);
// Ends that; whether an allocation failed.
bool endFailing();

// What is allocated while one lives does not fail and does not count.
class SpareHeap {
 public:
  SpareHeap();
  SpareHeap(const SpareHeap&) = delete;
  SpareHeap& operator=(const SpareHeap&) = delete;
  ~SpareHeap();

 private:
  bool was_;
};

// Blocks allocated and not freed yet.
std::int64_t blocksHeld();

}  // namespace qs::test
