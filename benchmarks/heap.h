// Bytes and blocks of heap memory, in whichever module of the process they are allocated.
#pragma once

#include <cstddef>

namespace qs::bench {

// While one exists, allocations and releases by malloc and all that rests on it (new, length-prefixed strings) are
// counted, each with the size of its block, which is not less than what was asked for. One at a time, in one thread.
class HeapCount {
 public:
  HeapCount();
  HeapCount(const HeapCount&) = delete;
  HeapCount& operator=(const HeapCount&) = delete;
  ~HeapCount();

  // Allocated and not released since the beginning.
  std::size_t bytes() const;
  // Allocations since the beginning, released or not.
  std::size_t blocks() const;
};

}  // namespace qs::bench
