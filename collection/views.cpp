// Views of the collection, with and without a name.
#include "collection/collection.h"
#include "com/host_arrays.h"

namespace qs {
namespace {

// Each call goes through all views between, on the host's stack.
constexpr INT kDeepestView = 256;

}  // namespace

HRESULT COQSCompoundCollection::CreateSubCompList(IIntegerArrayDisp* positions, ICompoundCollection** view) noexcept {
  if (!view) return E_POINTER;
  *view = nullptr;
  return guarded([&] {
    *view = newView(std::make_shared<Positions>(checkedPositions(positions))).release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::GetParent(ICompoundCollection** parent) noexcept {
  if (!parent) return E_POINTER;
  *parent = ComPtr(state_.parent).release();
  return *parent ? S_OK : S_FALSE;
}

HRESULT COQSCompoundCollection::GetPositions(IIntegerArrayDisp** positions) noexcept {
  if (!positions) return E_POINTER;
  *positions = nullptr;
  if (!isView()) return S_FALSE;
  return guarded([&] {
    const Positions copy = *state_.positions;
    *positions = newIntegerArray(copy).release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::AddSubCompList(BSTR name, IIntegerArrayDisp* positions) noexcept {
  if (!name) return S_FALSE;
  return guarded([&] {
    auto checked = std::make_shared<Positions>(checkedPositions(positions));
    return state_.subLists.emplace(WideString(viewOf(name)), std::move(checked)).second ? S_OK : S_FALSE;
  });
}

HRESULT COQSCompoundCollection::GetNumOfSubCompLists(INT* number) noexcept {
  if (!number) return E_POINTER;
  *number = static_cast<INT>(state_.subLists.size());
  return S_OK;
}

HRESULT COQSCompoundCollection::GetSubCompList(BSTR name, ICompoundCollection** view) noexcept {
  if (!view) return E_POINTER;
  *view = nullptr;
  return guarded([&] {
    const auto found = state_.subLists.find(viewOf(name));
    if (!name || found == state_.subLists.end()) return S_FALSE;
    *view = newView(found->second).release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::GetSubCompListI(INT index, BSTR* name, ICompoundCollection** view) noexcept {
  if (!name || !view) return E_POINTER;
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
  if (!name || found == state_.subLists.end()) return S_FALSE;
  state_.subLists.erase(found);
  return S_OK;
}

COQSCompoundCollection::Positions COQSCompoundCollection::checkedPositions(IIntegerArrayDisp* array) {
  if (!array) throw CQSCOMError(E_INVALIDARG);
  LONG size = 0;
  check(array->get_Size(&size));
  checkCount(size);
  Positions positions;
  for (LONG i = 0; i < size; ++i) {
    LONG position = -1;
    check(array->get_IthValue(i, &position));
    if (position < 0 || position >= count()) throw CQSCOMError(E_FAIL);
    positions.push_back(position);
  }
  return positions;
}

ComPtr<ICompoundCollection> COQSCompoundCollection::newView(std::shared_ptr<Positions> positions) {
  if (state_.depth == kDeepestView) throw CQSCOMError(E_FAIL);
  auto view = make<ICompoundCollection>();
  State& state = implementation(view).state_;
  state.parent = ComPtr<ICompoundCollection>(this);
  state.depth = state_.depth + 1;
  state.positions = std::move(positions);
  return view;
}

}  // namespace qs
