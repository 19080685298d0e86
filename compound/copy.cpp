// Copies of compounds, and the end of one.
#include "compound/compound.h"

namespace qs {
namespace {

// Its address identifies this module's compounds.
const char moduleTag = 0;

}  // namespace

CompoundContent CompoundContent::copy() const { return {identity, properties.copy(), userProperties, record}; }

// Components may put others in their places while they are released.
COQSCompound::~COQSCompound() {
  do {
    const auto before = std::exchange(reading_.before, nullptr);
    const CompoundContent content = std::exchange(content_, CompoundContent());
  } while (content_.hasProperties() || reading_.before);
}

COQSCompound* COQSCompound::compound(const void* module) noexcept { return module == &moduleTag ? this : nullptr; }

const COQSCompound* COQSCompound::ofThisModule(IUnknown* object) {
  const auto peer = ComPtr<ICompoundPeer>::from(object);
  return peer ? peer->compound(&moduleTag) : nullptr;
}

HRESULT COQSCompound::CopyToThis(INT newIndex, IDispatch* original) noexcept {
  return guarded([&] {
    if (!original) return because(E_INVALIDARG, {"there is no compound to copy"});
    const COQSCompound* source = ofThisModule(original);
    if (!source) return because(E_NOINTERFACE, {"the object to copy is no compound of this module"});

    CompoundContent content = source->content_.copy();
    content.identity.compoundIndex = newIndex;
    std::swap(content_, content);
    return S_OK;
  });
}

}  // namespace qs
