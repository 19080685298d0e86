// Ranges, and values that are read together.
#include "compound/compound.h"

namespace qs {
namespace {

// The state at which values without an argument are taken: 25 C and one atmosphere.
constexpr double kStandardTemperature = 298.15;
constexpr double kStandardPressure = 101.325;

}  // namespace

HRESULT COQSCompound::rangeOf(const CQSAbstractProp* property, double* tMin, double* tMax, double* pMin,
                              double* pMax) noexcept {
  if (!property) return S_FALSE;
  LONG type = VoidProp;
  property->GetType(&type);
  if (type == EquationProp) {
    property->GetTRange(tMin, tMax);
    property->GetPRange(pMin, pMax);
    return S_OK;
  }
  *tMin = *tMax = *pMin = *pMax = kEmptyValue;
  return S_FALSE;
}

double COQSCompound::standardValue(const CQSAbstractProp& property) {
  double value = kEmptyValue;
  LONG dependencies = 0;
  property.GetValue(kStandardTemperature, kStandardPressure, eNoExtrapolation, &dependencies, &value);
  return value;
}

HRESULT COQSCompound::standardValues(Key first, Key second, double* firstValue, double* secondValue,
                                     const char* member) const noexcept {
  const auto give = [&] {
    const PropertyTable& properties = content_.properties;
    if (!properties[first] || !properties[second]) return S_FALSE;
    const double one = standardValue(*properties[first]);
    // The first may be a component that takes the second away.
    if (!properties[second]) return S_FALSE;
    const double two = standardValue(*properties[second]);
    *firstValue = one;
    *secondValue = two;
    return one == kEmptyValue || two == kEmptyValue ? S_FALSE : S_OK;
  };
  return guarded(give, member);
}

HRESULT COQSCompound::get_ViscosityThetas(double* thetaA, double* thetaB) noexcept {
  if (!thetaA || !thetaB) return report(E_POINTER);
  return standardValues(Key::THETAA, Key::THETAB, thetaA, thetaB);
}

HRESULT COQSCompound::get_UNIQUAC1Parameters(double* r, double* q) noexcept {
  if (!r || !q) return report(E_POINTER);
  return standardValues(Key::UNIQUACR, Key::UNIQUACQ, r, q);
}

}  // namespace qs
