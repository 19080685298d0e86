#include "collection/compound_slots.h"

namespace qs {

CompoundSlots::~CompoundSlots() { dropLast(size()); }

void CompoundSlots::append(ComPtr<IBasicCompound> compound) {
  slots_.push_back(compound.get());
  if (compound.release()) ++occupied_;
}

void CompoundSlots::put(INT index, ComPtr<IBasicCompound> compound) {
  IBasicCompound*& slot = slots_[static_cast<std::size_t>(index)];
  IBasicCompound* old = std::exchange(slot, compound.release());
  occupied_ += (slot ? 1 : 0) - (old ? 1 : 0);
  if (old) old->Release();
}

void CompoundSlots::dropLast(INT count) {
  for (; count > 0 && occupied_ > 0; --count) {
    IBasicCompound* last = slots_.back();
    slots_.pop_back();
    if (!last) continue;
    --occupied_;
    last->Release();
  }
  slots_.resize(slots_.size() - std::min(slots_.size(), static_cast<std::size_t>(count)));
  trim(slots_);
}

}  // namespace qs
