// The heap of the process, in whichever module memory is allocated: what is allocated can be counted, and can be made
// to fail. For one thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qs::heap {

// While one exists, allocations and releases by malloc and all that rests on it (new, length-prefixed strings) are
// counted, each with the size of its block, which is not less than what was asked for. One at a time.
class Count {
 public:
  Count();
  Count(const Count&) = delete;
  Count& operator=(const Count&) = delete;
  ~Count();

  // Allocated and not released since the beginning; modulo its range where older blocks were released.
  std::size_t bytes() const;
  std::size_t blocksLeft() const;
  // Allocations since the beginning, released or not.
  std::size_t blocks() const;
};

// From now on allocation number `failing`, counted from 0, and with `andAllLater` every one after it, finds no memory:
// malloc, calloc, realloc and operator new, whoever calls them.
void failAllocation(std::int64_t failing, bool andAllLater);
// Ends that; whether an allocation failed.
bool endFailing();

// What is allocated while one lives does not fail and does not count as an allocation that may.
class Spare {
 public:
  Spare();
  Spare(const Spare&) = delete;
  Spare& operator=(const Spare&) = delete;
  ~Spare();

 private:
  bool was_;
};

}  // namespace qs::heap
