// Views of the collection, with and without a name.
#include "collection/collection.h"
#include "com/host_arrays.h"

namespace qs {
namespace {

// Each call goes through all views between, on the host's stack.
constexpr INT kDeepestView = 256;

HRESULT noView(BSTR name) { return because(S_FALSE, {"there is no view \"", name, "\""}); }

}  // namespace

HRESULT COQSCompoundCollection::CreateSubCompList(IIntegerArrayDisp* positions, ICompoundCollection** view) noexcept {
  if (!view) return report(E_POINTER);
  *view = nullptr;
  return guarded([&] {
    *view = newView(std::make_shared<Positions>(checkedPositions(positions))).release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::GetParent(ICompoundCollection** parent) noexcept {
  if (!parent) return report(E_POINTER);
  *parent = ComPtr(state_.parent).release();
  return *parent ? S_OK : S_FALSE;
}

HRESULT COQSCompoundCollection::GetPositions(IIntegerArrayDisp** positions) noexcept {
  if (!positions) return report(E_POINTER);
  *positions = nullptr;
  if (!isView()) return S_FALSE;
  return guarded([&] {
    const Positions copy = *state_.positions;
    *positions = newIntegerArray(copy).release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::AddSubCompList(BSTR name, IIntegerArrayDisp* positions) noexcept {
  if (!name) return report(S_FALSE, {"the name of the view is null"});
  return guardedLookUp([&] {
    auto checked = std::make_shared<Positions>(checkedPositions(positions));
    const bool isNew = state_.subLists.emplace(WideString(viewOf(name)), std::move(checked)).second;
    return isNew ? S_OK : because(S_FALSE, {"there is a view \"", name, "\" already"});
  });
}

HRESULT COQSCompoundCollection::GetNumOfSubCompLists(INT* number) noexcept {
  if (!number) return report(E_POINTER);
  *number = static_cast<INT>(state_.subLists.size());
  return S_OK;
}

HRESULT COQSCompoundCollection::GetSubCompList(BSTR name, ICompoundCollection** view) noexcept {
  if (!view) return report(E_POINTER);
  *view = nullptr;
  return guardedLookUp([&] {
    const auto found = state_.subLists.find(viewOf(name));
    if (!name || found == state_.subLists.end()) return noView(name);
    *view = newView(found->second).release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::GetSubCompListI(INT index, BSTR* name, ICompoundCollection** view) noexcept {
  if (!name || !view) return report(E_POINTER);
  *name = nullptr;
  *view = nullptr;
  if (index < 0 || static_cast<std::size_t>(index) >= state_.subLists.size()) return S_FALSE;
  return guarded([&] {
    const auto& [key, positions] = *std::next(state_.subLists.begin(), index);
    Bstr nameCopy(key);
    *view = newView(positions).release();
    *name = nameCopy.release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::RemoveSubCompList(BSTR name) noexcept {
  const auto found = state_.subLists.find(viewOf(name));
  if (!name || found == state_.subLists.end()) return report(noView(name));
  state_.subLists.erase(found);
  return S_OK;
}

COQSCompoundCollection::Positions COQSCompoundCollection::checkedPositions(IIntegerArrayDisp* array) {
  if (!array) fail(E_INVALIDARG, {"the array of positions is null"});
  LONG size = 0;
  checkSize(array, array->get_Size(&size));
  checkCount(size);
  Positions positions;
  for (LONG i = 0; i < size; ++i) {
    LONG position = -1;
    checkElement(array, array->get_IthValue(i, &position), static_cast<std::size_t>(i));
    if (position < 0 || position >= count())
      fail(E_FAIL, {"position ", position, " is outside; the collection has ", count(), " compounds"});
    positions.push_back(position);
  }
  return positions;
}

ComPtr<ICompoundCollection> COQSCompoundCollection::newView(std::shared_ptr<Positions> positions) {
  if (state_.depth == kDeepestView) fail(E_FAIL, {"a view stands on ", kDeepestView, " others at most"});
  auto view = make<ICompoundCollection>();
  State& state = implementation(view).state_;
  state.parent = ComPtr<ICompoundCollection>(this);
  state.depth = state_.depth + 1;
  state.positions = std::move(positions);
  return view;
}

}  // namespace qs
