// The compounds by position, their order, and the offset vectors.
#include "collection/collection.h"
#include "com/bstr.h"
#include "com/host_arrays.h"
#include "com/query.h"

namespace qs {
namespace {

// The interface under which a list keeps a compound.
HRESULT queryCompound(IDispatch* object, ComPtr<IBasicCompound>& compound) {
  if (!object) return because(E_INVALIDARG, {"the compound is null"});
  HRESULT queried = compound.query(object);
  if (SUCCEEDED(queried) && !compound) queried = E_FAIL;
  return SUCCEEDED(queried) ? queried : because(queried, {"the object is no compound"});
}

template <class I>
HRESULT give(IBasicCompound* compound, I** out) {
  if (!compound) return S_FALSE;
  compound->AddRef();
  *out = compound;
  return S_OK;
}

// Null when it has none. Throws CQSCOMError when that fails.
Bstr nameOf(IUnknown* compound) {
  Bstr name;
  if (const auto identity = implemented<ICompoundID>(compound)) check(identity->get_Name(name.out()));
  return name;
}

// The offsets are returned and kept without adding a reference.
HRESULT lend(const ComPtr<IRealArrayDisp>& stored, IRealArrayDisp** out, const char* member = __builtin_FUNCTION()) {
  if (!out) return report(E_POINTER, {}, member);
  *out = stored.get();
  return stored ? S_OK : S_FALSE;
}
HRESULT takeOver(ComPtr<IRealArrayDisp>& stored, IRealArrayDisp* offsets) {
  if (!offsets) return S_FALSE;
  ComPtr<IRealArrayDisp> taken;
  *taken.out() = offsets;
  stored = std::move(taken);
  return S_OK;
}

}  // namespace

COQSCompoundCollection::~COQSCompoundCollection() {
  // The last release of a host's object may call back, and may even give this collection something new.
  while (reading_.reader || reading_.before || state_.holdsObjects()) {
    reading_.end();
    Reset();
  }
}

HRESULT COQSCompoundCollection::get_Compound(INT index, IDispatch** compound) noexcept {
  if (!compound) return report(E_POINTER);
  *compound = nullptr;
  return isView() ? state_.parent->get_Compound(inParent(index), compound) : give(state_.slots.at(index), compound);
}

HRESULT COQSCompoundCollection::GetBasicCompound(INT index, IBasicCompound** compound) noexcept {
  if (!compound) return report(E_POINTER);
  *compound = nullptr;
  return isView() ? state_.parent->GetBasicCompound(inParent(index), compound) : give(state_.slots.at(index), compound);
}

HRESULT COQSCompoundCollection::put_Compound(INT index, IDispatch* compound) noexcept {
  if (isView()) return forward(&ICompoundCollection::put_Compound, inParent(index), compound);
  if (!state_.slots.holds(index)) return S_FALSE;
  ComPtr<IBasicCompound> queried;
  const HRESULT result = compound ? queryCompound(compound, queried) : S_OK;
  // The query may have shortened the list.
  if (!state_.slots.holds(index)) return S_FALSE;
  state_.slots.put(index, std::move(queried));
  return FAILED(result) ? report(result) : result;
}

HRESULT COQSCompoundCollection::get_NumberOfCompounds(INT* number) noexcept {
  if (!number) return report(E_POINTER);
  *number = count();
  return S_OK;
}

HRESULT COQSCompoundCollection::put_NumberOfCompounds(INT number) noexcept {
  if (number < 0) return report(E_FAIL, {"the number of compounds is ", number});
  return guarded([&] {
    if (isView()) {
      if (number > count())
        return because(E_FAIL, {"a view of ", count(), " compounds cannot be made longer, to ", number});
      state_.positions->resize(static_cast<std::size_t>(number));
      trim(*state_.positions);
    } else if (number > count()) {
      checkCount(number);
      state_.slots.grow(number);
    } else {
      state_.slots.dropLast(count() - number);
    }
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::AddCompound(IDispatch* compound) noexcept {
  return guarded([&] {
    ComPtr<IBasicCompound> queried;
    const HRESULT result = queryCompound(compound, queried);
    if (FAILED(result)) return result;
    if (isView()) return addToParent(compound);
    state_.slots.append(std::move(queried));
    return result;
  });
}

HRESULT COQSCompoundCollection::addToParent(IDispatch* compound) {
  const auto parent = state_.parent;
  const auto positions = state_.positions;
  const Bstr name = nameOf(compound);
  INT number = 0;
  check(parent->get_NumberOfCompounds(&number));
  INT found = 0;
  for (; found < number; ++found) {
    ComPtr<IDispatch> candidate;
    check(parent->get_Compound(found, candidate.out()));
    const Bstr other = nameOf(candidate.get());
    if (name && other && name.view() == other.view()) break;
  }
  // Memory first: once the compound is in the parent nothing may fail.
  if (positions->size() == positions->capacity()) positions->reserve(2 * positions->size() + 1);
  if (found == number) {
    const HRESULT added = parent->AddCompound(compound);
    if (added != S_OK) return passOn(added);
    parent->get_NumberOfCompounds(&found);
    --found;
  }
  positions->push_back(found);
  return S_OK;
}

HRESULT COQSCompoundCollection::Reset() noexcept {
  // Released last, so that calls back find the collection as new.
  State old = std::exchange(state_, State());
  // A parent that ends with this view releases its own parent first, so that a chain of views ends one by one.
  for (ComPtr<ICompoundCollection> parent = std::move(old.parent); parent;) {
    COQSCompoundCollection& view = implementation(parent);
    const bool last = !view.isAggregated() && (parent->AddRef(), parent->Release()) == 1;
    parent = last ? std::exchange(view.state_.parent, {}) : ComPtr<ICompoundCollection>();
  }
  return S_OK;
}

HRESULT COQSCompoundCollection::GetOffsetH(IRealArrayDisp** offsets) noexcept { return lend(state_.offsetH, offsets); }
HRESULT COQSCompoundCollection::GetOffsetS(IRealArrayDisp** offsets) noexcept { return lend(state_.offsetS, offsets); }
HRESULT COQSCompoundCollection::PutOffsetH(IRealArrayDisp* offsets) noexcept {
  return takeOver(state_.offsetH, offsets);
}
HRESULT COQSCompoundCollection::PutOffsetS(IRealArrayDisp* offsets) noexcept {
  return takeOver(state_.offsetS, offsets);
}

HRESULT COQSCompoundCollection::MoveCompound(INT compound, INT before) noexcept {
  if (compound < 0 || compound >= count() || before < 0 || before > count()) return S_FALSE;
  if (isView())
    moveEntry(*state_.positions, compound, before);
  else
    state_.slots.move(compound, before);
  return S_OK;
}

HRESULT COQSCompoundCollection::RemoveLastCompound() noexcept {
  const HRESULT removed = count() > 0 ? put_NumberOfCompounds(count() - 1) : S_OK;
  return FAILED(removed) ? report(passOn(removed)) : removed;
}

}  // namespace qs
