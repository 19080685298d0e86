// A host's own components behind the properties of a compound, and the classes that make them.
#pragma once

#include <deque>
#include <functional>
#include <utility>

#include "com/bstr.h"
#include "tests/support/host_object.h"

namespace qs::test {

// A component whose content is a text; it refuses the content "bad", and has no memory for "much". Store and what a
// kind adds call `act`, which may call back and throw, and return `result`; `onLastRelease` is called once.
template <class I>
class TextComponent : public HostObject<I> {
 public:
  STDMETHODIMP GetClassID(BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Store(BSTR* text) override {
    *text = nullptr;
    if (act) act();
    *text = Bstr(content).release();
    return result;
  }
  STDMETHODIMP Recall(BSTR text) noexcept override {
    content = viewOf(text);
    return content == OLESTR("bad") ? E_FAIL : content == OLESTR("much") ? E_OUTOFMEMORY : S_OK;
  }
  STDMETHODIMP Copy(I*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP_(ULONG) Release() noexcept override {
    const ULONG left = HostObject<I>::Release();
    if (left == 1 && onLastRelease) std::exchange(onLastRelease, nullptr)();
    return left;
  }

  WideString content;
  HRESULT result = S_OK;
  std::function<void()> act, onLastRelease;
};

class UserComponent final : public TextComponent<ICOMUserProp> {};

// Its value is the sum of the arguments.
class ValueComponent final : public TextComponent<IPCProperty> {
 public:
  STDMETHODIMP GetProperty(double temperature, double pressure, tagExtrapolationEnum method, LONG* dependencies,
                           double* value) override {
    *dependencies = 3;
    *value = temperature + pressure + static_cast<int>(method);
    if (act) act();
    return result;
  }
  STDMETHODIMP GetClassName(BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetMethod(BSTR*) noexcept override { return E_NOTIMPL; }
};

// Identifiers of classes that tests register.
inline constexpr LPCOLESTR kValueClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A01}");
inline constexpr LPCOLESTR kUserClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A02}");

// Makes components of a class that can be created while it lives; they live as long.
template <class Component>
class ComponentClass final : public IClassFactory {
 public:
  explicit ComponentClass(LPCOLESTR clsid) {
    CLSID id;
    EXPECT_EQ(CLSIDFromString(clsid, &id), S_OK);
    EXPECT_EQ(CoRegisterClassObject(id, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_), S_OK);
  }
  ComponentClass(const ComponentClass&) = delete;
  ComponentClass& operator=(const ComponentClass&) = delete;
  ~ComponentClass() {
    CoRevokeClassObject(cookie_);
    for (const Component& component : made_) EXPECT_EQ(component.references, 1u) << "a component is still in use";
  }

  Component* make(WideView content) {
    made_.emplace_back().content = content;
    return &made_.back();
  }

  STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** out) noexcept override {
    return FAILED(result) ? result : make({})->QueryInterface(iid, out);
  }
  STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }

  HRESULT result = S_OK;  // of a creation

  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    const bool known = IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IClassFactory));
    *out = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }

 private:
  DWORD cookie_ = 0;
  std::deque<Component> made_;
};

}  // namespace qs::test
