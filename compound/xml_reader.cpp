#include "compound/xml_reader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "com/component.h"
#include "compound/new_component.h"
#include "compound/source_attributes.h"
#include "props/property_text.h"

namespace qs {
namespace {

constexpr XmlTag kName{OLESTR("NAME")};
constexpr XmlTag kNumber{OLESTR("NUMB")};
constexpr XmlTag kContent{OLESTR("CONTENT")};
constexpr XmlTag kValue{OLESTR("VALUE")};

// Of an element that is used, or lacks an attribute.
HRESULT resultOf(bool complete, const char* attribute) {
  return complete ? S_OK : because(S_FALSE, {"the element has no attribute ", attribute});
}

HRESULT noClass(WideView className) {
  return because(S_FALSE, {"the class \"", className, "\" gives no such component; the content is kept"});
}

// The result of a component's Recall. A component that fails is not kept.
HRESULT recalled(IUnknown* component, HRESULT result) {
  if (succeeded(result)) return S_OK;
  return because(component, result, {"the component has not read its content, which is kept"}, S_FALSE);
}

// Sets class name and component of a property from its text; S_FALSE when the component cannot be had.
HRESULT recallComponent(CQSAbstractProp& property, const Bstr& className, WideView text) {
  const ComponentText parts = readComponent(kClassName, text);
  const Bstr storedName = parts.className ? Bstr(*parts.className) : Bstr();
  property.SetCOMClassName(storedName ? storedName.get() : className.get());
  const Bstr& used = className ? className : storedName;
  const auto component = newComponent<IPCProperty>(used.get());
  Bstr content(parts.content);
  const HRESULT result = component ? recalled(component.get(), component->Recall(content.get())) : noClass(used.view());
  if (result == S_OK)
    property.SetCOMObject(component.get());
  else
    static_cast<CQSCOMProp&>(property).keepContent(std::move(content));
  return result;
}

}  // namespace

const CompoundXmlReader::Element CompoundXmlReader::kElements[] = {
    {kCompound, InNothing | InCompound, InCompound, &CompoundXmlReader::startCompound, false},
    {OLESTR("FixedProperty"), InCompound, InFixedProperty, &CompoundXmlReader::startProperty, false},
    {OLESTR("AdditionProperty"), InCompound, InAdditionProperty, &CompoundXmlReader::startProperty, false},
    {OLESTR("PropertySource"), InFixedProperty | InAdditionProperty, 0, &CompoundXmlReader::readSource, false},
    {OLESTR("PropertyContent"), InFixedProperty | InAdditionProperty, 0, &CompoundXmlReader::recallProperty, false},
    {OLESTR("UserProperty"), InCompound, 0, &CompoundXmlReader::addUserProperty, false},
    {OLESTR("Synonyms"), InCompound, InSynonyms, &CompoundXmlReader::startSynonyms, false},
    {OLESTR("Synonym"), InSynonyms, 0, &CompoundXmlReader::addSynonym, false},
    {OLESTR("UnusedSynonym"), InSynonyms, 0, &CompoundXmlReader::addUnusedSynonym, false},
    {OLESTR("GroupProperty"), InCompound, InGroups, &CompoundXmlReader::startGroups, false},
    {OLESTR("Group"), InGroups, 0, &CompoundXmlReader::addGroup, false},
    {OLESTR("Property"), InCompound, 0, &CompoundXmlReader::addPoint, true},
    {OLESTR("EqnProperty"), InCompound, InEquation, &CompoundXmlReader::startEquation, true},
    {OLESTR("EquationCoeff"), InEquation, 0, &CompoundXmlReader::addCoefficient, true},
};

HRESULT CompoundXmlReader::startElement(WideView name, TaggedAttributes* attributes) {
  if (skipped_.isOpen()) {
    skipped_.start(name);
    return because(S_FALSE, {"the element <", name, "> is in an element that is skipped"});
  }
  const auto element = std::find_if(std::begin(kElements), std::end(kElements),
                                    [name](const Element& known) { return same(known.name, name); });
  const bool atHome =
      element != std::end(kElements) && (element->home & place_) != 0 && (!element->version1Only || version_ < 2);
  if (!atHome) return skip(name);
  if (element->inside != 0) {
    place_ = element->inside;
    pending_.reset();
  }
  return (this->*element->start)(XmlAttributes(attributes));
}

bool CompoundXmlReader::endElement(WideView name) {
  if (skipped_.isOpen()) {
    skipped_.end(name);
    return false;
  }
  if (name == kCompound) return true;
  const auto opened = std::find_if(std::begin(kElements), std::end(kElements),
                                   [this](const Element& known) { return known.inside == place_; });
  if (opened != std::end(kElements) && same(opened->name, name)) {
    place_ = InCompound;
    pending_.reset();
  }
  return false;
}

HRESULT CompoundXmlReader::skip(WideView name) {
  skipped_.open(name);
  return because(S_FALSE, {"the element <", name, "> is not known here and is skipped"});
}

HRESULT CompoundXmlReader::startCompound(const XmlAttributes& attributes) {
  attributes.read(XmlTag(OLESTR("VERSION")), version_);
  attributes.read(XmlTag(OLESTR("CompIdx")), content_.identity.compoundIndex);
#define IDENTITY_FIELD(key, field, interface_name, attribute) \
  attributes.read(XmlTag(OLESTR(attribute)), content_.identity.field);
#include "props/identity.def"
  return S_OK;
}

HRESULT CompoundXmlReader::startSynonyms(const XmlAttributes& attributes) {
  content_.identity.synonyms.clear();
  synonyms_ = 0;
  return resultOf(attributes.read(kNumber, content_.identity.synonymCount), "NUMB");
}

// A synonym may be null, and then has no name.
HRESULT CompoundXmlReader::addSynonym(const XmlAttributes& attributes) {
  Bstr name;
  attributes.read(kName, name);
  const HRESULT stored = content_.identity.putSynonym(synonyms_, name.get());
  if (stored != S_OK) return because(stored, {"there is no place for the synonym \"", name.get(), "\""});
  ++synonyms_;
  return stored;
}

// A synonym that is kept past the count.
HRESULT CompoundXmlReader::addUnusedSynonym(const XmlAttributes& attributes) {
  Bstr name;
  attributes.read(kName, name);
  if (content_.identity.synonyms.size() >= kMostSynonyms)
    return because(S_FALSE, {"there is no place for the synonym \"", name.get(), "\""});
  content_.identity.synonyms.push_back(std::move(name));
  return S_OK;
}

HRESULT CompoundXmlReader::startGroups(const XmlAttributes& attributes) {
  Bstr name;
  attributes.read(kName, name);
  if (name.view() != OLESTR("UNIFAC1")) {
    place_ = InCompound;
    return skip(OLESTR("GroupProperty"));
  }
  content_.identity.groupTypes.clear();
  content_.identity.groupCounts.clear();
  return resultOf(attributes.read(kNumber, content_.identity.groupCount), "NUMB");
}

HRESULT CompoundXmlReader::addGroup(const XmlAttributes& attributes) {
  INT type = kEmptyInteger;
  INT count = kEmptyInteger;
  const bool hasType = attributes.read(XmlTag(OLESTR("ID")), type);
  const bool hasCount = attributes.read(kNumber, count);
  if (hasType) content_.identity.groupTypes.push_back(type);
  if (hasCount) content_.identity.groupCounts.push_back(count);
  return resultOf(hasType || hasCount, "ID");
}

HRESULT CompoundXmlReader::startProperty(const XmlAttributes& attributes) {
  Pending pending{.name = {}, .fixed = place_ == InFixedProperty, .property = nullptr, .className = {}, .loader = {}};
  Bstr type;
  if (!attributes.read(kName, pending.name) || !attributes.read(XmlTag(OLESTR("TYPE")), type))
    return resultOf(false, "NAME or no attribute TYPE");

  if (type.view() == OLESTR("VOID")) {
    content_.properties.erase(pending.name.view(), pending.fixed);
    return S_OK;
  }
  if (type.view() == OLESTR("VoidProp")) {
    pending.property = newProperty(VoidProp);
  } else if (type.view() == OLESTR("PointProp")) {
    pending.property = newProperty(PointProp);
  } else if (type.view() == OLESTR("EquationProp")) {
    INT shape = kEmptyInteger;
    attributes.read(XmlTag(OLESTR("EQUATIONSHAPE")), shape);
    pending.property = newProperty(EquationProp, shape);
  } else if (type.view() == OLESTR("COMProp")) {
    pending.property = newProperty(COMProp);
    attributes.read(XmlTag(OLESTR("CLASSNAME")), pending.className);
  }
  if (!pending.property)
    return because(S_FALSE, {"property \"", pending.name.get(), "\": there is no such type or equation: ", type.get()});
  attributes.read(XmlTag(OLESTR("LOADER")), pending.loader);
  pending_ = std::move(pending);
  return S_OK;
}

// A number that is not of its enumeration counts as not known.
HRESULT CompoundXmlReader::readSource(const XmlAttributes& attributes) {
  if (!pending_) return because(S_FALSE, {"the source belongs to no property"});
  ValueSource source;
  INT kind = eKindNotKnown, quality = eQualityNotKnown;
  attributes.read(kSourceKind, kind);
  attributes.read(kSourceQuality, quality);
  attributes.read(kSourceYear, source.year);
  if (isKind(kind)) source.kind = static_cast<tagValueKindEnum>(kind);
  if (isQuality(quality)) source.quality = static_cast<tagValueQualityEnum>(quality);
  forEachText(source, [&](const auto& tag, Bstr& text) { attributes.read(tag, text); });
  pending_->property->setSource(std::move(source));
  return S_OK;
}

HRESULT CompoundXmlReader::recallProperty(const XmlAttributes& attributes) {
  Bstr content;
  if (!attributes.read(kContent, content)) return resultOf(false, "CONTENT");
  // Taken first: a component may call back while it reads its content.
  std::optional<Pending> pending = std::exchange(pending_, std::nullopt);
  if (!pending && content.view() != OLESTR("VOID")) return because(S_FALSE, {"the content belongs to no property"});
  if (!pending) return S_OK;

  LONG kind = VoidProp;
  pending->property->GetType(&kind);
  HRESULT read = S_OK;
  if (kind == COMProp)
    read = recallComponent(*pending->property, pending->className, content.view());
  else
    pending->property->Recall(content.get());
  const HRESULT stored = store(*pending);
  return read == S_OK ? stored : read;
}

HRESULT CompoundXmlReader::addUserProperty(const XmlAttributes& attributes) {
  Bstr name;
  Bstr content;
  if (!attributes.read(kName, name) || !attributes.read(kContent, content))
    return resultOf(false, "NAME or no attribute CONTENT");
  const ComponentText parts = readComponent(kClassId, content.view());
  UserProperty property;
  if (parts.className) property.classId = Bstr(*parts.className);
  property.component = newComponent<IDispatch>(property.classId.get());

  property.content = Bstr(parts.content);
  HRESULT read = S_OK;
  if (const auto receiver = ComPtr<ICOMUserProp>::from(property.component.get())) {
    read = recalled(receiver.get(), receiver->Recall(property.content.get()));
    if (read == S_OK)
      property.content = Bstr();
    else
      property.component = ComPtr<IDispatch>();
  } else if (!property.component || !parts.content.empty()) {
    read = noClass(property.classId.view());
  }
  std::swap(content_.userProperties[WideString(name.view())], property);
  return read;
}

HRESULT CompoundXmlReader::addPoint(const XmlAttributes& attributes) {
  Bstr name;
  double value = kEmptyValue;
  if (!attributes.read(kName, name)) return resultOf(false, "NAME");
  attributes.read(kValue, value);
  PropertyPtr point = newPoint(name.view(), value);
  return stored(content_.properties.AddPropertyToMap(name.view(), true, point), name.get());
}

HRESULT CompoundXmlReader::startEquation(const XmlAttributes& attributes) {
  Pending pending{.name = {}, .fixed = true, .property = nullptr, .className = {}, .loader = {}};
  INT shape = kEmptyInteger;
  if (!attributes.read(kName, pending.name) || !attributes.read(XmlTag(OLESTR("ID")), shape))
    return resultOf(false, "NAME or no attribute ID");
  pending.property = newProperty(EquationProp, shape);
  if (!pending.property)
    return because(S_FALSE, {"property \"", pending.name.get(), "\": there is no form of equation ", shape});

  CQSAbstractProp& equation = *pending.property;
  double low = kEmptyValue;
  double high = kEmptyValue;
  equation.GetTRange(&low, &high);
  attributes.read(XmlTag(OLESTR("TMIN")), low);
  attributes.read(XmlTag(OLESTR("TMAX")), high);
  equation.SetTRange(low, high);
  equation.GetPRange(&low, &high);
  attributes.read(XmlTag(OLESTR("PMIN")), low);
  attributes.read(XmlTag(OLESTR("PMAX")), high);
  equation.SetPRange(low, high);

  LONG count = 0;
  equation.GetNumbOfParameters(&count);
  pending.coefficients = count;
  attributes.read(XmlTag(OLESTR("NUMBCOEFF")), pending.coefficients);
  if (pending.coefficients == 0) return store(pending);
  pending_ = std::move(pending);
  return S_OK;
}

// Coefficients beyond those of the equation are counted and skipped.
HRESULT CompoundXmlReader::addCoefficient(const XmlAttributes& attributes) {
  double value = kEmptyValue;
  const bool given = attributes.read(kValue, value);
  if (!pending_) return because(S_FALSE, {"the coefficient belongs to no equation"});
  const HRESULT set = pending_->property->SetParameter(pending_->arrived, value);
  if (++pending_->arrived != pending_->coefficients) {
    if (!given) return resultOf(false, "VALUE");
    return set == S_OK ? set : because(set, {"the equation has no place for the coefficient ", pending_->arrived});
  }
  std::optional<Pending> pending = std::exchange(pending_, std::nullopt);
  return store(*pending);
}

HRESULT CompoundXmlReader::store(Pending& pending) {
  pending.property->Name = PropertyName(pending.name.view());
  pending.property->setLoader(std::move(pending.loader));
  return stored(content_.properties.AddPropertyToMap(pending.name.view(), pending.fixed, pending.property),
                pending.name.get());
}

}  // namespace qs
