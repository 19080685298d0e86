#include "collection/compound_slots.h"

namespace qs {

CompoundSlots::~CompoundSlots() { dropLast(size()); }

void CompoundSlots::append(ComPtr<IBasicCompound> compound) {
  slots_.resize(static_cast<std::size_t>(size_));
  slots_.push_back(compound.get());
  ++size_;
  if (compound.release()) ++occupied_;
}

void CompoundSlots::grow(INT count) {
  const auto wanted = static_cast<std::size_t>(count);
  if (wanted > slots_.capacity()) slots_.reserve(std::max(wanted, 2 * slots_.capacity()));
  size_ = count;
}

void CompoundSlots::put(INT index, ComPtr<IBasicCompound> compound) {
  const auto place = static_cast<std::size_t>(index);
  if (place >= slots_.size()) slots_.resize(place + 1);
  IBasicCompound*& slot = slots_[place];
  IBasicCompound* old = std::exchange(slot, compound.release());
  occupied_ += (slot ? 1 : 0) - (old ? 1 : 0);
  if (old) old->Release();
}

void CompoundSlots::dropLast(INT count) {
  for (; count > 0 && occupied_ > 0; --count) {
    IBasicCompound* last = at(--size_);
    slots_.resize(std::min(slots_.size(), static_cast<std::size_t>(size_)));
    if (!last) continue;
    --occupied_;
    last->Release();
  }
  size_ -= std::min(size_, count);
  slots_.resize(static_cast<std::size_t>(size_));  // what is trimmed keeps room for all
  trim(slots_);
}

}  // namespace qs
