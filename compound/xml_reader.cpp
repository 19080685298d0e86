#include "compound/xml_reader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "compound/new_component.h"
#include "compound/source_attributes.h"
#include "props/property_text.h"

namespace qs {
namespace {

constexpr XmlTag kName{OLESTR("NAME")};
constexpr XmlTag kNumber{OLESTR("NUMB")};
constexpr XmlTag kContent{OLESTR("CONTENT")};
constexpr XmlTag kValue{OLESTR("VALUE")};

HRESULT resultOf(bool complete) { return complete ? S_OK : S_FALSE; }

// Sets class name and component of a property from its text; false when the component cannot be had.
bool recallComponent(CQSAbstractProp& property, const Bstr& className, WideView text) {
  const ComponentText parts = readComponent(kClassName, text);
  const Bstr storedName = parts.className ? Bstr(*parts.className) : Bstr();
  property.SetCOMClassName(storedName ? storedName.get() : className.get());
  const auto component = newComponent<IPCProperty>(className ? className.get() : storedName.get());
  Bstr content(parts.content);
  const bool recalled = component && succeeded(component->Recall(content.get()));
  if (recalled)
    property.SetCOMObject(component.get());
  else
    static_cast<CQSCOMProp&>(property).keepContent(std::move(content));
  return recalled;
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
    return S_FALSE;
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
  return S_FALSE;
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
  return resultOf(attributes.read(kNumber, content_.identity.synonymCount));
}

// A synonym may be null, and then has no name.
HRESULT CompoundXmlReader::addSynonym(const XmlAttributes& attributes) {
  Bstr name;
  attributes.read(kName, name);
  const HRESULT stored = content_.identity.putSynonym(synonyms_, name.get());
  if (stored == S_OK) ++synonyms_;
  return stored;
}

// A synonym that is kept past the count.
HRESULT CompoundXmlReader::addUnusedSynonym(const XmlAttributes& attributes) {
  Bstr name;
  attributes.read(kName, name);
  if (content_.identity.synonyms.size() >= kMostSynonyms) return S_FALSE;
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
  return resultOf(attributes.read(kNumber, content_.identity.groupCount));
}

HRESULT CompoundXmlReader::addGroup(const XmlAttributes& attributes) {
  INT type = kEmptyInteger;
  INT count = kEmptyInteger;
  const bool hasType = attributes.read(XmlTag(OLESTR("ID")), type);
  const bool hasCount = attributes.read(kNumber, count);
  if (hasType) content_.identity.groupTypes.push_back(type);
  if (hasCount) content_.identity.groupCounts.push_back(count);
  return resultOf(hasType || hasCount);
}

HRESULT CompoundXmlReader::startProperty(const XmlAttributes& attributes) {
  Pending pending{.name = {}, .fixed = place_ == InFixedProperty, .property = nullptr, .className = {}, .loader = {}};
  Bstr type;
  if (!attributes.read(kName, pending.name) || !attributes.read(XmlTag(OLESTR("TYPE")), type)) return S_FALSE;

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
  if (!pending.property) return S_FALSE;
  attributes.read(XmlTag(OLESTR("LOADER")), pending.loader);
  pending_ = std::move(pending);
  return S_OK;
}

// A number that is not of its enumeration counts as not known.
HRESULT CompoundXmlReader::readSource(const XmlAttributes& attributes) {
  if (!pending_) return S_FALSE;
  ValueSource source;
  INT kind = eKindNotKnown, quality = eQualityNotKnown;
  attributes.read(kSourceKind, kind);
  attributes.read(kSourceQuality, quality);
  attributes.read(kSourceYear, source.year);
  if (kind >= eKindNotKnown && kind <= eKindDecided) source.kind = static_cast<tagValueKindEnum>(kind);
  if (quality >= eQualityNotKnown && quality <= eQualityDoubtful)
    source.quality = static_cast<tagValueQualityEnum>(quality);
  forEachText(source, [&](const auto& tag, Bstr& text) { attributes.read(tag, text); });
  pending_->property->setSource(std::move(source));
  return S_OK;
}

HRESULT CompoundXmlReader::recallProperty(const XmlAttributes& attributes) {
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

HRESULT CompoundXmlReader::addUserProperty(const XmlAttributes& attributes) {
  Bstr name;
  Bstr content;
  if (!attributes.read(kName, name) || !attributes.read(kContent, content)) return S_FALSE;
  const ComponentText parts = readComponent(kClassId, content.view());
  UserProperty property;
  if (parts.className) property.classId = Bstr(*parts.className);
  property.component = newComponent<IDispatch>(property.classId.get());

  property.content = Bstr(parts.content);
  bool complete = property.component && parts.content.empty();
  if (const auto receiver = ComPtr<ICOMUserProp>::from(property.component.get())) {
    complete = succeeded(receiver->Recall(property.content.get()));
    if (complete)
      property.content = Bstr();
    else
      property.component = ComPtr<IDispatch>();
  }
  std::swap(content_.userProperties[WideString(name.view())], property);
  return resultOf(complete);
}

HRESULT CompoundXmlReader::addPoint(const XmlAttributes& attributes) {
  Bstr name;
  double value = kEmptyValue;
  if (!attributes.read(kName, name)) return S_FALSE;
  attributes.read(kValue, value);
  PropertyPtr point = newPoint(name.view(), value);
  return content_.properties.AddPropertyToMap(name.view(), true, point);
}

HRESULT CompoundXmlReader::startEquation(const XmlAttributes& attributes) {
  Pending pending{.name = {}, .fixed = true, .property = nullptr, .className = {}, .loader = {}};
  INT shape = kEmptyInteger;
  if (!attributes.read(kName, pending.name) || !attributes.read(XmlTag(OLESTR("ID")), shape)) return S_FALSE;
  pending.property = newProperty(EquationProp, shape);
  if (!pending.property) return S_FALSE;

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
  if (!pending_) return S_FALSE;
  const HRESULT set = pending_->property->SetParameter(pending_->arrived, value);
  if (++pending_->arrived != pending_->coefficients) return given ? set : S_FALSE;
  std::optional<Pending> pending = std::exchange(pending_, std::nullopt);
  return store(*pending);
}

HRESULT CompoundXmlReader::store(Pending& pending) {
  pending.property->Name = PropertyName(pending.name.view());
  pending.property->setLoader(std::move(pending.loader));
  return content_.properties.AddPropertyToMap(pending.name.view(), pending.fixed, pending.property);
}

}  // namespace qs
