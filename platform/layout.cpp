// What the binary standard fixes, checked against the system's headers and against ours alike.
#include <cstddef>
#include <type_traits>

#include "platform/com_types.h"

static_assert(sizeof(LONG) == 4 && sizeof(INT) == 4 && sizeof(BOOL) == 4 && sizeof(HRESULT) == 4);
static_assert(std::is_signed_v<LONG> && std::is_unsigned_v<ULONG> && sizeof(DISPID) == 4);
static_assert(sizeof(OLECHAR) == 2 && sizeof(VARIANT_BOOL) == 2 && sizeof(double) == 8);
static_assert(std::is_same_v<decltype(OLESTR("")[0]), const OLECHAR&>);
static_assert(sizeof(GUID) == 16 && offsetof(GUID, Data4) == 8);
static_assert(sizeof(VARIANT) == (sizeof(void*) == 8 ? 24 : 16) && offsetof(VARIANT, llVal) == 8);
static_assert(offsetof(SAFEARRAY, rgsabound) == (sizeof(void*) == 8 ? 24 : 16) && sizeof(SAFEARRAYBOUND) == 8);
static_assert(VT_I4 == 3 && VT_R8 == 5 && VT_BSTR == 8 && VT_DISPATCH == 9 && VT_BOOL == 11 && VT_ARRAY == 0x2000);
static_assert(static_cast<ULONG>(DISP_E_TYPEMISMATCH) == 0x80020005);
static_assert(sizeof(IUnknown) == sizeof(void*) && !std::has_virtual_destructor_v<IUnknown>);
static_assert(sizeof(IDispatch) == sizeof(void*) && !std::has_virtual_destructor_v<IDispatch>);
static_assert(S_OK == 0 && S_FALSE == 1 && FAILED(E_FAIL) && SUCCEEDED(S_FALSE));
static_assert(static_cast<ULONG>(E_FAIL) == 0x80004005 && static_cast<ULONG>(E_OUTOFMEMORY) == 0x8007000E);
static_assert(VARIANT_TRUE == -1 && VARIANT_FALSE == 0);
