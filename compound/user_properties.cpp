// Properties that a host keeps in components of its own.
#include "compound/compound.h"

namespace qs {

HRESULT COQSCompound::SetUserProperty(BSTR name, BSTR classId, IDispatch* component) noexcept {
  return guarded([&] {
    if (!component) return S_FALSE;
    userProperties_.insert_or_assign(WideString(viewOf(name)),
                                     UserProperty{Bstr::copyOf(classId), ComPtr<IDispatch>(component), {}});
    return S_OK;
  });
}

HRESULT COQSCompound::GetUserProperty(BSTR name, IDispatch** component) noexcept {
  const auto found = userProperties_.find(viewOf(name));
  if (found == userProperties_.end()) return S_FALSE;
  *component = ComPtr(found->second.component).release();
  return S_OK;
}

HRESULT COQSCompound::GetUserPropertyClassID(BSTR name, BSTR* classId) noexcept {
  const auto found = userProperties_.find(viewOf(name));
  return found == userProperties_.end() ? S_FALSE : giveCopy(found->second.classId, classId);
}

HRESULT COQSCompound::DeleteUserProperty(BSTR name) noexcept {
  const auto found = userProperties_.find(viewOf(name));
  if (found == userProperties_.end()) return S_FALSE;
  userProperties_.erase(found);
  return S_OK;
}

HRESULT COQSCompound::GetNumbOfUserProperty(INT* count) noexcept {
  *count = static_cast<INT>(userProperties_.size());
  return S_OK;
}

HRESULT COQSCompound::GetUserPropertyI(INT index, BSTR* name, BSTR* classId, IDispatch** component) noexcept {
  if (index < 0 || static_cast<std::size_t>(index) >= userProperties_.size()) return S_FALSE;
  return guarded([&] {
    const auto& [key, property] = *std::next(userProperties_.begin(), index);
    Bstr keyCopy(key);
    Bstr classIdCopy = Bstr::copyOf(property.classId.get());
    *name = keyCopy.release();
    *classId = classIdCopy.release();
    *component = ComPtr(property.component).release();
    return S_OK;
  });
}

}  // namespace qs
