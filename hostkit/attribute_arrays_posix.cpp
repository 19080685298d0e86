#include "hostkit/attribute_set.h"

namespace qs::hostkit {

HRESULT AttributeSet::AddMultiple(VARIANT) noexcept { return E_NOTIMPL; }
HRESULT AttributeSet::GetMultiple(VARIANT*) noexcept { return E_NOTIMPL; }

}  // namespace qs::hostkit
