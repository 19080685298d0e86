#include "props/curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>
#include <span>
#include <string>
#include <tuple>

#include "platform/number_text.h"
#include "props/forms.h"
#include "props/property_text.h"
#include "props/transform.h"

namespace qs {
namespace {

// What all equations share: everything but the form's function and the storage of its coefficients. An equation
// evaluates at any temperature and pressure; whoever cares about its ranges asks for them.
class CurveBase : public CQSAbstractProp {
 public:
  HRESULT Copy(const CQSAbstractProp* src) override;
  HRESULT Store(BSTR* data) const override;
  HRESULT Recall(BSTR data) override;
  HRESULT GetClassName(BSTR* name) const override { return giveText(form_.className, name); }
  HRESULT GetForm(BSTR* form) const override { return giveText(form_.formula, form); }
  HRESULT GetShape(LONG* shape) const override { return give(form_.shape, shape); }
  HRESULT GetNumbOfParameters(LONG* n) const override { return give(form_.coefficients, n); }
  HRESULT GetParameter(LONG i, double* v) const override;
  HRESULT SetParameters(const double* values, LONG n) override;
  HRESULT SetParameter(LONG i, double v) override;

  HRESULT GetTRange(double* tmin, double* tmax) const override { return give(tMin_, tmin), give(tMax_, tmax); }
  HRESULT GetPRange(double* pmin, double* pmax) const override { return give(pMin_, pmin), give(pMax_, pmax); }
  HRESULT GetXYShape(LONG* xshape, LONG* yshape) const override { return give(xShape_, xshape), give(yShape_, yshape); }
  HRESULT GetXYNorm(double* xnorm, double* ynorm) const override { return give(xNorm_, xnorm), give(yNorm_, ynorm); }
  HRESULT GetXYPow(double* xpow, double* ypow) const override { return give(xPow_, xpow), give(yPow_, ypow); }
  HRESULT GetAB(double* a, double* b) const override { return give(a_, a), give(b_, b); }
  HRESULT SetTRange(double tmin, double tmax) override { return give(tmin, &tMin_), give(tmax, &tMax_); }
  HRESULT SetPRange(double pmin, double pmax) override { return give(pmin, &pMin_), give(pmax, &pMax_); }
  HRESULT SetXYShape(LONG xshape, LONG yshape) override { return give(xshape, &xShape_), give(yshape, &yShape_); }
  HRESULT SetXYNorm(double xnorm, double ynorm) override { return give(xnorm, &xNorm_), give(ynorm, &yNorm_); }
  HRESULT SetXYPow(double xpow, double ypow) override { return give(xpow, &xPow_), give(ypow, &yPow_); }
  HRESULT SetAB(double a, double b) override { return give(a, &a_), give(b, &b_); }

 protected:
  // `parameters` is the array that the derived class owns.
  CurveBase(const EquationForm& form, std::span<double> parameters) : form_(form), parameters_(parameters) {}

  // False when the transformation fails. The usual cases are settled here; the rest works on a copy, so that the value
  // can stay in a register.
  bool transformX(double P, double& x) const {
    if (xShape_ == COMx && xPow_ == 1.0) return x != kEmptyValue;
    double transformed = x;
    const bool valid = transformForward({xShape_, xNorm_, xPow_, a_, b_}, P, &transformed);
    x = transformed;
    return valid;
  }
  bool transformY(double P, double& y) const {
    if (yShape_ == COMx && yPow_ == 1.0) return y != kEmptyValue;
    if (yShape_ == COMlnx && yPow_ == 1.0) {
      y = std::exp(y);
      return true;
    }
    double transformed = y;
    const bool valid = transformBack({yShape_, yNorm_, yPow_, a_, b_}, P, &transformed);
    y = transformed;
    return valid;
  }

  double tMin_ = 1e-05;
  double tMax_ = 1e+10;

 private:
  template <class T>
  static HRESULT give(T value, T* out) {
    *out = value;
    return S_OK;
  }
  static HRESULT giveText(WideView text, BSTR* out) { return give(Bstr(text).release(), out); }

  bool hasParameter(LONG i) const { return i >= 0 && i < form_.coefficients; }
  template <class T>
  void recallPair(const ItemPair<T>& pair, WideView text, bool evenMissing);
  void recallParameters(WideView values, LONG given);

  const EquationForm& form_;
  std::span<double> parameters_;
  LONG xShape_ = COMx;
  LONG yShape_ = COMx;
  double xNorm_ = 1.0;
  double yNorm_ = 1.0;
  double xPow_ = 1.0;
  double yPow_ = 1.0;
  double a_ = kEmptyValue;
  double b_ = kEmptyValue;
  double pMin_ = 1e-05;
  double pMax_ = 1e+15;
};

HRESULT CurveBase::Copy(const CQSAbstractProp* src) {
  if (!isOfType(src, EquationProp)) return S_FALSE;
  LONG shape = 0;
  src->GetShape(&shape);
  if (shape != form_.shape) return S_FALSE;

  Name = src->Name;
  src->GetTRange(&tMin_, &tMax_);
  src->GetPRange(&pMin_, &pMax_);
  for (LONG i = 0; i < form_.coefficients; ++i) src->GetParameter(i, &parameters_[static_cast<std::size_t>(i)]);
  src->GetXYShape(&xShape_, &yShape_);
  src->GetXYPow(&xPow_, &yPow_);
  src->GetXYNorm(&xNorm_, &yNorm_);
  src->GetAB(&a_, &b_);
  return S_OK;
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
  return hasParameter(i) ? give(parameters_[static_cast<std::size_t>(i)], v) : S_FALSE;
}

HRESULT CurveBase::SetParameter(LONG i, double v) {
  return hasParameter(i) ? give(v, &parameters_[static_cast<std::size_t>(i)]) : S_FALSE;
}

HRESULT CurveBase::SetParameters(const double* values, LONG n) {
  if (n < form_.coefficients) return E_FAIL;
  std::copy_n(values, parameters_.size(), parameters_.begin());
  return S_OK;
}

// Integral powers by multiplication.
template <int n>
constexpr double power(double x) {
  if constexpr (n == 1)
    return x;
  else if constexpr (n % 2 == 0)
    return power<n / 2>(x) * power<n / 2>(x);
  else
    return power<n - 1>(x) * x;
}

// The molar gas constant as the forms that use it were fitted, J/(mol K).
constexpr double kR = 8.314;

// The function of each form. Coefficients that a form stores without using stay unused.
namespace form {

#define QS_LETTERS_2 [[maybe_unused]] double A, [[maybe_unused]] double B
#define QS_LETTERS_3 QS_LETTERS_2, [[maybe_unused]] double C
#define QS_LETTERS_4 QS_LETTERS_3, [[maybe_unused]] double D
#define QS_LETTERS_5 QS_LETTERS_4, [[maybe_unused]] double E
#define QS_LETTERS_6 QS_LETTERS_5, [[maybe_unused]] double F
#define QS_LETTERS_7 QS_LETTERS_6, [[maybe_unused]] double G
#define QS_FORM(number, name, coefficients, formula, ...)                    \
  struct name {                                                              \
    static constexpr std::size_t kNumber = number;                           \
    static double value(double X, QS_LETTERS_##coefficients) { __VA_ARGS__ } \
  };
#include "props/forms.def"

// The derivative of VELDB5's exponent with respect to 1/X.
double slopeOfVELDB5(double X, QS_LETTERS_6) {
  return -power<2>(X) * (E * F * std::pow(X, F - 1.0) + D / X - B / power<2>(X + C));
}

}  // namespace form

template <class Form>
class CQSPropCurve final : public CurveBase {
 public:
  CQSPropCurve() : CurveBase(kForm, coefficients_) { coefficients_.fill(kEmptyValue); }

  HRESULT GetValue(double T, double P, tagExtrapolationEnum, LONG* pDependencies, double* pVal) const override {
    double value = T;
    if (!evaluate(P, value)) return S_FALSE;
    *pVal = value;
    if (!transformY(P, value)) return S_FALSE;
    *pVal = value;
    *pDependencies = 1;
    return S_OK;
  }

 private:
  static constexpr const EquationForm& kForm = kEquationForms[Form::kNumber];

  // Replaces a temperature by the form's value there; false when its transformation fails.
  bool evaluate(double P, double& x) const {
    if (!transformX(P, x)) return false;
    x = apply(Form::value, x);
    return true;
  }

  template <class Function>
  double apply(Function function, double x) const {
    return std::apply([&](auto... coefficients) { return function(x, coefficients...); }, coefficients_);
  }

  std::array<double, kForm.coefficients> coefficients_;
};

// Outside the temperature range the exponent goes on from the bound linearly in 1/T.
template <>
bool CQSPropCurve<form::VELDB5>::evaluate(double P, double& x) const {
  const double T = x;
  const bool inRange = tMin_ <= T && T <= tMax_;
  if (!inRange) x = T > tMax_ ? tMax_ : tMin_;
  if (!transformX(P, x)) return false;

  double exponent = apply(form::VELDB5::value, x);
  if (!inRange) {
    const double slope = apply(form::slopeOfVELDB5, x);
    exponent = exponent - slope / x + slope / T;
  }
  constexpr double kLargestExponent = 690.0;
  x = std::exp(exponent > kLargestExponent ? kLargestExponent : exponent);
  return true;
}

#define QS_FORM(number, name, coefficients, formula, ...) using CQSPropCurve##name = CQSPropCurve<form::name>;
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
#define QS_FORM(number, name, coefficients, formula, ...) &create<CQSPropCurve##name>,
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
