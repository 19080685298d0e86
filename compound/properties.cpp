// Properties by name and by position: reading, storing, and the transformations of equations.
#include <algorithm>
#include <array>

#include "com/host_arrays.h"
#include "compound/compound.h"
#include "props/forms.h"
#include "props/identity_fields.h"

namespace qs {
namespace {

// The fixed map is chosen by 1, the other map by any other value.
constexpr bool isFixed(BYTE flag) { return flag == 1; }

// The order in which hosts know the identity fields.
constexpr auto kCommonNames = std::to_array<WideView>({
    nameOf(IdentityField::Name),
    OLESTR("NumberOfSynonymNames"),
    OLESTR("SynonymName"),
    nameOf(IdentityField::PPAttribute),
    nameOf(IdentityField::CASN),
    nameOf(IdentityField::IUPACName),
    nameOf(IdentityField::VelcorinID),
    nameOf(IdentityField::PPDSID),
    nameOf(IdentityField::DDBID),
    nameOf(IdentityField::DIPPRID),
    nameOf(IdentityField::CMAID),
    nameOf(IdentityField::ChemicalFormula),
    nameOf(IdentityField::Family),
    nameOf(IdentityField::SubFamily),
    nameOf(IdentityField::NonCondensable),
});
static_assert(kCommonNames.size() == kIdentityNames.size() + 2 &&
                  std::ranges::all_of(kIdentityNames,
                                      [](WideView name) { return std::ranges::count(kCommonNames, name) == 1; }),
              "every field once");

tagPropTypeEnum kindOf(const CQSAbstractProp& property) {
  LONG type = VoidProp;
  property.GetType(&type);
  return static_cast<tagPropTypeEnum>(type);
}

bool isEquation(const CQSAbstractProp* property) { return property && kindOf(*property) == EquationProp; }

HRESULT noEquation(BSTR name) noexcept {
  return because(S_FALSE, {"the property \"", name, "\" is no equation, or not there"});
}

std::vector<double> coefficientsOf(const CQSAbstractProp& equation) {
  LONG count = 0;
  equation.GetNumbOfParameters(&count);
  std::vector<double> values(static_cast<std::size_t>(count));
  for (LONG i = 0; i < count; ++i) equation.GetParameter(i, &values[static_cast<std::size_t>(i)]);
  return values;
}

}  // namespace

HRESULT COQSCompound::GetNumbOfProperty(BYTE fixed, INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = isFixed(fixed) ? kKeyCount : static_cast<INT>(content_.properties.others().size());
  return S_OK;
}

HRESULT COQSCompound::GetPropertyName(BYTE fixed, INT index, BSTR* name, tagPropTypeEnum* type) noexcept {
  if (!name || !type) return report(E_POINTER);
  INT count = 0;
  GetNumbOfProperty(fixed, &count);
  if (index < 0 || index >= count) return S_FALSE;
  return guarded([&] {
    WideView key;
    const CQSAbstractProp* property = nullptr;
    if (isFixed(fixed)) {
      const Key place = kKeysByName[static_cast<std::size_t>(index)];
      key = nameOf(place);
      property = content_.properties[place];
    } else {
      const auto& entry = *std::next(content_.properties.others().begin(), index);
      key = entry.first;
      property = entry.second.get();
    }
    if (property) key = property->Name.view();
    *name = property && property->Name.isNull() ? nullptr : Bstr(key).release();
    *type = property ? kindOf(*property) : VoidProp;
    return S_OK;
  });
}

HRESULT COQSCompound::GetPropertyValue(BSTR name, double temperature, double pressure, tagExtrapolationEnum method,
                                       LONG* dependencies, double* value) noexcept {
  if (!dependencies || !value) return report(E_POINTER);
  return valueOf(content_.properties.named(viewOf(name)), temperature, pressure, method, dependencies, value);
}

HRESULT COQSCompound::GetPropertyType(BSTR name, tagPropTypeEnum* type) noexcept {
  if (!type) return report(E_POINTER);
  const PropertyTable::Entry entry = content_.properties.find(viewOf(name));
  *type = entry.property ? kindOf(*entry.property) : VoidProp;
  // Among the other names an entry without an object counts as a void property.
  const bool known = entry.property || (entry.present && !entry.fixed);
  return known ? S_OK : report(noProperty(name));
}

HRESULT COQSCompound::GetEquationProperty(BSTR name, tagEquationShapeEnum* shape, BSTR* form, double* tMin,
                                          double* tMax, double* pMin, double* pMax, INT* parameterCount,
                                          IRealArrayDisp** parameters) noexcept {
  if (!shape || !form || !tMin || !tMax || !pMin || !pMax || !parameterCount || !parameters) return report(E_POINTER);
  return guardedLookUp([&] {
    const PropertyTable::Entry entry = content_.properties.find(viewOf(name));
    if (!entry.present) return noProperty(name);
    if (!isEquation(entry.property)) {
      *shape = PropCurveVoid;
      *form = nullptr;
      *tMin = *tMax = *pMin = *pMax = kEmptyValue;
      *parameterCount = 0;
      *parameters = nullptr;
      return noEquation(name);
    }
    // Copies: the host makes the array, and may take the equation away meanwhile.
    const CQSAbstractProp& equation = *entry.property;
    const std::vector<double> coefficients = coefficientsOf(equation);
    Bstr formula;
    LONG number = 0;
    double range[4];
    equation.GetForm(formula.out());
    equation.GetShape(&number);
    equation.GetTRange(&range[0], &range[1]);
    equation.GetPRange(&range[2], &range[3]);
    *parameters = newRealArray(coefficients).release();
    *parameterCount = static_cast<INT>(coefficients.size());
    *form = formula.release();
    *shape = static_cast<tagEquationShapeEnum>(number);
    *tMin = range[0];
    *tMax = range[1];
    *pMin = range[2];
    *pMax = range[3];
    return S_OK;
  });
}

HRESULT COQSCompound::GetCOMProperty(BSTR name, BSTR* className, IPCProperty** component) noexcept {
  if (!className || !component) return report(E_POINTER);
  return guardedLookUp([&] {
    const PropertyTable::Entry entry = content_.properties.find(viewOf(name));
    if (!entry.present) return noProperty(name);
    *className = nullptr;
    *component = nullptr;
    if (!entry.property || kindOf(*entry.property) != COMProp)
      return because(S_FALSE, {"the property \"", name, "\" is no component, or not there"});
    entry.property->GetCOMClassName(className);
    entry.property->GetCOMObject(component);
    return S_OK;
  });
}

HRESULT COQSCompound::GetNumbOfCommonProperty(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = static_cast<INT>(kCommonNames.size());
  return S_OK;
}

HRESULT COQSCompound::GetCommonPropertyName(INT index, BSTR* name, tagPropTypeEnum* type) noexcept {
  if (!name || !type) return report(E_POINTER);
  if (index < 0 || static_cast<std::size_t>(index) >= kCommonNames.size()) return S_FALSE;
  return guarded([&] {
    *name = Bstr(kCommonNames[static_cast<std::size_t>(index)]).release();
    // Of the integer fields too: hosts rely on it.
    *type = PointPropBSTR;
    return S_OK;
  });
}

HRESULT COQSCompound::SetPointProperty(BSTR name, BYTE fixed, double value) noexcept {
  return guardedLookUp([&] {
    PropertyPtr point = newPoint(viewOf(name), value);
    return stored(content_.properties.AddPropertyToMap(viewOf(name), isFixed(fixed), point), name);
  });
}

HRESULT COQSCompound::SetEquationProperty(BSTR name, BYTE fixed, tagEquationShapeEnum shape, double tMin, double tMax,
                                          double pMin, double pMax, IRealArrayDisp* parameters) noexcept {
  return guardedLookUp([&] {
    const EquationForm* form = findForm(LONG{shape});
    if (!form) return because(E_FAIL, {"property \"", name, "\": there is no form of equation ", shape});
    const std::vector<double> coefficients =
        parameters ? firstElementsOf<double>(parameters, form->coefficients) : std::vector<double>();
    PropertyPtr equation = newEquation(viewOf(name), {shape, tMin, tMax, pMin, pMax, coefficients});
    return stored(content_.properties.AddPropertyToMap(viewOf(name), isFixed(fixed), equation), name);
  });
}

HRESULT COQSCompound::SetCOMProperty(BSTR name, BYTE fixed, BSTR className, IPCProperty* component) noexcept {
  return guarded([&] {
    PropertyPtr property = newComponentProperty(viewOf(name), className, component);
    // A name that the fixed map refuses is not reported.
    content_.properties.AddPropertyToMap(viewOf(name), isFixed(fixed), property);
    return S_OK;
  });
}

HRESULT COQSCompound::ErasePropFromMap(BSTR name, BYTE fixed) noexcept {
  const HRESULT erased = content_.properties.erase(viewOf(name), isFixed(fixed));
  return erased == S_OK ? erased : report(noProperty(name));
}

HRESULT COQSCompound::FindProperty(BSTR name, BYTE* found, BYTE* fixed) noexcept {
  if (!found || !fixed) return report(E_POINTER);
  const PropertyTable::Entry entry = content_.properties.find(viewOf(name));
  *found = entry.property ? 1 : 0;
  *fixed = entry.fixed ? 1 : 0;
  return entry.property ? S_OK : report(noProperty(name));
}

HRESULT COQSCompound::GetEquationInfo(tagEquationShapeEnum shape, BSTR* form, INT* parameterCount) noexcept {
  if (!form || !parameterCount) return report(E_POINTER);
  return guardedLookUp([&] {
    const EquationForm* found = findForm(LONG{shape});
    if (!found) return because(S_FALSE, {"there is no form of equation ", shape});
    *form = Bstr(found->formula).release();
    *parameterCount = found->coefficients;
    return S_OK;
  });
}

HRESULT COQSCompound::SetVoidProperty(BSTR name, BYTE fixed) noexcept {
  return guardedLookUp([&] {
    PropertyPtr property = newVoid(viewOf(name));
    return stored(content_.properties.AddPropertyToMap(viewOf(name), isFixed(fixed), property), name);
  });
}

HRESULT COQSCompound::GetPropertyLoader(BSTR name, BSTR* loader) noexcept {
  if (!loader) return report(E_POINTER);
  return guardedLookUp([&] {
    const CQSAbstractProp* property = content_.properties.named(viewOf(name));
    if (!property) return noProperty(name);
    Bstr known = property->loader();
    if (!known) return because(S_FALSE, {"the property \"", name, "\" is of no loader"});
    *loader = known.release();
    return S_OK;
  });
}

HRESULT COQSCompound::SetPropertyLoader(BSTR name, BSTR loader) noexcept {
  return guardedLookUp([&] {
    CQSAbstractProp* property = content_.properties.named(viewOf(name));
    if (!property) return noProperty(name);
    property->setLoader(Bstr::copyOf(loader));
    return S_OK;
  });
}

HRESULT COQSCompound::GetEquationPropertyXYShape(BSTR name, tagXYShapeEnum* xShape, tagXYShapeEnum* yShape,
                                                 double* xNorm, double* yNorm, double* xPow, double* yPow, double* a,
                                                 double* b) noexcept {
  if (!xShape || !yShape || !xNorm || !yNorm || !xPow || !yPow || !a || !b) return report(E_POINTER);
  const PropertyTable::Entry entry = content_.properties.find(viewOf(name));
  if (!entry.present) return report(noProperty(name));
  if (!isEquation(entry.property)) {
    *xShape = *yShape = eNoShapeDefined;
    *xNorm = *yNorm = *xPow = *yPow = *a = *b = kEmptyValue;
    return report(noEquation(name));
  }
  LONG x = 0;
  LONG y = 0;
  entry.property->GetXYShape(&x, &y);
  *xShape = static_cast<tagXYShapeEnum>(x);
  *yShape = static_cast<tagXYShapeEnum>(y);
  entry.property->GetXYNorm(xNorm, yNorm);
  entry.property->GetXYPow(xPow, yPow);
  entry.property->GetAB(a, b);
  return S_OK;
}

HRESULT COQSCompound::SetEquationPropertyXYShape(BSTR name, tagXYShapeEnum xShape, tagXYShapeEnum yShape, double xNorm,
                                                 double yNorm, double xPow, double yPow, double a, double b) noexcept {
  CQSAbstractProp* property = content_.properties.named(viewOf(name));
  if (!isEquation(property)) return report(noEquation(name));
  property->SetXYShape(xShape, yShape);
  property->SetXYNorm(xNorm, yNorm);
  property->SetXYPow(xPow, yPow);
  property->SetAB(a, b);
  property->setSource({});
  return S_OK;
}

}  // namespace qs
