// New property objects, each with its kind.
#pragma once

#include <memory>
#include <span>

#include "props/property.h"

namespace qs {

using PropertyPtr = std::unique_ptr<CQSAbstractProp>;

// An object of a tagPropTypeEnum, without content; any number but those of points, equations and components makes a
// void one. Null for an equation whose `shape` is no tagEquationShapeEnum.
PropertyPtr newProperty(LONG kind, LONG shape = PropCurveVoid);

// An object with the name, loader, source, kind, content and external component of another.
PropertyPtr duplicate(const CQSAbstractProp& source);

// Objects with their name and content.
PropertyPtr newVoid(PropertyName name);
PropertyPtr newPoint(PropertyName name, double value);
PropertyPtr newComponentProperty(PropertyName name, BSTR className, IPCProperty* component);

struct EquationData {
  LONG shape;  // a tagEquationShapeEnum
  double tMin, tMax, pMin, pMax;
  std::span<const double> coefficients;
};

// Throws CQSCOMError(E_FAIL) for a number that is no shape and for too few coefficients; further ones are ignored.
PropertyPtr newEquation(PropertyName name, const EquationData& data);

}  // namespace qs
