#include "hostkit/attribute_set.h"

namespace qs::hostkit {

HRESULT AttributeSet::AddMultiple(VARIANT) noexcept { return report(E_NOTIMPL); }
HRESULT AttributeSet::GetMultiple(VARIANT*) noexcept { return report(E_NOTIMPL); }

}  // namespace qs::hostkit
