// The compounds of a collection's own list, by position. A release of a compound may call back into the collection, so
// it comes after the list has changed.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace qs {

// Moves the entry at `from` before the one at `before`, which may be the end. Both are positions of the list.
template <class T>
void moveEntry(std::vector<T>& entries, INT from, INT before) {
  const auto entry = entries.begin() + from;
  const auto target = entries.begin() + before;
  if (target < entry)
    std::rotate(target, entry, entry + 1);
  else if (target > entry)
    std::rotate(entry, entry + 1, target);
}

// Frees memory once a list uses little of it; growing stays amortised.
template <class T>
void trim(std::vector<T>& entries) {
  constexpr std::size_t kSmall = 64;
  if (entries.capacity() > kSmall && entries.size() < entries.capacity() / 4) entries.shrink_to_fit();
}

// Plain pointers, each with one reference, so that moving an entry is a move of memory. Empty slots at the end are
// not written to: memory for them is reserved, so that filling or moving one cannot fail.
class CompoundSlots {
 public:
  CompoundSlots() = default;
  CompoundSlots(CompoundSlots&& other) noexcept
      : slots_(std::exchange(other.slots_, {})),
        size_(std::exchange(other.size_, 0)),
        occupied_(std::exchange(other.occupied_, 0)) {}
  CompoundSlots& operator=(CompoundSlots&& other) noexcept {
    slots_.swap(other.slots_);
    std::swap(size_, other.size_);
    std::swap(occupied_, other.occupied_);
    return *this;
  }
  ~CompoundSlots();

  INT size() const { return size_; }
  INT occupied() const { return occupied_; }
  bool holds(INT index) const { return index >= 0 && index < size(); }

  // Without a reference of its own; null for an empty slot and for a position outside.
  IBasicCompound* at(INT index) const {
    return index >= 0 && static_cast<std::size_t>(index) < slots_.size() ? slots_[static_cast<std::size_t>(index)]
                                                                         : nullptr;
  }

  void append(ComPtr<IBasicCompound> compound);
  void put(INT index, ComPtr<IBasicCompound> compound);
  void grow(INT count);
  void dropLast(INT count);
  void move(INT from, INT before) {
    slots_.resize(static_cast<std::size_t>(size_));
    moveEntry(slots_, from, before);
  }

 private:
  std::vector<IBasicCompound*> slots_;  // at most size_, with room for size_
  INT size_ = 0;
  INT occupied_ = 0;  // slots with a compound; when there are none, slots are dropped without a look
};

}  // namespace qs
