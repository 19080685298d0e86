// The component model's base types where the operating system has none. Names, widths, layouts and result codes are
// those of the binary standard, so that one set of sources and one generated header serve both targets.
#pragma once

#include <cstdint>

using BOOL = std::int32_t;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using LCID = DWORD;
using DISPID = LONG;
using HRESULT = LONG;
using OLECHAR = char16_t;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using BSTR = OLECHAR*;
using VARTYPE = unsigned short;
using VARIANT_BOOL = short;

#define OLESTR(text) u##text
#define TRUE 1
#define FALSE 0
#define VARIANT_TRUE (static_cast<VARIANT_BOOL>(-1))
#define VARIANT_FALSE (static_cast<VARIANT_BOOL>(0))

#define interface struct
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define STDAPI extern "C" __attribute__((visibility("default"))) HRESULT
#define DECLSPEC_UUID(text)
#define __RPC_USER
#define MIDL_INTERFACE(text) struct

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
#define QS_RESULT_CODE(name, bits) constexpr HRESULT name = static_cast<HRESULT>(bits)
QS_RESULT_CODE(E_NOTIMPL, 0x80004001);
QS_RESULT_CODE(E_NOINTERFACE, 0x80004002);
QS_RESULT_CODE(E_POINTER, 0x80004003);
QS_RESULT_CODE(E_FAIL, 0x80004005);
QS_RESULT_CODE(E_BOUNDS, 0x8000000B);
QS_RESULT_CODE(E_OUTOFMEMORY, 0x8007000E);
QS_RESULT_CODE(E_INVALIDARG, 0x80070057);
QS_RESULT_CODE(CLASS_E_NOAGGREGATION, 0x80040110);
QS_RESULT_CODE(CLASS_E_CLASSNOTAVAILABLE, 0x80040111);
QS_RESULT_CODE(REGDB_E_CLASSNOTREG, 0x80040154);
QS_RESULT_CODE(CO_E_CLASSSTRING, 0x800401F3);
QS_RESULT_CODE(DISP_E_TYPEMISMATCH, 0x80020005);
QS_RESULT_CODE(DISP_E_BADVARTYPE, 0x80020008);
QS_RESULT_CODE(DISP_E_OVERFLOW, 0x8002000A);
QS_RESULT_CODE(DISP_E_BADINDEX, 0x8002000B);
#undef QS_RESULT_CODE

#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];

  bool operator==(const GUID&) const = default;
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

// __uuidof(Interface), filled in by __CRT_UUID_DECL of the generated header.
template <class T>
struct InterfaceUuid;
#define __uuidof(type) (InterfaceUuid<type>::value)
#define __CRT_UUID_DECL(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)         \
  extern "C++" {                                                                 \
  template <>                                                                    \
  struct InterfaceUuid<type> {                                                   \
    static constexpr GUID value = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}; \
  };                                                                             \
  }
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
  inline constexpr GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};
__CRT_UUID_DECL(IUnknown, 0x00000000, 0x0000, 0x0000, 0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

struct IClassFactory : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) = 0;
};
__CRT_UUID_DECL(IClassFactory, 0x00000001, 0x0000, 0x0000, 0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

// Late binding needs a type library, which only Windows has; here its types exist for the virtual tables alone.
struct ITypeInfo;
struct IDispatch;
struct EXCEPINFO;

enum : VARTYPE {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_DECIMAL = 14,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000
};

// Ten thousandths.
union CY {
  LONGLONG int64;
};

// An integer of 96 bits, negative where `sign` is 0x80, divided by a power of ten. In a variant it takes the place of
// the whole, whose type lies where `wReserved` does.
struct DECIMAL {
  USHORT wReserved;
  BYTE scale;
  BYTE sign;
  ULONG Hi32;
  ULONGLONG Lo64;
};

// An array of one or more dimensions, the first of which varies fastest; its bounds are in reverse order.
constexpr USHORT FADF_VARIANT = 0x800;
struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};
struct SAFEARRAY {
  USHORT cDims;
  USHORT fFeatures;
  ULONG cbElements;
  ULONG cLocks;
  void* pvData;
  SAFEARRAYBOUND rgsabound[1];
};

// The largest value of a variant, which no type here uses: it gives VARIANT its size.
struct BRECORD {
  void* pvRecord;
  void* pRecInfo;
};

struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    LONG lVal;
    BYTE bVal;
    SHORT iVal;
    signed char cVal;
    USHORT uiVal;
    ULONG ulVal;
    ULONGLONG ullVal;
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    CY cyVal;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    VARIANT* pvarVal;
    void* byref;
    BRECORD record;
  };
};

struct DISPPARAMS {
  VARIANT* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};

struct IDispatch : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                                  DISPID* rgDispId) = 0;
  virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                                           DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                                           UINT* puArgErr) = 0;
};
__CRT_UUID_DECL(IDispatch, 0x00020400, 0x0000, 0x0000, 0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

struct IEnumVARIANT : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, VARIANT* rgVar, ULONG* pCeltFetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** ppEnum) = 0;
};
__CRT_UUID_DECL(IEnumVARIANT, 0x00020404, 0x0000, 0x0000, 0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

constexpr WORD DISPATCH_PROPERTYGET = 0x2;
constexpr LCID LOCALE_USER_DEFAULT = 0x400;

constexpr DWORD CLSCTX_INPROC_SERVER = 0x1;
constexpr DWORD CLSCTX_ALL = 0x17;
constexpr DWORD REGCLS_MULTIPLEUSE = 1;

extern "C" {
// A host brackets its use of components with these; here they have nothing to do.
HRESULT CoInitialize(void* reserved) noexcept;
void CoUninitialize() noexcept;

// Length-prefixed wide strings. A null source gives a null string; lengths count OLECHARs or, where named so, bytes.
BSTR SysAllocString(const OLECHAR* text) noexcept;
BSTR SysAllocStringLen(const OLECHAR* text, UINT length) noexcept;
// 0 when there is no memory. With a null source the string keeps what it holds of the new length.
INT SysReAllocStringLen(BSTR* text, const OLECHAR* source, UINT length) noexcept;
void SysFreeString(BSTR text) noexcept;
UINT SysStringLen(BSTR text) noexcept;
UINT SysStringByteLen(BSTR text) noexcept;

// Variants that hold one of the types above. VariantCopyInd takes the value that a reference refers to. Conversions are
// those to VT_I4 and VT_R8 from numbers and from text that is a number as a whole, and between interfaces;
// DISP_E_TYPEMISMATCH for others.
void VariantInit(VARIANT* variant) noexcept;
HRESULT VariantClear(VARIANT* variant) noexcept;
HRESULT VariantCopy(VARIANT* destination, const VARIANT* source) noexcept;
HRESULT VariantCopyInd(VARIANT* destination, VARIANT* source) noexcept;
HRESULT VariantChangeType(VARIANT* destination, VARIANT* source, USHORT flags, VARTYPE type) noexcept;

// Arrays of numbers, booleans or variants; null for other types. Dimensions count from 1.
SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) noexcept;
HRESULT SafeArrayDestroy(SAFEARRAY* array) noexcept;
HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** copy) noexcept;
UINT SafeArrayGetDim(SAFEARRAY* array) noexcept;
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept;
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept;
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) noexcept;
HRESULT SafeArrayUnaccessData(SAFEARRAY* array) noexcept;

// Class objects of this process. There is no registry of installed modules: a host loads a module, asks its
// DllGetClassObject and registers what it gets. CoGetClassObject returns REGDB_E_CLASSNOTREG for the rest.
HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown* classObject, DWORD context, DWORD flags,
                              DWORD* cookie) noexcept;
HRESULT CoRevokeClassObject(DWORD cookie) noexcept;
HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* server, REFIID iid, void** out) noexcept;
HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** out) noexcept;

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" to and from an identifier. There are no ProgIDs here.
HRESULT CLSIDFromString(LPCOLESTR text, CLSID* out) noexcept;
INT StringFromGUID2(REFGUID guid, LPOLESTR out, INT capacity) noexcept;
}

inline bool IsEqualGUID(REFGUID a, REFGUID b) noexcept { return a == b; }
