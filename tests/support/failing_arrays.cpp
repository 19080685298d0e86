#include "tests/support/failing_arrays.h"

#include <utility>

#include "hostkit/arrays.h"

namespace qs::test {
namespace {

bool active = false;
int callsLeft = -1;
HRESULT failure = FailingArrays::kFailure;
int liveArrays = 0;
std::function<void()> create;

bool works() { return callsLeft-- != 0; }

class Array final : public IRealArrayDisp, public IRealVector {
 public:
  Array() { ++liveArrays; }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    *out = nullptr;
    if (!works()) return failure;
    if (IsEqualGUID(iid, __uuidof(IRealVector)))
      *out = static_cast<IRealVector*>(this);
    else if (IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IDispatch)) ||
             IsEqualGUID(iid, __uuidof(IRealArrayDisp)))
      *out = static_cast<IRealArrayDisp*>(this);
    else
      return E_NOINTERFACE;
    ++references_;
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() noexcept override {
    const ULONG left = --references_;
    if (left == 0) {
      --liveArrays;
      delete this;
    }
    return left;
  }
  STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
    return E_NOTIMPL;
  }

  STDMETHODIMP get_Size(LONG* size) noexcept override { return works() ? elements_.size(size) : failure; }
  STDMETHODIMP put_Size(LONG size) noexcept override { return works() ? elements_.resize(size) : failure; }
  STDMETHODIMP get_IthValue(LONG index, double* value) noexcept override {
    return works() ? elements_.get(index, value) : failure;
  }
  STDMETHODIMP put_IthValue(LONG index, double value) noexcept override {
    return works() ? elements_.put(index, value) : failure;
  }
  STDMETHODIMP Copy(IRealArrayDisp* source) noexcept override { return works() ? elements_.copy(source) : failure; }
  STDMETHODIMP GetSize(LONG* size) noexcept override { return get_Size(size); }
  STDMETHODIMP SetSize(LONG size) noexcept override { return put_Size(size); }
  STDMETHODIMP GetElement(LONG index, double* value) noexcept override { return get_IthValue(index, value); }
  STDMETHODIMP SetElement(LONG index, double value) noexcept override { return put_IthValue(index, value); }

 private:
  hostkit::Elements<double> elements_;
  ULONG references_ = 1;
};

class Factory final : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    *out = nullptr;
    // The system asks for this one, and needs an answer.
    if (active && IsEqualGUID(iid, __uuidof(IClassFactory)) && !works()) return FAILED(failure) ? failure : E_FAIL;
    if (!IsEqualGUID(iid, __uuidof(IUnknown)) && !IsEqualGUID(iid, __uuidof(IClassFactory))) return E_NOINTERFACE;
    *out = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) noexcept override {
    if (!active) return hostKit->CreateInstance(outer, iid, out);
    *out = nullptr;
    if (!works()) return failure;
    if (create) create();
    auto* array = new Array;
    const HRESULT hr = array->QueryInterface(iid, out);
    array->Release();
    return hr;
  }
  STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }

  ComPtr<IClassFactory> hostKit;
};

}  // namespace

FailingArrays::FailingArrays(int failing, HRESULT result, std::function<void()> onCreate) {
  active = true;
  failure = result;
  create = std::move(onCreate);
  callsLeft = failing;
}

FailingArrays::~FailingArrays() {
  active = false;
  create = nullptr;
  callsLeft = -1;
}

bool FailingArrays::reached() const { return callsLeft < 0; }

void FailingArrays::repair() { callsLeft = -1; }

int FailingArrays::live() { return liveArrays; }

IClassFactory* FailingArrays::classObject(ComPtr<IClassFactory> hostKit) {
  static Factory& factory = *new Factory;
  factory.hostKit = std::move(hostKit);
  return &factory;
}

}  // namespace qs::test
