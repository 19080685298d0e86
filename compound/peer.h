// How one compound reaches the data of another of the same module; not part of the type library.
#pragma once

#include "platform/com_types.h"

namespace qs {
class COQSCompound;
}

struct ICompoundPeer : IUnknown {
  // The object, without a reference of its own, when `module` is the tag of the object's own module; otherwise null.
  virtual qs::COQSCompound* STDMETHODCALLTYPE compound(const void* module) noexcept = 0;
};
__CRT_UUID_DECL(ICompoundPeer, 0x5b460ffc, 0x024e, 0x4a7e, 0x8a, 0xf4, 0xa6, 0x18, 0x81, 0xa6, 0xdf, 0x1f)
