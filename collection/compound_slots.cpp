#include "collection/compound_slots.h"

namespace qs {

CompoundSlots::~CompoundSlots() { dropLast(size()); }

void CompoundSlots::append(ComPtr<IBasicCompound> compound) {
  slots_.push_back(compound.get());
  compound.release();
}

void CompoundSlots::put(INT index, ComPtr<IBasicCompound> compound) {
  IBasicCompound* old = std::exchange(slots_[static_cast<std::size_t>(index)], compound.release());
  if (old) old->Release();
}

void CompoundSlots::dropLast(INT count) {
  for (; count > 0 && !slots_.empty(); --count) {
    IBasicCompound* last = slots_.back();
    slots_.pop_back();
    if (last) last->Release();
  }
  trim(slots_);
}

}  // namespace qs
