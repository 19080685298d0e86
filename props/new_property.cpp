#include "props/new_property.h"

#include <utility>

#include "props/curve.h"

namespace qs {
namespace {

PropertyPtr named(PropertyPtr property, PropertyName name) {
  property->Name = std::move(name);
  return property;
}

}  // namespace

PropertyPtr newProperty(LONG kind, LONG shape) {
  PropertyPtr property;
  switch (kind) {
    case PointProp:
      property = std::make_unique<CQSPointProp>();
      break;
    case EquationProp: {
      CQSAbstractProp* equation = nullptr;
      if (!succeeded(CreateEquationProp(shape, &equation))) return nullptr;
      property.reset(equation);
      break;
    }
    case COMProp:
      property = std::make_unique<CQSCOMProp>();
      break;
    default:
      property = std::make_unique<CQSVoidProp>();
  }
  property->SetType(kind);
  return property;
}

PropertyPtr duplicate(const CQSAbstractProp& source) {
  LONG kind = VoidProp;
  LONG shape = PropCurveVoid;
  source.GetType(&kind);
  source.GetShape(&shape);
  PropertyPtr copy = newProperty(kind, shape);
  copy->Copy(&source);
  copy->setLoader(source.loader());
  if (kind == COMProp) {
    Bstr className;
    ComPtr<IPCProperty> component;
    if (source.GetCOMClassName(className.out()) == S_OK) copy->SetCOMClassName(className.get());
    if (source.GetCOMObject(component.out()) == S_OK) copy->SetCOMObject(component.get());
    static_cast<CQSCOMProp&>(*copy).keepContent(static_cast<const CQSCOMProp&>(source).keptContent());
  }
  return copy;
}

PropertyPtr newVoid(PropertyName name) { return named(newProperty(VoidProp), std::move(name)); }

PropertyPtr newPoint(PropertyName name, double value) {
  PropertyPtr point = named(newProperty(PointProp), std::move(name));
  point->SetValue(value);
  return point;
}

PropertyPtr newComponentProperty(PropertyName name, BSTR className, IPCProperty* component) {
  PropertyPtr property = named(newProperty(COMProp), std::move(name));
  property->SetCOMClassName(className);
  property->SetCOMObject(component);
  return property;
}

PropertyPtr newEquation(PropertyName name, const EquationData& data) {
  PropertyPtr equation = newProperty(EquationProp, data.shape);
  if (!equation) fail(E_FAIL, {"there is no form of equation ", data.shape});
  equation->SetTRange(data.tMin, data.tMax);
  equation->SetPRange(data.pMin, data.pMax);
  check(equation->SetParameters(data.coefficients.data(), static_cast<LONG>(data.coefficients.size())));
  return named(std::move(equation), std::move(name));
}

}  // namespace qs
