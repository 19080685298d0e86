// Properties that a host keeps in components of its own.
#include "compound/compound.h"

namespace qs {
namespace {

HRESULT noUserProperty(BSTR name) noexcept { return because(S_FALSE, {"there is no user property \"", name, "\""}); }

}  // namespace

HRESULT COQSCompound::SetUserProperty(BSTR name, BSTR classId, IDispatch* component) noexcept {
  return guardedLookUp([&] {
    if (!component) return because(S_FALSE, {"user property \"", name, "\": the component is null"});
    UserProperty property{Bstr::copyOf(classId), ComPtr<IDispatch>(component), {}};
    std::swap(content_.userProperties[WideString(viewOf(name))], property);
    return S_OK;
  });
}

HRESULT COQSCompound::GetUserProperty(BSTR name, IDispatch** component) noexcept {
  if (!component) return report(E_POINTER);
  const auto found = content_.userProperties.find(viewOf(name));
  if (found == content_.userProperties.end()) return report(noUserProperty(name));
  *component = ComPtr(found->second.component).release();
  return S_OK;
}

HRESULT COQSCompound::GetUserPropertyClassID(BSTR name, BSTR* classId) noexcept {
  if (!classId) return report(E_POINTER);
  const auto found = content_.userProperties.find(viewOf(name));
  if (found == content_.userProperties.end()) return report(noUserProperty(name));
  return giveCopy(found->second.classId, classId);
}

HRESULT COQSCompound::DeleteUserProperty(BSTR name) noexcept {
  const auto found = content_.userProperties.find(viewOf(name));
  if (found == content_.userProperties.end()) return report(noUserProperty(name));
  const auto old = content_.userProperties.extract(found);
  return S_OK;
}

HRESULT COQSCompound::GetNumbOfUserProperty(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = static_cast<INT>(content_.userProperties.size());
  return S_OK;
}

HRESULT COQSCompound::GetUserPropertyI(INT index, BSTR* name, BSTR* classId, IDispatch** component) noexcept {
  if (!name || !classId || !component) return report(E_POINTER);
  if (index < 0 || static_cast<std::size_t>(index) >= content_.userProperties.size()) return S_FALSE;
  return guarded([&] {
    const auto& [key, property] = *std::next(content_.userProperties.begin(), index);
    Bstr keyCopy(key);
    Bstr classIdCopy = property.classId;
    *name = keyCopy.release();
    *classId = classIdCopy.release();
    *component = ComPtr(property.component).release();
    return S_OK;
  });
}

}  // namespace qs
