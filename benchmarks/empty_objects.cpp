#include "benchmarks/empty_objects.h"

namespace qs::bench {
namespace {

template <class I>
class EmptyObject : public I {
 public:
  STDMETHODIMP QueryInterface(REFIID, void**) noexcept override { return E_NOINTERFACE; }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return 1; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
  STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return S_OK; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return S_OK; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
    return S_OK;
  }
};

class EmptyCompound final : public EmptyObject<IBasicCompound> {
 public:
  // Those of other interfaces than IBasicCompound override nothing.
#define FIXED_KEY(key, help, unit, policy, interface_name, dispid)                                             \
  virtual HRESULT STDMETHODCALLTYPE get_##key(double, double, tagExtrapolationEnum, LONG*, double*) noexcept { \
    return S_OK;                                                                                               \
  }                                                                                                            \
  virtual HRESULT STDMETHODCALLTYPE get_##key##TPRange(double*, double*, double*, double*) noexcept { return S_OK; }
#include "props/keys.def"

  STDMETHODIMP get_VelcorinID(INT*) noexcept override { return S_OK; }
  STDMETHODIMP get_Family(tagCompoundFamilyEnum*) noexcept override { return S_OK; }
  STDMETHODIMP get_SubFamily(BSTR*) noexcept override { return S_OK; }
  STDMETHODIMP GetNonCondensable(BYTE*) noexcept override { return S_OK; }
};

class EmptyCollection final : public EmptyObject<ICompoundCollection> {
 public:
  STDMETHODIMP get_Compound(INT, IDispatch**) noexcept override { return S_OK; }
  STDMETHODIMP put_Compound(INT, IDispatch*) noexcept override { return S_OK; }
  STDMETHODIMP get_NumberOfCompounds(INT*) noexcept override { return S_OK; }
  STDMETHODIMP put_NumberOfCompounds(INT) noexcept override { return S_OK; }
  STDMETHODIMP AddCompound(IDispatch*) noexcept override { return S_OK; }
  STDMETHODIMP get_InteractionParameters(BSTR, IDispatch**) noexcept override { return S_OK; }
  STDMETHODIMP Reset() noexcept override { return S_OK; }
  STDMETHODIMP GetBasicCompound(INT, IBasicCompound**) noexcept override { return S_OK; }
  STDMETHODIMP GetOffsetH(IRealArrayDisp**) noexcept override { return S_OK; }
  STDMETHODIMP PutOffsetH(IRealArrayDisp*) noexcept override { return S_OK; }
  STDMETHODIMP GetOffsetS(IRealArrayDisp**) noexcept override { return S_OK; }
  STDMETHODIMP PutOffsetS(IRealArrayDisp*) noexcept override { return S_OK; }
  STDMETHODIMP AddCompoundFromLoader(BSTR, BSTR, BSTR, BYTE) noexcept override { return S_OK; }
};

class EmptyPhase final : public EmptyObject<IBasicPhase> {
 public:
#define EMPTY_VALUE(name, type)                                     \
  STDMETHODIMP get_##name(type*) noexcept override { return S_OK; } \
  STDMETHODIMP put_##name(type) noexcept override { return S_OK; }
#define PHASE_ENUMERATION(name, type) EMPTY_VALUE(name, type)
#define PHASE_REAL(name) EMPTY_VALUE(name, double)
#include "phase/properties.def"
  EMPTY_VALUE(MolarComposition, IDispatch*)
  EMPTY_VALUE(MassComposition, IDispatch*)
  EMPTY_VALUE(MolarCompositionDisp, IRealArrayDisp*)
  EMPTY_VALUE(LnFugacity, IRealArrayDisp*)
  EMPTY_VALUE(LnFugacityCoeff, IRealArrayDisp*)
  EMPTY_VALUE(IsPseudoRoot, BYTE)
#undef EMPTY_VALUE
  STDMETHODIMP Finalize(IDispatch*) noexcept override { return S_OK; }
  STDMETHODIMP get_NumberOfCompounds(INT*) noexcept override { return S_OK; }
  STDMETHODIMP get_Compounds(IDispatch**) noexcept override { return S_OK; }
  STDMETHODIMP ResetProperties(DWORD) noexcept override { return S_OK; }
  STDMETHODIMP IsActivePhase(VARIANT_BOOL*) noexcept override { return S_OK; }
  STDMETHODIMP CopyProperties(IDispatch*) noexcept override { return S_OK; }
  STDMETHODIMP GetCompounds(ICompoundCollection**) noexcept override { return S_OK; }
  STDMETHODIMP GetLnFugacity(IRealArrayDisp**) noexcept override { return S_OK; }
  STDMETHODIMP GetLnFugacityCoeff(IRealArrayDisp**) noexcept override { return S_OK; }
};

}  // namespace

IBasicCompound* emptyCompound() {
  static EmptyCompound compound;
  return &compound;
}

ICompoundCollection* emptyCollection() {
  static EmptyCollection collection;
  return &collection;
}

IBasicPhase* emptyPhase() {
  static EmptyPhase phase;
  return &phase;
}

}  // namespace qs::bench
