// Copies of compounds, and the compound as new.
#include "compound/compound.h"

namespace qs {
namespace {

// Its address tells this module's compounds from those of any other.
const char moduleTag = 0;

}  // namespace

COQSCompound* COQSCompound::compound(const void* module) noexcept { return module == &moduleTag ? this : nullptr; }

const COQSCompound* COQSCompound::ofThisModule(IUnknown* object) {
  const auto peer = ComPtr<ICompoundPeer>::from(object);
  return peer ? peer->compound(&moduleTag) : nullptr;
}

HRESULT COQSCompound::CopyToThis(INT newIndex, IDispatch* original) noexcept {
  return guarded([&] {
    if (!original) return E_INVALIDARG;
    const COQSCompound* source = ofThisModule(original);
    if (!source) return E_NOINTERFACE;

    Identity identity = source->identity_.copy();
    PropertyTable properties = source->properties_.copy();
    UserProperties userProperties;
    for (const auto& [name, property] : source->userProperties_)
      userProperties.emplace(name, UserProperty{Bstr::copyOf(property.classId.get()), property.component,
                                                Bstr::copyOf(property.content.get())});

    identity_ = std::move(identity);
    identity_.compoundIndex = newIndex;
    properties_ = std::move(properties);
    userProperties_ = std::move(userProperties);
    return S_OK;
  });
}

void COQSCompound::clear() {
  identity_ = Identity();
  properties_.clear();
  userProperties_.clear();
}

}  // namespace qs
