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

  HRESULT GetTRange(double* tmin, double* tmax) const override { return give(Tmin, tmin), give(Tmax, tmax); }
  HRESULT GetPRange(double* pmin, double* pmax) const override { return give(Pmin, pmin), give(Pmax, pmax); }
  HRESULT GetXYShape(LONG* xshape, LONG* yshape) const override { return give(XShape, xshape), give(YShape, yshape); }
  HRESULT GetXYNorm(double* xnorm, double* ynorm) const override { return give(XNorm, xnorm), give(YNorm, ynorm); }
  HRESULT GetXYPow(double* xpow, double* ypow) const override { return give(XPow, xpow), give(YPow, ypow); }
  HRESULT GetAB(double* a, double* b) const override { return give(A, a), give(B, b); }
  HRESULT SetTRange(double tmin, double tmax) override { return give(tmin, &Tmin), give(tmax, &Tmax); }
  HRESULT SetPRange(double pmin, double pmax) override { return give(pmin, &Pmin), give(pmax, &Pmax); }
  HRESULT SetXYShape(LONG xshape, LONG yshape) override { return give(xshape, &XShape), give(yshape, &YShape); }
  HRESULT SetXYNorm(double xnorm, double ynorm) override { return give(xnorm, &XNorm), give(ynorm, &YNorm); }
  HRESULT SetXYPow(double xpow, double ypow) override { return give(xpow, &XPow), give(ypow, &YPow); }
  HRESULT SetAB(double a, double b) override { return give(a, &A), give(b, &B); }

 protected:
  // `parameters` is the array that the derived class owns.
  CurveBase(const EquationForm& form, std::span<double> parameters) : form_(form), Parameters(parameters) {}

  // False when the transformation fails. The usual cases are settled here; the rest works on a copy, so that the value
  // can stay in a register.
  bool transformX(double P, double& x) const {
    if (XShape == COMx && XPow == 1.0) return x != kEmptyValue;
    double transformed = x;
    const bool valid = transformForward({XShape, XNorm, XPow, A, B}, P, &transformed);
    x = transformed;
    return valid;
  }
  bool transformY(double P, double& y) const {
    if (YShape == COMx && YPow == 1.0) return y != kEmptyValue;
    if (YShape == COMlnx && YPow == 1.0) {
      y = std::exp(y);
      return true;
    }
    double transformed = y;
    const bool valid = transformBack({YShape, YNorm, YPow, A, B}, P, &transformed);
    y = transformed;
    return valid;
  }

  double Tmin = 1e-05;
  double Tmax = 1e+10;

 private:
  // An item of the text form.
  template <class T>
  struct Item {
    WideView key;
    T CurveBase::*field;
  };
  static const std::array<Item<double>, 4> kRanges;
  static const std::array<Item<LONG>, 2> kShapes;
  static const std::array<Item<double>, 6> kTransformations;

  template <class T>
  static HRESULT give(T value, T* out) {
    *out = value;
    return S_OK;
  }
  static HRESULT giveText(WideView text, BSTR* out) { return give(Bstr(text).release(), out); }

  bool hasParameter(LONG i) const { return i >= 0 && i < form_.coefficients; }
  void recallParameters(WideView values, LONG given);

  const EquationForm& form_;
  std::span<double> Parameters;
  LONG XShape = COMx;
  LONG YShape = COMx;
  double XNorm = 1.0;
  double YNorm = 1.0;
  double XPow = 1.0;
  double YPow = 1.0;
  double A = kEmptyValue;
  double B = kEmptyValue;
  double Pmin = 1e-05;
  double Pmax = 1e+15;
};

const std::array<CurveBase::Item<double>, 4> CurveBase::kRanges = {{
    {OLESTR("Tmin"), &CurveBase::Tmin},
    {OLESTR("Tmax"), &CurveBase::Tmax},
    {OLESTR("Pmin"), &CurveBase::Pmin},
    {OLESTR("Pmax"), &CurveBase::Pmax},
}};
const std::array<CurveBase::Item<LONG>, 2> CurveBase::kShapes = {{
    {OLESTR("Xshape"), &CurveBase::XShape},
    {OLESTR("Yshape"), &CurveBase::YShape},
}};
const std::array<CurveBase::Item<double>, 6> CurveBase::kTransformations = {{
    {OLESTR("Xnorm"), &CurveBase::XNorm},
    {OLESTR("Ynorm"), &CurveBase::YNorm},
    {OLESTR("Xpow"), &CurveBase::XPow},
    {OLESTR("Ypow"), &CurveBase::YPow},
    {OLESTR("A"), &CurveBase::A},
    {OLESTR("B"), &CurveBase::B},
}};

HRESULT CurveBase::Copy(const CQSAbstractProp* src) {
  if (!isOfType(src, EquationProp)) return S_FALSE;
  LONG shape = 0;
  src->GetShape(&shape);
  if (shape != form_.shape) return S_FALSE;

  Name = Bstr::copyOf(src->Name.get());
  src->GetTRange(&Tmin, &Tmax);
  src->GetPRange(&Pmin, &Pmax);
  for (LONG i = 0; i < form_.coefficients; ++i) src->GetParameter(i, &Parameters[static_cast<std::size_t>(i)]);
  src->GetXYShape(&XShape, &YShape);
  src->GetXYPow(&XPow, &YPow);
  src->GetXYNorm(&XNorm, &YNorm);
  src->GetAB(&A, &B);
  return S_OK;
}

HRESULT CurveBase::Store(BSTR* data) const {
  WideString text;
  const auto open = [&text](WideView key) {
    if (!text.empty()) text += OLESTR(' ');
    text += key;
    text += OLESTR('(');
  };
  const auto close = [&text] { text += OLESTR(')'); };
  const auto putInteger = [&](WideView key, LONG value) {
    open(key);
    appendInteger(text, value);
    close();
  };
  const auto putDouble = [&](const Item<double>& item) {
    open(item.key);
    appendDouble(text, this->*item.field);
    close();
  };

  for (const auto& item : kRanges) putDouble(item);
  putInteger(OLESTR("nParams"), form_.coefficients);
  open(OLESTR("Values"));
  for (std::size_t i = 0; i < Parameters.size(); ++i) {
    if (i > 0) text += OLESTR(',');
    appendDouble(text, Parameters[i]);
  }
  close();
  for (const auto& item : kShapes) putInteger(item.key, this->*item.field);
  for (const auto& item : kTransformations) putDouble(item);
  *data = Bstr(text).release();
  return S_OK;
}

HRESULT CurveBase::Recall(BSTR data) {
  const WideView text = viewOf(data);
  for (const auto& item : kRanges)
    convertValue(ReadKeyValue(item.key, text).value_or(WideView()), &(this->*item.field));

  LONG given = 0;
  convertValue(ReadKeyValue(OLESTR("nParams"), text).value_or(WideView()), &given);
  recallParameters(ReadKeyValue(OLESTR("Values"), text).value_or(WideView()), given);

  const auto readPresent = [&](const auto& items) {
    for (const auto& item : items) {
      if (const auto value = ReadKeyValue(item.key, text)) convertValue(*value, &(this->*item.field));
    }
  };
  readPresent(kShapes);
  readPresent(kTransformations);
  return S_OK;
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
  return hasParameter(i) ? give(Parameters[static_cast<std::size_t>(i)], v) : S_FALSE;
}

HRESULT CurveBase::SetParameter(LONG i, double v) {
  return hasParameter(i) ? give(v, &Parameters[static_cast<std::size_t>(i)]) : S_FALSE;
}

HRESULT CurveBase::SetParameters(const double* values, LONG n) {
  if (n < form_.coefficients) return E_FAIL;
  std::copy_n(values, Parameters.size(), Parameters.begin());
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
  const bool inRange = Tmin <= T && T <= Tmax;
  if (!inRange) x = T > Tmax ? Tmax : Tmin;
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
  CQSPropCurveVoid() : CurveBase(kEquationForms[kFormCount], {}) {}

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
