// Length-prefixed strings, identifiers as text and the process's class objects, where the system has none.
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <new>

#include "platform/com_types.h"

namespace {

// A string's bytes follow its byte length; the prefix is 8 bytes wide so that malloc's alignment carries over.
constexpr std::size_t kPrefix = 8;

std::uint32_t& byteLength(BSTR text) noexcept { return reinterpret_cast<std::uint32_t*>(text)[-1]; }

struct ClassObject {
  CLSID clsid;
  IUnknown* object;
};

struct ClassObjects {
  std::mutex mutex;
  std::map<DWORD, ClassObject> byCookie;
  DWORD lastCookie = 0;
};

// Never destroyed: a host may revoke its classes at any time.
ClassObjects& classObjects() {
  static auto& table = *new ClassObjects;
  return table;
}

int hexDigit(OLECHAR c) noexcept {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

constexpr char kGuidPattern[] = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
constexpr INT kGuidLength = sizeof kGuidPattern - 1;

}  // namespace

extern "C" {

HRESULT CoInitialize(void*) noexcept { return S_OK; }
void CoUninitialize() noexcept {}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) noexcept {
  if (length > (UINT32_MAX - kPrefix) / sizeof(OLECHAR) - 1) return nullptr;
  const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
  auto* block = static_cast<char*>(std::malloc(kPrefix + bytes + sizeof(OLECHAR)));
  if (!block) return nullptr;
  BSTR result = reinterpret_cast<BSTR>(block + kPrefix);
  byteLength(result) = static_cast<std::uint32_t>(bytes);
  if (text) std::memcpy(result, text, bytes);
  result[length] = 0;
  return result;
}

INT SysReAllocStringLen(BSTR* text, const OLECHAR* source, UINT length) noexcept {
  if (!*text || source) {
    BSTR copy = SysAllocStringLen(source, length);
    if (!copy) return 0;
    SysFreeString(*text);
    *text = copy;
    return 1;
  }
  const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
  void* block = std::realloc(reinterpret_cast<char*>(*text) - kPrefix, kPrefix + bytes + sizeof(OLECHAR));
  if (!block) return 0;
  *text = reinterpret_cast<BSTR>(static_cast<char*>(block) + kPrefix);
  byteLength(*text) = static_cast<std::uint32_t>(bytes);
  (*text)[length] = 0;
  return 1;
}

BSTR SysAllocString(const OLECHAR* text) noexcept {
  if (!text) return nullptr;
  UINT length = 0;
  while (text[length]) ++length;
  return SysAllocStringLen(text, length);
}

void SysFreeString(BSTR text) noexcept {
  if (text) std::free(reinterpret_cast<char*>(text) - kPrefix);
}

UINT SysStringByteLen(BSTR text) noexcept { return text ? byteLength(text) : 0; }
UINT SysStringLen(BSTR text) noexcept { return text ? byteLength(text) / UINT{sizeof(OLECHAR)} : 0; }

HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown* classObject, DWORD, DWORD, DWORD* cookie) noexcept try {
  if (!classObject || !cookie) return E_INVALIDARG;
  ClassObjects& table = classObjects();
  const std::lock_guard lock(table.mutex);
  table.byCookie.emplace(table.lastCookie + 1, ClassObject{clsid, classObject});
  classObject->AddRef();
  *cookie = ++table.lastCookie;
  return S_OK;
} catch (const std::bad_alloc&) {
  return E_OUTOFMEMORY;
}

HRESULT CoRevokeClassObject(DWORD cookie) noexcept {
  IUnknown* object = nullptr;
  {
    ClassObjects& table = classObjects();
    const std::lock_guard lock(table.mutex);
    const auto found = table.byCookie.find(cookie);
    if (found == table.byCookie.end()) return E_INVALIDARG;
    object = found->second.object;
    table.byCookie.erase(found);
  }
  object->Release();
  return S_OK;
}

HRESULT CoGetClassObject(REFCLSID clsid, DWORD, void*, REFIID iid, void** out) noexcept {
  if (!out) return E_POINTER;
  *out = nullptr;
  IUnknown* object = nullptr;
  {
    ClassObjects& table = classObjects();
    const std::lock_guard lock(table.mutex);
    for (const auto& [cookie, entry] : table.byCookie)
      if (entry.clsid == clsid) object = entry.object;
    if (!object) return REGDB_E_CLASSNOTREG;
    object->AddRef();
  }
  const HRESULT hr = object->QueryInterface(iid, out);
  object->Release();
  return hr;
}

HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** out) noexcept {
  if (!out) return E_POINTER;
  *out = nullptr;
  void* factory = nullptr;
  if (const HRESULT hr = CoGetClassObject(clsid, context, nullptr, __uuidof(IClassFactory), &factory); FAILED(hr))
    return hr;
  if (!factory) return E_FAIL;
  auto* classFactory = static_cast<IClassFactory*>(factory);
  const HRESULT hr = classFactory->CreateInstance(outer, iid, out);
  classFactory->Release();
  return hr;
}

HRESULT CLSIDFromString(LPCOLESTR text, CLSID* out) noexcept {
  if (!text || !out) return E_INVALIDARG;
  std::uint8_t digits[32];
  int count = 0;
  for (INT i = 0; i < kGuidLength; ++i) {
    if (kGuidPattern[i] == 'x') {
      const int digit = hexDigit(text[i]);
      if (digit < 0) return CO_E_CLASSSTRING;
      digits[count++] = static_cast<std::uint8_t>(digit);
    } else if (text[i] != static_cast<OLECHAR>(kGuidPattern[i])) {
      return CO_E_CLASSSTRING;
    }
  }
  if (text[kGuidLength]) return CO_E_CLASSSTRING;

  const auto number = [&digits](int first, int length) {
    std::uint32_t value = 0;
    for (int i = first; i < first + length; ++i) value = value << 4 | digits[i];
    return value;
  };
  out->Data1 = number(0, 8);
  out->Data2 = static_cast<std::uint16_t>(number(8, 4));
  out->Data3 = static_cast<std::uint16_t>(number(12, 4));
  for (int i = 0; i < 8; ++i) out->Data4[i] = static_cast<std::uint8_t>(number(16 + 2 * i, 2));
  return S_OK;
}

INT StringFromGUID2(REFGUID guid, LPOLESTR out, INT capacity) noexcept {
  if (capacity <= kGuidLength) return 0;
  std::uint8_t bytes[16] = {};
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(guid.Data1 >> (24 - 8 * i));
  for (int i = 0; i < 2; ++i) bytes[4 + i] = static_cast<std::uint8_t>(guid.Data2 >> (8 - 8 * i));
  for (int i = 0; i < 2; ++i) bytes[6 + i] = static_cast<std::uint8_t>(guid.Data3 >> (8 - 8 * i));
  std::memcpy(bytes + 8, guid.Data4, 8);
  int digit = 0;
  for (INT i = 0; i < kGuidLength; ++i) {
    if (kGuidPattern[i] != 'x') {
      out[i] = static_cast<OLECHAR>(kGuidPattern[i]);
      continue;
    }
    const int nibble = digit % 2 ? bytes[digit / 2] & 15 : bytes[digit / 2] >> 4;
    out[i] = static_cast<OLECHAR>("0123456789ABCDEF"[nibble]);
    ++digit;
  }
  out[kGuidLength] = 0;
  return kGuidLength + 1;
}

}  // extern "C"
