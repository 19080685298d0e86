#include "compound/xml_reader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "compound/component_text.h"
#include "compound/new_property.h"
#include "props/curve.h"
#include "props/property_text.h"

namespace qs {
namespace {

// A string literal that can be passed where a string is only read: its length in bytes stands before the text.
template <std::size_t size>
struct Tag {
  explicit constexpr Tag(const OLECHAR (&literal)[size]) { std::copy_n(literal, size, text); }
  BSTR get() const { return const_cast<BSTR>(text); }

  UINT bytes = (size - 1) * sizeof(OLECHAR);
  OLECHAR text[size]{};
};

constexpr Tag kName{OLESTR("NAME")};
constexpr Tag kNumber{OLESTR("NUMB")};
constexpr Tag kContent{OLESTR("CONTENT")};
constexpr Tag kValue{OLESTR("VALUE")};

HRESULT resultOf(bool complete) { return complete ? S_OK : S_FALSE; }

PropertyPtr newEquationOf(INT shape) {
  CQSAbstractProp* equation = nullptr;
  return CreateEquationProp(shape, &equation) == S_OK ? PropertyPtr(equation) : nullptr;
}

template <class Property>
PropertyPtr newProperty(tagPropTypeEnum kind) {
  auto property = std::make_unique<Property>();
  property->SetType(kind);
  return property;
}

// Sets class name and component of a property from its text; false when the component cannot be had.
bool recallComponent(CQSAbstractProp& property, const Bstr& className, WideView text) {
  const ComponentText parts = readComponentText(OLESTR("ClassName"), text);
  const Bstr storedName = parts.className ? Bstr(*parts.className) : Bstr();
  property.SetCOMClassName(storedName ? storedName.get() : className.get());
  const auto component = newComponent<IPCProperty>(className ? className.get() : storedName.get());
  if (!component || FAILED(component->Recall(Bstr(parts.content).get()))) return false;
  property.SetCOMObject(component.get());
  return true;
}

}  // namespace

// The attributes of an element, each found by its name. What cannot be found leaves its target as it was.
class XmlReader::Attributes {
 public:
  explicit Attributes(TaggedAttributes* attributes) : attributes_(attributes) {}

  template <std::size_t size>
  bool read(const Tag<size>& tag, Bstr& target) const {
    Bstr value;
    if (!attributes_) return false;
    const HRESULT found = attributes_->find(tag.get(), value.out());
    if (found == E_OUTOFMEMORY) throw CQSCOMError(found);
    if (found != S_OK || !value) return false;
    target = std::move(value);
    return true;
  }
  template <std::size_t size>
  bool read(const Tag<size>& tag, double& target) const {
    Bstr value;
    if (!read(tag, value)) return false;
    convertValue(value.view(), &target);
    return true;
  }
  template <std::size_t size>
  bool read(const Tag<size>& tag, INT& target) const {
    Bstr value;
    if (!read(tag, value)) return false;
    LONG number = target;
    convertValue(value.view(), &number);
    target = number;
    return true;
  }

 private:
  TaggedAttributes* attributes_;
};

const XmlReader::Element XmlReader::kElements[] = {
    {kCompound, InNothing | InCompound, InCompound, &XmlReader::startCompound, false},
    {OLESTR("FixedProperty"), InCompound, InFixedProperty, &XmlReader::startProperty, false},
    {OLESTR("AdditionProperty"), InCompound, InAdditionProperty, &XmlReader::startProperty, false},
    {OLESTR("PropertyContent"), InFixedProperty | InAdditionProperty, 0, &XmlReader::recallProperty, false},
    {OLESTR("UserProperty"), InCompound, 0, &XmlReader::addUserProperty, false},
    {OLESTR("Synonyms"), InCompound, InSynonyms, &XmlReader::startSynonyms, false},
    {OLESTR("Synonym"), InSynonyms, 0, &XmlReader::addSynonym, false},
    {OLESTR("GroupProperty"), InCompound, InGroups, &XmlReader::startGroups, false},
    {OLESTR("Group"), InGroups, 0, &XmlReader::addGroup, false},
    {OLESTR("Property"), InCompound, 0, &XmlReader::addPoint, true},
    {OLESTR("EqnProperty"), InCompound, InEquation, &XmlReader::startEquation, true},
    {OLESTR("EquationCoeff"), InEquation, 0, &XmlReader::addCoefficient, true},
};

HRESULT XmlReader::startElement(WideView name, TaggedAttributes* attributes) {
  if (depth_ > 0) {
    if (name == skipped_) ++depth_;
    return S_FALSE;
  }
  const auto element = std::find_if(std::begin(kElements), std::end(kElements),
                                    [name](const Element& known) { return known.name == name; });
  const bool atHome =
      element != std::end(kElements) && (element->home & place_) != 0 && (!element->version1Only || version_ < 2);
  if (!atHome) return skip(name);
  if (element->inside != 0) {
    place_ = element->inside;
    pending_.reset();
  }
  return (this->*element->start)(Attributes(attributes));
}

bool XmlReader::endElement(WideView name) {
  if (depth_ > 0) {
    if (name == skipped_) --depth_;
    return false;
  }
  if (name == kCompound) return true;
  for (const Element& element : kElements) {
    if (element.inside != place_ || element.name != name) continue;
    place_ = InCompound;
    pending_.reset();
  }
  return false;
}

HRESULT XmlReader::skip(WideView name) {
  skipped_ = name;
  depth_ = 1;
  return S_FALSE;
}

HRESULT XmlReader::startCompound(const Attributes& attributes) {
  attributes.read(Tag(OLESTR("VERSION")), version_);
  attributes.read(Tag(OLESTR("CompIdx")), identity_.compoundIndex);
  attributes.read(Tag(OLESTR("Name")), identity_.name);
  attributes.read(Tag(OLESTR("Formula")), identity_.chemicalFormula);
  attributes.read(Tag(OLESTR("FamilyArribute")), identity_.family);
  attributes.read(Tag(OLESTR("SubFamily")), identity_.subFamily);
  attributes.read(Tag(OLESTR("NonCondensable")), identity_.nonCondensable);
  attributes.read(Tag(OLESTR("PPAttribute")), identity_.ppAttribute);
  attributes.read(Tag(OLESTR("VelcorinID")), identity_.velcorinId);
  attributes.read(Tag(OLESTR("CASN")), identity_.casNumber);
  attributes.read(Tag(OLESTR("IUPACName")), identity_.iupacName);
  attributes.read(Tag(OLESTR("PPDSID")), identity_.ppdsId);
  attributes.read(Tag(OLESTR("DDBID")), identity_.ddbId);
  attributes.read(Tag(OLESTR("DIPPRID")), identity_.dipprId);
  attributes.read(Tag(OLESTR("CMAID")), identity_.cmaId);
  return S_OK;
}

HRESULT XmlReader::startSynonyms(const Attributes& attributes) {
  identity_.synonyms.clear();
  synonyms_ = 0;
  return resultOf(attributes.read(kNumber, identity_.synonymCount));
}

// A synonym may be null, and then has no name.
HRESULT XmlReader::addSynonym(const Attributes& attributes) {
  Bstr name;
  attributes.read(kName, name);
  const HRESULT stored = identity_.putSynonym(synonyms_, name.get());
  if (stored == S_OK) ++synonyms_;
  return stored;
}

HRESULT XmlReader::startGroups(const Attributes& attributes) {
  Bstr name;
  attributes.read(kName, name);
  if (name.view() != OLESTR("UNIFAC1")) {
    place_ = InCompound;
    return skip(OLESTR("GroupProperty"));
  }
  identity_.groupTypes.clear();
  identity_.groupCounts.clear();
  return resultOf(attributes.read(kNumber, identity_.groupCount));
}

HRESULT XmlReader::addGroup(const Attributes& attributes) {
  INT type = kEmptyInteger;
  INT count = kEmptyInteger;
  const bool hasType = attributes.read(Tag(OLESTR("ID")), type);
  const bool hasCount = attributes.read(kNumber, count);
  if (hasType) identity_.groupTypes.push_back(type);
  if (hasCount) identity_.groupCounts.push_back(count);
  return resultOf(hasType || hasCount);
}

HRESULT XmlReader::startProperty(const Attributes& attributes) {
  Pending pending{.name = {}, .fixed = place_ == InFixedProperty, .property = nullptr, .className = {}, .loader = {}};
  Bstr type;
  if (!attributes.read(kName, pending.name) || !attributes.read(Tag(OLESTR("TYPE")), type)) return S_FALSE;

  if (type.view() == OLESTR("VOID")) {
    properties_.erase(pending.name.view(), pending.fixed);
    return S_OK;
  }
  if (type.view() == OLESTR("VoidProp")) {
    pending.property = newProperty<CQSVoidProp>(VoidProp);
  } else if (type.view() == OLESTR("PointProp")) {
    pending.property = newProperty<CQSPointProp>(PointProp);
  } else if (type.view() == OLESTR("EquationProp")) {
    INT shape = kEmptyInteger;
    attributes.read(Tag(OLESTR("EQUATIONSHAPE")), shape);
    pending.property = newEquationOf(shape);
  } else if (type.view() == OLESTR("COMProp")) {
    pending.property = newProperty<CQSCOMProp>(COMProp);
    attributes.read(Tag(OLESTR("CLASSNAME")), pending.className);
  }
  if (!pending.property) return S_FALSE;
  attributes.read(Tag(OLESTR("LOADER")), pending.loader);
  pending_ = std::move(pending);
  return S_OK;
}

HRESULT XmlReader::recallProperty(const Attributes& attributes) {
  Bstr content;
  if (!attributes.read(kContent, content)) return S_FALSE;
  // Taken first: a component may call back while it reads its content.
  std::optional<Pending> pending = std::exchange(pending_, std::nullopt);
  if (!pending) return resultOf(content.view() == OLESTR("VOID"));

  LONG kind = VoidProp;
  pending->property->GetType(&kind);
  bool complete = true;
  if (kind == COMProp)
    complete = recallComponent(*pending->property, pending->className, content.view());
  else
    pending->property->Recall(content.get());
  const HRESULT stored = store(*pending);
  return complete ? stored : S_FALSE;
}

HRESULT XmlReader::addUserProperty(const Attributes& attributes) {
  Bstr name;
  Bstr content;
  if (!attributes.read(kName, name) || !attributes.read(kContent, content)) return S_FALSE;
  const ComponentText parts = readComponentText(OLESTR("ClassID"), content.view());
  UserProperty property;
  if (parts.className) property.classId = Bstr(*parts.className);
  property.component = newComponent<IDispatch>(property.classId.get());

  bool complete = static_cast<bool>(property.component);
  if (const auto receiver = ComPtr<ICOMUserProp>::from(property.component.get())) {
    complete = SUCCEEDED(receiver->Recall(Bstr(parts.content).get()));
    if (!complete) property.component = ComPtr<IDispatch>();
  } else if (!parts.content.empty()) {
    complete = false;
  }
  userProperties_.insert_or_assign(WideString(name.view()), std::move(property));
  return resultOf(complete);
}

HRESULT XmlReader::addPoint(const Attributes& attributes) {
  Bstr name;
  double value = kEmptyValue;
  if (!attributes.read(kName, name)) return S_FALSE;
  attributes.read(kValue, value);
  PropertyPtr point = newPoint(name.view(), value);
  return properties_.AddPropertyToMap(name.view(), true, point);
}

HRESULT XmlReader::startEquation(const Attributes& attributes) {
  Pending pending{.name = {}, .fixed = true, .property = nullptr, .className = {}, .loader = {}};
  INT shape = kEmptyInteger;
  if (!attributes.read(kName, pending.name) || !attributes.read(Tag(OLESTR("ID")), shape)) return S_FALSE;
  pending.property = newEquationOf(shape);
  if (!pending.property) return S_FALSE;

  CQSAbstractProp& equation = *pending.property;
  double low = kEmptyValue;
  double high = kEmptyValue;
  equation.GetTRange(&low, &high);
  attributes.read(Tag(OLESTR("TMIN")), low);
  attributes.read(Tag(OLESTR("TMAX")), high);
  equation.SetTRange(low, high);
  equation.GetPRange(&low, &high);
  attributes.read(Tag(OLESTR("PMIN")), low);
  attributes.read(Tag(OLESTR("PMAX")), high);
  equation.SetPRange(low, high);

  LONG count = 0;
  equation.GetNumbOfParameters(&count);
  pending.coefficients = count;
  attributes.read(Tag(OLESTR("NUMBCOEFF")), pending.coefficients);
  if (pending.coefficients == 0) return store(pending);
  pending_ = std::move(pending);
  return S_OK;
}

// Coefficients that the equation has no use for count, and are passed over.
HRESULT XmlReader::addCoefficient(const Attributes& attributes) {
  double value = kEmptyValue;
  const bool given = attributes.read(kValue, value);
  if (!pending_) return S_FALSE;
  const HRESULT set = pending_->property->SetParameter(pending_->arrived, value);
  if (++pending_->arrived != pending_->coefficients) return given ? set : S_FALSE;
  std::optional<Pending> pending = std::exchange(pending_, std::nullopt);
  return store(*pending);
}

HRESULT XmlReader::store(Pending& pending) {
  pending.property->Name = Bstr::copyOf(pending.name.get());
  const HRESULT stored = properties_.AddPropertyToMap(pending.name.view(), pending.fixed, pending.property);
  if (stored == S_OK && pending.loader) properties_.setLoader(pending.name.view(), std::move(pending.loader));
  return stored;
}

}  // namespace qs
