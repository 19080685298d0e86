// Integrals over temperature.
#pragma once

#include <optional>

#include "props/property.h"

namespace qs {

enum class Integrand { Y, YOverT };

// The integral of an equation, or of it over T, between two temperatures in K; at pressure P, in kPa. The equation goes
// on beyond its ranges as GetValue does. In closed form where there is one and the difference of its ends keeps the
// accuracy, else by quadrature; within 1e-12 of the integral of the magnitude. Nothing where quadrature gives nothing.
std::optional<double> integral(const CQSAbstractProp& equation, Integrand integrand, double from, double to, double P);

// A function of temperature that the caller keeps.
class FunctionOfT {
 public:
  template <class F>
  FunctionOfT(const F& f)
      : function_(&f),
        call_([](const void* function, double T) -> double { return (*static_cast<const F*>(function))(T); }) {}

  double operator()(double T) const { return call_(function_, T); }

 private:
  const void* function_;
  double (*call_)(const void* function, double T);
};

// The integral of a function of temperature, within 1e-12 of the integral of its magnitude: adaptive, with at most
// 12,433 evaluations. Its slope may be unbounded at an end. Nothing where the function is infinite or no number, at the
// ends too, or the error estimate stays too large, as it does at a pole. The host's floating-point exceptions are
// masked.
std::optional<double> quadrature(FunctionOfT function, double from, double to);

}  // namespace qs
