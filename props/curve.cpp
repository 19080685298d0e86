#include "props/curve.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <span>
#include <string>
#include <tuple>

#include "com/error.h"
#include "platform/number_text.h"
#include "props/form_functions.h"
#include "props/property_text.h"

namespace qs {
namespace {

// What all equations share: everything but the form's function and the storage of its coefficients. An equation
// evaluates at any temperature and pressure; whoever cares about its ranges asks for them.
class CurveBase : public CQSAbstractProp {
 public:
  HRESULT Copy(const CQSAbstractProp* src) override;
  HRESULT Store(BSTR* data) const override;
  HRESULT Recall(BSTR data) override;
  HRESULT GetClassName(BSTR* name) const override { return giveText(data_.form.className, name); }
  HRESULT GetForm(BSTR* form) const override { return giveText(data_.form.formula, form); }
  HRESULT GetShape(LONG* shape) const override { return give(data_.form.shape, shape); }
  HRESULT GetNumbOfParameters(LONG* n) const override { return give(data_.form.coefficients, n); }
  HRESULT GetParameter(LONG i, double* v) const override;
  HRESULT SetParameters(const double* values, LONG n) override;
  HRESULT SetParameter(LONG i, double v) override;

  HRESULT GetTRange(double* tmin, double* tmax) const override {
    return give(data_.tMin, tmin), give(data_.tMax, tmax);
  }
  HRESULT GetPRange(double* pmin, double* pmax) const override {
    return give(data_.pMin, pmin), give(data_.pMax, pmax);
  }
  HRESULT GetXYShape(LONG* xshape, LONG* yshape) const override {
    return give(data_.xShape, xshape), give(data_.yShape, yshape);
  }
  HRESULT GetXYNorm(double* xnorm, double* ynorm) const override {
    return give(data_.xNorm, xnorm), give(data_.yNorm, ynorm);
  }
  HRESULT GetXYPow(double* xpow, double* ypow) const override { return give(data_.xPow, xpow), give(data_.yPow, ypow); }
  HRESULT GetAB(double* a, double* b) const override { return give(data_.a, a), give(data_.b, b); }
  HRESULT SetTRange(double tmin, double tmax) override { return give(tmin, &data_.tMin), give(tmax, &data_.tMax); }
  HRESULT SetPRange(double pmin, double pmax) override { return give(pmin, &data_.pMin), give(pmax, &data_.pMax); }
  HRESULT SetXYShape(LONG xshape, LONG yshape) override {
    data_.xShape = xshape;
    data_.yShape = yshape;
    return chooseWay();
  }
  HRESULT SetXYNorm(double xnorm, double ynorm) override {
    return give(xnorm, &data_.xNorm), give(ynorm, &data_.yNorm);
  }
  HRESULT SetXYPow(double xpow, double ypow) override {
    data_.xPow = xpow;
    data_.yPow = ypow;
    return chooseWay();
  }
  HRESULT SetAB(double a, double b) override { return give(a, &data_.a), give(b, &data_.b); }

 protected:
  // `coefficients` is the array that the derived class owns.
  CurveBase(const EquationForm& form, std::span<double> coefficients)
      : CQSAbstractProp(&data_), data_{form, coefficients, form::kNotWhole} {}

  Equation data_;

 private:
  template <class T>
  static HRESULT give(T value, T* out) {
    *out = value;
    return S_OK;
  }
  static HRESULT giveText(WideView text, BSTR* out) { return give(Bstr(text).release(), out); }

  bool hasParameter(LONG i) const { return i >= 0 && i < data_.form.coefficients; }
  void put(LONG i, double v);
  HRESULT chooseWay();
  template <class T>
  void recallPair(const ItemPair<T>& pair, WideView text, bool evenMissing);
  void recallParameters(WideView values, LONG given);
};

HRESULT CurveBase::Copy(const CQSAbstractProp* src) {
  if (!isOfType(src, EquationProp)) return S_FALSE;
  LONG shape = 0;
  src->GetShape(&shape);
  if (shape != data_.form.shape) return S_FALSE;

  copyNameAndSource(*src);
  src->GetTRange(&data_.tMin, &data_.tMax);
  src->GetPRange(&data_.pMin, &data_.pMax);
  for (LONG i = 0; i < data_.form.coefficients; ++i) {
    double v = kEmptyValue;
    src->GetParameter(i, &v);
    put(i, v);
  }
  src->GetXYShape(&data_.xShape, &data_.yShape);
  src->GetXYPow(&data_.xPow, &data_.yPow);
  src->GetXYNorm(&data_.xNorm, &data_.yNorm);
  src->GetAB(&data_.a, &data_.b);
  return chooseWay();
}

HRESULT CurveBase::Store(BSTR* data) const {
  PropertyText text;
  appendEquation(text, *this);
  *data = Bstr(text.text()).release();
  return S_OK;
}

// A range that is not there reads as zeros; anything else then stays as it was.
HRESULT CurveBase::Recall(BSTR data) {
  const WideView text = viewOf(data);
  for (const auto& pair : kRangeItems) recallPair(pair, text, true);

  LONG given = 0;
  convertValue(ReadKeyValue(kCoefficientCount.key(), text).value_or(WideView()), &given);
  recallParameters(ReadKeyValue(kCoefficients.key(), text).value_or(WideView()), given);

  for (const auto& pair : kShapeItems) recallPair(pair, text, false);
  for (const auto& pair : kTransformationItems) recallPair(pair, text, false);
  return S_OK;
}

template <class T>
void CurveBase::recallPair(const ItemPair<T>& pair, WideView text, bool evenMissing) {
  const auto recall = [&](Opening opening, T& value) {
    const auto found = ReadKeyValue(opening.key(), text);
    if (found || evenMissing) convertValue(found.value_or(WideView()), &value);
  };
  T first{};
  T second{};
  (this->*pair.get)(&first, &second);
  recall(pair.first, first);
  recall(pair.second, second);
  (this->*pair.set)(first, second);
}

// Reads no more than `given` values, separated by commas, into the coefficients; the others stay.
void CurveBase::recallParameters(WideView values, LONG given) {
  const std::string text = narrow(values);
  LONG index = 0;
  for (std::string_view rest = text; index < given && hasParameter(index);) {
    rest.remove_prefix(std::min(rest.find_first_not_of(','), rest.size()));
    if (rest.empty()) break;
    const std::size_t end = std::min(rest.find(','), rest.size());
    SetParameter(index++, readDouble(rest.substr(0, end)));
    rest.remove_prefix(end);
  }
}

HRESULT CurveBase::GetParameter(LONG i, double* v) const {
  return hasParameter(i) ? give(data_.coefficients[static_cast<std::size_t>(i)], v) : S_FALSE;
}

HRESULT CurveBase::SetParameter(LONG i, double v) {
  if (!hasParameter(i)) return S_FALSE;
  put(i, v);
  return S_OK;
}

HRESULT CurveBase::SetParameters(const double* values, LONG n) {
  if (n < data_.form.coefficients)
    return because(E_FAIL, {"the form of equation takes ", data_.form.coefficients, " coefficients, not ", n});
  for (LONG i = 0; i < data_.form.coefficients; ++i) put(i, values[i]);
  return S_OK;
}

void CurveBase::put(LONG i, double v) {
  data_.coefficients[static_cast<std::size_t>(i)] = v;
  if (i == data_.form.exponent) data_.whole = form::wholeOf(v);
}

HRESULT CurveBase::chooseWay() {
  const bool plainX = data_.xShape == COMx && data_.xPow == 1.0, powerlessY = data_.yPow == 1.0;
  if (plainX && powerlessY && data_.yShape == COMx)
    data_.way = Equation::Way::Plain;
  else
    data_.way = plainX && powerlessY && data_.yShape == COMlnx ? Equation::Way::LnY : Equation::Way::Any;
  return S_OK;
}

template <class Form>
class CQSPropCurve final : public CurveBase {
 public:
  CQSPropCurve() : CurveBase(kForm, coefficients_) { coefficients_.fill(kEmptyValue); }

  HRESULT GetValue(double T, double P, tagExtrapolationEnum, LONG* pDependencies, double* pVal) const override {
    if (data_.way == Equation::Way::Any || extrapolatesAt(T)) [[unlikely]]
      return transformedValue(T, P, pDependencies, pVal);
    if (isEmpty(T)) return S_FALSE;
    double value = valueAt(T);
    if (data_.way == Equation::Way::LnY) value = form::exp(value);
    *pVal = value;
    if (isEmpty(value)) return S_FALSE;
    *pDependencies = 1;
    return S_OK;
  }

 private:
  static constexpr const EquationForm& kForm = kEquationForms[Form::kNumber];
  static constexpr bool kExtrapolates = Form::kNumber == form::VELDB5::kNumber;

  bool extrapolatesAt(double T) const { return kExtrapolates && data_.extrapolatesAt(T); }

  double valueAt(double x) const {
    return std::apply([&](auto... coefficients) { return Form::value(x, coefficients..., data_.whole); },
                      coefficients_);
  }

  [[gnu::noinline]] HRESULT transformedValue(double T, double P, LONG* pDependencies, double* pVal) const {
    double value = !extrapolatesAt(T) ? T : T > data_.tMax ? data_.tMax : data_.tMin;
    if (!transformForward(data_.x(), P, &value)) return S_FALSE;
    if constexpr (kExtrapolates)
      value = extrapolatesAt(T) ? form::extrapolatedVELDB5(T, value, data_.coefficients, data_.whole) : valueAt(value);
    else
      value = valueAt(value);
    *pVal = value;
    if (!transformBack(data_.y(), P, &value)) return S_FALSE;
    *pVal = value;
    *pDependencies = 1;
    return S_OK;
  }

  std::array<double, kForm.coefficients> coefficients_;
};

#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) \
  using CQSPropCurve##name = CQSPropCurve<form::name>;
#include "props/forms.def"

// An equation without a form.
class CQSPropCurveVoid final : public CurveBase {
 public:
  CQSPropCurveVoid() : CurveBase(kEquationForms.back(), {}) {}

  HRESULT GetValue(double, double, tagExtrapolationEnum, LONG* pDependencies, double* pVal) const override {
    *pDependencies = 0;
    *pVal = kEmptyValue;
    return S_OK;
  }
};

template <class Curve>
CQSAbstractProp* create() {
  return new (std::nothrow) Curve;
}

constexpr std::array<CQSAbstractProp* (*)(), kFormCount> kCreators = {
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) &create<CQSPropCurve##name>,
#include "props/forms.def"
};

}  // namespace

HRESULT CreateEquationProp(LONG shape, CQSAbstractProp** out) {
  if (shape == PropCurveVoid) {
    *out = create<CQSPropCurveVoid>();
  } else if (shape >= 0 && shape < static_cast<LONG>(kCreators.size())) {
    *out = kCreators[static_cast<std::size_t>(shape)]();
  } else {
    return E_FAIL;
  }
  return *out ? (*out)->SetType(EquationProp) : E_OUTOFMEMORY;
}

}  // namespace qs
