#include "props/transform.h"

#include <cmath>

#include "interfaces/interfaces.h"
#include "props/property.h"

namespace qs {
namespace {

bool lacksConstants(const Transformation& t) {
  return t.shape == COMxppdsm1 && (t.a == kEmptyValue || t.b == kEmptyValue);
}

// One row per shape, here and below.
double forward(double x, double P, const Transformation& t) {
  const double n = t.norm;
  // clang-format off
  switch (t.shape) {
    case COMx: return x;
    case COMxr: return x / n;
    case COM1mxr: return 1.0 - x / n;
    case COMlogx: return std::log10(x);
    case COMlogxr: return std::log10(x / n);
    case COMlog1mxr: return std::log10(1.0 - x / n);
    case COMlnx: return std::log(x);
    case COMlnxr: return std::log(x / n);
    case COMln1mxr: return std::log(1.0 - x / n);
    case COMexpx: return std::exp(x);
    case COMexpxr: return std::exp(x / n);
    case COMexp1mxr: return std::exp(1.0 - x / n);
    case COMsinx: return std::sin(x);
    case COMcosx: return std::cos(x);
    case COMtanx: return std::tan(x);
    case COMsinxr: return std::sin(x / n);
    case COMcosxr: return std::cos(x / n);
    case COMtanxr: return std::tan(x / n);
    case COMsin1mxr: return std::sin(1.0 - x / n);
    case COMcos1mxr: return std::cos(1.0 - x / n);
    case COMtan1mxr: return std::tan(1.0 - x / n);
    case COM1mx: return 1.0 - x;
    case COMxm1: return x - 1.0;
    case COMxrm1: return x / n - 1.0;
    case COMcuberoot1mxr: return std::pow(1.0 - x / n, 0.3333333333333333);
    case COMxppdsm1: return (t.a - t.b) / (x - t.b) - 1.0;
    case COMlnxxo: return std::log(n * x);
    case COMxscale: return x / (x + n);
    case COMxxo: return x * n;
    case COMrootxodx: return std::sqrt(n) / x;
    case COMxdp: return x / P;
    case COMxp: return x * P;
    case COMlnxp: return std::log(P * x);
    default: return kEmptyValue;
  }
  // clang-format on
}

double back(double y, double P, const Transformation& t) {
  const double n = t.norm;
  // clang-format off
  switch (t.shape) {
    case COMx: return y;
    case COMxr: return y * n;
    case COM1mxr: return (1.0 - y) * n;
    case COMlogx: return std::pow(10.0, y);
    case COMlogxr: return std::pow(10.0, y) * n;
    case COMlog1mxr: return (1.0 - std::pow(10.0, y)) * n;
    case COMlnx: return std::exp(y);
    case COMlnxr: return std::exp(y) * n;
    case COMln1mxr: return (1.0 - std::exp(y)) * n;
    case COMexpx: return std::log(y);
    case COMexpxr: return std::log(y) * n;
    case COMexp1mxr: return (1.0 - std::log(y)) * n;
    case COMsinx: return std::asin(y);
    case COMcosx: return std::acos(y);
    case COMtanx: return std::atan(y);
    case COMsinxr: return std::asin(y) * n;
    case COMcosxr: return std::acos(y) * n;
    case COMtanxr: return std::atan(y) * n;
    case COMsin1mxr: return (1.0 - std::asin(y)) * n;
    case COMcos1mxr: return (1.0 - std::acos(y)) * n;
    case COMtan1mxr: return (1.0 - std::atan(y)) * n;
    case COM1mx: return 1.0 - y;
    case COMxm1: return y + 1.0;
    case COMxrm1: return (y + 1.0) * n;
    case COMcuberoot1mxr: return (1.0 - y * y * y) * n;
    case COMxppdsm1: return (t.a - t.b) / (y + 1.0) + t.b;
    case COMlnxxo: return std::exp(y) / n;
    case COMxscale: return n / (1.0 - 1.0 / y);
    case COMxxo: return y / n;
    case COMrootxodx: return std::sqrt(n) / y;
    case COMxdp: return y * P;
    case COMxp: return y / P;
    case COMlnxp: return std::exp(y) / P;
    default: return kEmptyValue;
  }
  // clang-format on
}

}  // namespace

bool transformForward(const Transformation& transformation, double P, double* x) {
  if (lacksConstants(transformation)) return false;
  *x = forward(*x, P, transformation);
  if (*x == kEmptyValue) return false;
  if (transformation.power != 1.0) *x = std::pow(*x, transformation.power);
  return true;
}

bool transformBack(const Transformation& transformation, double P, double* y) {
  if (lacksConstants(transformation)) return false;
  if (transformation.power != 1.0) *y = std::pow(*y, 1.0 / transformation.power);
  *y = back(*y, P, transformation);
  return *y != kEmptyValue;
}

}  // namespace qs
