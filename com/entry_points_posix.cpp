// Registration where there is no registry of installed classes.
#include "platform/com_types.h"

STDAPI DllRegisterServer() { return E_NOTIMPL; }
STDAPI DllUnregisterServer() { return E_NOTIMPL; }
