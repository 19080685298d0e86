#include "bank/properties.h"

#include "props/forms.h"

namespace qs::bank {

PropertyPtr propertyOf(const database::CompoundData& compound, Key key) {
  if (const auto constant = compound.constants.find(key); constant != compound.constants.end())
    return newPoint(key, constant->second);
  const auto correlation = database::correlationOf(compound, key);
  if (!correlation) return nullptr;
  const EquationForm* form = findForm(correlation->form);
  if (!form || form->shape == PropCurveVoid ||
      correlation->coefficients.size() < static_cast<std::size_t>(form->coefficients))
    return nullptr;
  PropertyPtr equation = newEquation(key, {correlation->form, correlation->tmin, correlation->tmax, correlation->pmin,
                                           correlation->pmax, correlation->coefficients});
  equation->SetXYShape(correlation->xShape, correlation->yShape);
  equation->SetXYPow(correlation->xPower, correlation->yPower);
  return equation;
}

}  // namespace qs::bank
