#include "collection/compound_filler.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "com/component.h"
#include "com/host_arrays.h"
#include "com/query.h"
#include "compound/compound.h"
#include "platform/number_text.h"
#include "props/key_table.h"
#include "props/property.h"

namespace qs {
namespace {

// Whether a call found what was asked for; a failure is raised.
bool found(HRESULT result) {
  check(result);
  return result == S_OK;
}

// How an identity field is read and written as text.
struct IdentityAccess {
  WideView name;
  Bstr (*read)(IUnknown* compound);
  void (*write)(IUnknown* compound, BSTR text);
};

template <class Method>
struct Accessor;
template <class I, class T>
struct Accessor<HRESULT (STDMETHODCALLTYPE I::*)(T)> {
  using Interface = I;
  using Value = std::remove_pointer_t<T>;
};
template <class I>
struct Accessor<HRESULT (STDMETHODCALLTYPE I::*)(BSTR)> {
  using Interface = I;
  using Value = BSTR;
};

template <auto Get, auto Put>
constexpr IdentityAccess accessTo(WideView name) {
  using Reader = Accessor<decltype(Get)>;
  using Writer = Accessor<decltype(Put)>;
  using Value = typename Writer::Value;
  if constexpr (std::is_same_v<Value, BSTR>) {
    return {name,
            [](IUnknown* compound) {
              Bstr text;
              const auto reader = required<typename Reader::Interface>(compound);
              check((reader.get()->*Get)(text.out()));
              return text;
            },
            [](IUnknown* compound, BSTR text) {
              const auto writer = required<typename Writer::Interface>(compound);
              check((writer.get()->*Put)(text));
            }};
  } else {
    return {name,
            [](IUnknown* compound) {
              Value value{};
              const auto reader = required<typename Reader::Interface>(compound);
              if (!found((reader.get()->*Get)(&value))) return Bstr();
              WideString text;
              appendInteger(text, static_cast<INT>(value));
              return Bstr(text);
            },
            [](IUnknown* compound, BSTR text) {
              const auto writer = required<typename Writer::Interface>(compound);
              check((writer.get()->*Put)(static_cast<Value>(readInteger(narrow(viewOf(text))))));
            }};
  }
}

constexpr IdentityAccess kIdentityFields[] = {
#define IDENTITY_FIELD(key, field, interface_name, attribute) \
  accessTo<&interface_name::get_##key, &interface_name##Put::put_##key>(OLESTR(#key)),
#include "props/identity.def"
};

const IdentityAccess* findIdentityField(WideView name) {
  const auto* entry = std::ranges::find(kIdentityFields, name, &IdentityAccess::name);
  return entry == std::end(kIdentityFields) ? nullptr : entry;
}

constexpr INT kMostProperties = 10'000;

constexpr WideView kSynonyms = OLESTR("SynonymName");

// Lists of reals that a compound keeps as constants of their own.
struct Pair {
  WideView name;
  Key keys[2];
};
constexpr Pair kPairs[] = {
    {OLESTR("ViscosityThetas"), {Key::THETAA, Key::THETAB}},
    {OLESTR("UNIQUAC1Parameters"), {Key::UNIQUACR, Key::UNIQUACQ}},
};

// Not every component knows sources, and not every compound keeps them.
void storeOrigin(IUnknown* compound, BSTR name, const ValueOrigin& origin) {
  check(required<ICompoundPropPut>(compound)->SetPropertyLoader(name, origin.name));
  const auto known = ComPtr<IValueSource>::from(origin.component);
  const auto target = ComPtr<IPropertySource>::from(compound);
  if (!known || !target) return;
  ValueSource source;
  const HRESULT asked = known->Get_ValueSource(
      origin.searchKey, origin.id, name, &source.kind, &source.quality, source.title.out(), source.authors.out(),
      &source.year, source.licence.out(), source.changes.out(), source.uncertainty.out(), source.note.out());
  check(origin.component, asked, {"\"", origin.name, "\", source of ", name});
  if (asked == S_OK)
    check(target->SetPropertySource(name, source.kind, source.quality, source.title.get(), source.authors.get(),
                                    source.year, source.licence.get(), source.changes.get(), source.uncertainty.get(),
                                    source.note.get()));
}

// Whether the compound, which is of this module, has taken a property; its failure is raised.
bool isTaken(HRESULT result, BSTR name) {
  if (FAILED(result)) {
    passOn(result);
    throw CQSCOMError(also(result, {", for the property ", name}));
  }
  return result == S_OK;
}

BYTE isFixed(BSTR name) { return findKey(viewOf(name)) ? 1 : 0; }

}  // namespace

Bstr identityText(IUnknown* compound, WideView fieldName) {
  const IdentityAccess* entry = findIdentityField(fieldName);
  return entry ? entry->read(compound) : Bstr();
}

HRESULT storePoint(IUnknown* compound, BSTR name, double value, const ValueOrigin& origin) {
  const HRESULT result = required<ICompoundPropPut>(compound)->SetPointProperty(name, isFixed(name), value);
  check(result);
  if (result == S_OK) storeOrigin(compound, name, origin);
  return result;
}

ComPtr<IBasicCompound> newCompound() { return COQSCompound::make<IBasicCompound>(); }

void copyCompound(IBasicCompound* from, IBasicCompound* to, INT index) {
  check(required<ICompoundCopy>(to)->CopyToThis(index, from));
}

bool isCopyable(IBasicCompound* compound) { return COQSCompound::ofThisModule(compound) != nullptr; }

HRESULT changeAsCopy(IBasicCompound* compound, const std::function<HRESULT(IBasicCompound*)>& change) {
  const COQSCompound* original = COQSCompound::ofThisModule(compound);
  if (!original) return because(E_NOINTERFACE, {"the compound is of another implementation"});
  const INT index = original->compoundIndex();
  const auto copy = newCompound();
  copyCompound(compound, copy.get(), index);
  const HRESULT changed = change(copy.get());
  if (changed == S_OK) copyCompound(copy.get(), compound, index);
  return changed;
}

bool CompoundFiller::isThere(HRESULT result, BSTR name) const {
  check(source_.loader, result, {"loader \"", source_.loaderName, "\", ", name});
  return result == S_OK;
}

HRESULT CompoundFiller::nothing(WideView name) const {
  return because(S_FALSE, {"loader \"", source_.loaderName, "\" has no ", name, " of the compound whose ",
                           source_.searchKey, " is \"", source_.id, "\""});
}

HRESULT CompoundFiller::fillAll() {
  bool any = false;
  for (INT i = 0;; ++i) {
    if (i == kMostProperties)
      fail(E_FAIL, {"loader \"", source_.loaderName, "\" lists more than ", kMostProperties, " properties"});
    Bstr name;
    tagPropTypeEnum type = VoidProp;
    const HRESULT listed = source_.loader->Get_Prop(source_.searchKey, source_.id, i, name.out(), &type);
    if (!isThere(listed, name.get())) break;
    any = true;
    fill(name.get(), type);
  }
  if (fillSynonyms()) any = true;
  return any ? S_OK : nothing(OLESTR("properties"));
}

HRESULT CompoundFiller::fillProperty(BSTR name) {
  if (viewOf(name) == kSynonyms) return fillSynonyms() ? S_OK : nothing(kSynonyms);
  tagPropTypeEnum type = VoidProp;
  const bool known = isThere(source_.loader->Get_PropType(source_.searchKey, source_.id, name, &type), name);
  return known && fill(name, type) ? S_OK : nothing(viewOf(name));
}

// Whether the loader had the property and the compound took it.
bool CompoundFiller::fill(BSTR name, tagPropTypeEnum type) {
  switch (type) {
    case PointProp:
    case PointPropBSTR:
    case PointPropLong:
      return fillSingleValue(name, type);
    case EquationProp:
      return fillEquation(name);
    case COMProp:
      return fillComponent(name);
    case MultiPointPropLong:
      return fillIntegers(name);
    case MultiPointPropReal:
      return fillReals(name);
    default:
      return false;
  }
}

bool CompoundFiller::fillSingleValue(BSTR name, tagPropTypeEnum type) {
  double number = kEmptyValue;
  Bstr text;
  const HRESULT read = source_.loader->Get_PropSingleVal(source_.searchKey, source_.id, name, &number, text.out());
  if (!isThere(read, name)) return false;
  const IdentityAccess* identity = findIdentityField(viewOf(name));
  if (type != PointPropBSTR) {
    if (number == kEmptyValue) return false;
    if (!identity) return storeNumber(name, number);
    using Limits = std::numeric_limits<INT>;
    // Identity fields hold integers: other numbers have no place there.
    if (!(number >= Limits::min() && number <= Limits::max()) || std::trunc(number) != number) return false;
    WideString digits;
    appendInteger(digits, static_cast<INT>(number));
    text = Bstr(digits);
  }
  if (!identity || !text) return false;
  identity->write(compound_, text.get());
  return true;
}

bool CompoundFiller::fillEquation(BSTR name) {
  tagEquationShapeEnum shape = PropCurveVoid;
  tagXYShapeEnum xShape = eNoShapeDefined, yShape = eNoShapeDefined;
  double tMin = kEmptyValue, tMax = kEmptyValue, pMin = kEmptyValue, pMax = kEmptyValue;
  double xNorm = 1.0, yNorm = 1.0, xPow = 1.0, yPow = 1.0, a = kEmptyValue, b = kEmptyValue;
  ComPtr<IRealArrayDisp> coefficients;
  const HRESULT read =
      source_.loader->Get_PropEquation(source_.searchKey, source_.id, name, &shape, &tMin, &tMax, &pMin, &pMax,
                                       coefficients.out(), &xShape, &yShape, &xNorm, &yNorm, &xPow, &yPow, &a, &b);
  if (!isThere(read, name)) return false;
  const HRESULT stored = required<ICompoundPropPut>(compound_)->SetEquationProperty(
      name, isFixed(name), shape, tMin, tMax, pMin, pMax, coefficients.get());
  if (!isTaken(stored, name)) return false;
  if (xShape != eNoShapeDefined && yShape != eNoShapeDefined)
    check(required<ICompEqnXYShape>(compound_)->SetEquationPropertyXYShape(name, xShape, yShape, xNorm, yNorm, xPow,
                                                                           yPow, a, b));
  storeOrigin(compound_, name, origin());
  return true;
}

bool CompoundFiller::fillComponent(BSTR name) {
  Bstr className;
  ComPtr<IPCProperty> component;
  const HRESULT read =
      source_.loader->Get_PropCOM(source_.searchKey, source_.id, name, className.out(), component.out());
  if (!isThere(read, name) || !component) return false;
  if (!found(
          required<ICompoundPropPut>(compound_)->SetCOMProperty(name, isFixed(name), className.get(), component.get())))
    return false;
  storeOrigin(compound_, name, origin());
  return true;
}

bool CompoundFiller::fillIntegers(BSTR name) {
  const auto put = viewOf(name) == OLESTR("VELUNIFACSubGr")  ? &ICompoundUNIFAC1Put::put_VELUNIFACSubGr
                   : viewOf(name) == OLESTR("VELUNIFACNoGr") ? &ICompoundUNIFAC1Put::put_VELUNIFACNoGr
                                                             : nullptr;
  if (!put) return false;
  ComPtr<IDispatch> values;
  if (!isThere(source_.loader->Get_PropMultiVal(source_.searchKey, source_.id, name, values.out()), name)) return false;
  const auto integers = required<IIntegerArrayDisp>(values.get(), "loader's array");
  LONG size = 0;
  checkSize(integers.get(), integers->get_Size(&size));
  const auto groups = required<ICompoundUNIFAC1Put>(compound_);
  return isTaken((groups.get()->*put)(size, integers.get()), name);
}

bool CompoundFiller::fillReals(BSTR name) {
  const auto* pair = std::ranges::find(kPairs, viewOf(name), &Pair::name);
  if (pair == std::end(kPairs)) return false;
  ComPtr<IDispatch> values;
  if (!isThere(source_.loader->Get_PropMultiVal(source_.searchKey, source_.id, name, values.out()), name)) return false;
  const auto reals = required<IRealArrayDisp>(values.get(), "loader's array");
  for (LONG i = 0; i < 2; ++i) {
    double value = kEmptyValue;
    checkElement(reals.get(), reals->get_IthValue(i, &value), static_cast<std::size_t>(i));
    storeNumber(Bstr(nameOf(pair->keys[i])).get(), value);
  }
  return true;
}

// Those of the loader take the place of all that the compound has.
bool CompoundFiller::fillSynonyms() {
  ComPtr<ICompoundIDPut> identity;
  for (INT i = 0;; ++i) {
    Bstr synonym;
    if (!isThere(source_.loader->Get_AllSynonyms(source_.searchKey, source_.id, i, synonym.out()), synonym.get()))
      break;
    if (!identity) {
      identity = required<ICompoundIDPut>(compound_);
      check(identity->put_NumberOfSynonymNames(0));
    }
    // A compound takes so many and no more.
    if (!found(identity->put_SynonymName(i, synonym.get()))) break;
  }
  return static_cast<bool>(identity);
}

bool CompoundFiller::storeNumber(BSTR name, double value) {
  return storePoint(compound_, name, value, origin()) == S_OK;
}

}  // namespace qs
