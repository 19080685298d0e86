// The results of a kind that does not override an operation, and the kinds other than equations.
#include "props/property.h"

#include <utility>

#include "com/component.h"
#include "props/property_text.h"

namespace qs {
namespace {

HRESULT notValid(BSTR* out) {
  *out = Bstr(OLESTR("Not Valid")).release();
  return S_FALSE;
}

HRESULT noValues(double* first, double* second) {
  *first = *second = kEmptyValue;
  return S_FALSE;
}

}  // namespace

void CQSAbstractProp::setLoader(Bstr name) {
  if (name || origin_) origin().loader = std::move(name);
}

void CQSAbstractProp::setSource(ValueSource source) {
  if (origin_ || source.isKnown()) origin().source = std::move(source);
  isOfDatabase_ = false;
}

void CQSAbstractProp::copyNameAndSource(const CQSAbstractProp& src) {
  ValueSource copy = src.source();
  Name = src.Name;
  setSource(std::move(copy));
  isOfDatabase_ = src.isOfDatabase_;
}

CQSAbstractProp::Origin& CQSAbstractProp::origin() {
  if (!origin_) origin_ = std::make_unique<Origin>();
  return *origin_;
}

HRESULT CQSAbstractProp::SetValue(double) { return S_FALSE; }
HRESULT CQSAbstractProp::GetClassName(BSTR* name) const { return notValid(name); }
HRESULT CQSAbstractProp::GetForm(BSTR* form) const { return notValid(form); }

HRESULT CQSAbstractProp::GetShape(LONG* shape) const {
  *shape = PropCurveVoid;
  return S_FALSE;
}

HRESULT CQSAbstractProp::GetNumbOfParameters(LONG* n) const {
  *n = 0;
  return S_FALSE;
}

HRESULT CQSAbstractProp::GetParameter(LONG, double* v) const {
  *v = kEmptyValue;
  return S_FALSE;
}

HRESULT CQSAbstractProp::GetTRange(double* tmin, double* tmax) const { return noValues(tmin, tmax); }
HRESULT CQSAbstractProp::GetPRange(double* pmin, double* pmax) const { return noValues(pmin, pmax); }

HRESULT CQSAbstractProp::GetXYShape(LONG* xshape, LONG* yshape) const {
  *xshape = *yshape = eNoShapeDefined;
  return S_FALSE;
}

HRESULT CQSAbstractProp::GetXYNorm(double* xnorm, double* ynorm) const { return noValues(xnorm, ynorm); }
HRESULT CQSAbstractProp::GetXYPow(double* xpow, double* ypow) const { return noValues(xpow, ypow); }
HRESULT CQSAbstractProp::GetAB(double* a, double* b) const { return noValues(a, b); }
HRESULT CQSAbstractProp::SetParameters(const double*, LONG) { return S_FALSE; }
HRESULT CQSAbstractProp::SetParameter(LONG, double) { return S_FALSE; }
HRESULT CQSAbstractProp::SetTRange(double, double) { return S_FALSE; }
HRESULT CQSAbstractProp::SetPRange(double, double) { return S_FALSE; }
HRESULT CQSAbstractProp::SetXYShape(LONG, LONG) { return S_FALSE; }
HRESULT CQSAbstractProp::SetXYNorm(double, double) { return S_FALSE; }
HRESULT CQSAbstractProp::SetXYPow(double, double) { return S_FALSE; }
HRESULT CQSAbstractProp::SetAB(double, double) { return S_FALSE; }

HRESULT CQSAbstractProp::GetCOMClassName(BSTR* name) const {
  *name = nullptr;
  return S_FALSE;
}

HRESULT CQSAbstractProp::GetCOMObject(IPCProperty** obj) const {
  *obj = nullptr;
  return S_FALSE;
}

HRESULT CQSAbstractProp::SetCOMClassName(BSTR) { return S_FALSE; }
HRESULT CQSAbstractProp::SetCOMObject(IPCProperty*) { return S_FALSE; }

HRESULT CQSPointProp::Copy(const CQSAbstractProp* src) {
  if (!isOfType(src, PointProp)) return S_FALSE;
  copyNameAndSource(*src);
  LONG dependencies = 0;
  src->GetValue(0.0, 0.0, eNoExtrapolation, &dependencies, &value_);
  return S_OK;
}

HRESULT CQSPointProp::GetValue(double, double, tagExtrapolationEnum, LONG* pDependencies, double* pVal) const {
  *pDependencies = 0;
  *pVal = value_;
  return S_OK;
}

HRESULT CQSPointProp::Store(BSTR* data) const {
  PropertyText text;
  appendItem(text, kPointValue, value_);
  *data = Bstr(text.text()).release();
  return S_OK;
}

HRESULT CQSPointProp::Recall(BSTR data) {
  convertValue(ReadKeyValue(kPointValue.key(), viewOf(data)).value_or(WideView()), &value_);
  return S_OK;
}

HRESULT CQSPointProp::SetValue(double v) {
  value_ = v;
  return S_OK;
}

HRESULT CQSVoidProp::Copy(const CQSAbstractProp* src) {
  if (!isOfType(src, VoidProp)) return S_FALSE;
  copyNameAndSource(*src);
  return SetType(VoidProp);
}

HRESULT CQSVoidProp::GetValue(double, double, tagExtrapolationEnum, LONG* pDependencies, double* pVal) const {
  *pDependencies = 0;
  *pVal = kEmptyValue;
  return S_FALSE;
}

HRESULT CQSVoidProp::Store(BSTR* data) const {
  *data = Bstr(kVoidText).release();
  return S_OK;
}

HRESULT CQSVoidProp::Recall(BSTR) { return S_OK; }

HRESULT CQSCOMProp::Copy(const CQSAbstractProp* src) {
  if (!isOfType(src, COMProp)) return S_FALSE;
  copyNameAndSource(*src);
  className_ = Bstr();
  object_ = ComPtr<IPCProperty>();
  content_ = Bstr();
  return S_OK;
}

HRESULT CQSCOMProp::GetValue(double T, double P, tagExtrapolationEnum e, LONG* pDependencies, double* pVal) const {
  if (!object_) {
    *pVal = kEmptyValue;
    return S_FALSE;
  }
  // The component may put another property in the place of this one.
  const ComPtr<IPCProperty> object = object_;
  object->GetProperty(T, P, e, pDependencies, pVal);
  return S_OK;
}

CQSCOMProp::Stored CQSCOMProp::stored() const {
  Stored stored{className_, content_};
  if (const ComPtr<IPCProperty> object = object_)
    check(object.get(), object->Store(stored.content.out()), {"the component of a property"});
  return stored;
}

HRESULT CQSCOMProp::Store(BSTR* data) const {
  const Stored component = stored();
  PropertyText text;
  appendComponent(text, kClassName, {component.className.view(), component.content.view()});
  *data = Bstr(text.text()).release();
  return S_OK;
}

HRESULT CQSCOMProp::Recall(BSTR data) {
  const std::optional<WideView> name = ReadKeyValue(kClassName, viewOf(data));
  className_ = name ? Bstr(*name) : Bstr();
  return S_OK;
}

HRESULT CQSCOMProp::GetCOMClassName(BSTR* name) const {
  *name = Bstr(className_).release();
  return *name ? S_OK : S_FALSE;
}

HRESULT CQSCOMProp::GetCOMObject(IPCProperty** obj) const {
  *obj = ComPtr<IPCProperty>(object_).release();
  return *obj ? S_OK : S_FALSE;
}

HRESULT CQSCOMProp::SetCOMClassName(BSTR name) {
  className_ = Bstr::copyOf(name);
  return S_OK;
}

HRESULT CQSCOMProp::SetCOMObject(IPCProperty* obj) {
  if (!obj) return S_FALSE;
  object_.release();
  object_ = ComPtr<IPCProperty>(obj);
  return S_OK;
}

}  // namespace qs
