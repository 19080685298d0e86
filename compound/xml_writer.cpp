#include "compound/xml_writer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "com/component.h"
#include "compound/source_attributes.h"
#include "props/identity_fields.h"
#include "props/property_text.h"

namespace qs {
namespace {

// The order of the fixed properties in the text: that of the table, but for those from LDN to IGCP, most of which
// depend on temperature; they follow SolidChlorine.
constexpr std::array<Key, kKeyCount> kWritingOrder = [] {
  auto keys = kKeysInOrder;
  const auto place = [&keys](Key key) { return keys.begin() + static_cast<int>(key); };
  std::rotate(place(Key::LDN), place(Key::IGCP) + 1, place(Key::SolidChlorine) + 1);
  return keys;
}();

constexpr bool isInDefaultForm(IdentityField field) { return field != IdentityField::SubFamily; }

}  // namespace

void CompoundXmlWriter::write() {
  openCompound(content_.identity);
  synonyms(content_.identity);
  groups(content_.identity);
  properties(content_.properties);
  userProperties(content_.userProperties);
  text_ << OLESTR("   </Compound> \n");
}

void CompoundXmlWriter::attribute(WideView name, const Bstr& value) {
  if (complete_ && !value) return;
  nextAttribute(name);
  text_.value(value.view());
}

void CompoundXmlWriter::attribute(WideView name, INT value) {
  nextAttribute(name);
  text_ << value;
}

void CompoundXmlWriter::openCompound(const Identity& identity) {
  text_ << OLESTR("   <Compound VERSION = \"2\" CompIdx = \"") << identity.compoundIndex;
#define IDENTITY_FIELD(key, field, interface_name, name) \
  if (complete_ || isInDefaultForm(IdentityField::key)) attribute(OLESTR(name), identity.field);
#include "props/identity.def"
  text_ << OLESTR("\"> \n");
}

void CompoundXmlWriter::synonyms(const Identity& identity) {
  text_ << OLESTR("      <Synonyms NUMB = \"") << identity.synonymCount << OLESTR("\"> \n");
  // A count that was put may promise more synonyms than were ever given.
  const auto promised = static_cast<std::size_t>(std::max(identity.synonymCount, 0));
  const std::size_t used = std::min(promised, identity.synonyms.size());
  for (std::size_t i = 0; i < (complete_ ? identity.synonyms.size() : used); ++i) {
    const Bstr& synonym = identity.synonyms[i];
    text_ << (i < used ? OLESTR("            <Synonym") : OLESTR("            <UnusedSynonym"));
    text_.attribute(OLESTR(" NAME=\""), synonym) << OLESTR("/> \n");
  }
  text_ << OLESTR("      </Synonyms> \n");
}

void CompoundXmlWriter::groups(const Identity& identity) {
  text_ << OLESTR("      <GroupProperty NAME=\"UNIFAC1\" NUMB = \"") << identity.groupCount << OLESTR("\" > \n");
  // Types and counts are put one without the other, and so may differ in number.
  const auto number = [&](WideView opening, const std::vector<LONG>& values, std::size_t i) {
    if (i < values.size())
      text_ << opening << INT{values[i]} << OLESTR("\"");
    else if (!complete_)
      text_ << opening << kEmptyInteger << OLESTR("\"");
  };
  for (std::size_t i = 0; i < std::max(identity.groupTypes.size(), identity.groupCounts.size()); ++i) {
    text_ << OLESTR("            <Group");
    number(OLESTR(" ID = \""), identity.groupTypes, i);
    number(OLESTR(" NUMB = \""), identity.groupCounts, i);
    text_ << OLESTR("/> \n");
  }
  text_ << OLESTR("      </GroupProperty>\n");
}

void CompoundXmlWriter::properties(const PropertyTable& table) {
  for (const Key key : kWritingOrder) {
    if (const CQSAbstractProp* fixed = table[key])
      property(OLESTR("FixedProperty"), nameOf(key), *fixed);
    else
      emptySlot(key);
  }
  // A component may change the properties while it stores itself.
  const PropertyTable::OtherMap& others = table.others();
  for (auto next = others.begin(); next != others.end();) {
    const WideString name = next->first;
    if (next->second) property(OLESTR("AdditionProperty"), name, *next->second);
    next = others.upper_bound(name);
  }
}

void CompoundXmlWriter::emptySlot(Key key) {
  openProperty(OLESTR("FixedProperty"), nameOf(key));
  text_ << OLESTR("VOID\"   EQUATIONSHAPE = \"1000\"   CLASSID = \"VOID\">\n")
        << OLESTR("           <PropertyContent CONTENT = \"VOID\"/>\n");
  closeProperty(OLESTR("FixedProperty"));
}

void CompoundXmlWriter::property(WideView element, WideView name, const CQSAbstractProp& property) {
  LONG kind = VoidProp;
  property.GetType(&kind);
  if (kind == VoidProp && !complete_) return;

  openProperty(element, name);
  LONG shape = PropCurveVoid;
  switch (kind) {
    case PointProp:
      text_ << OLESTR("PointProp\"   EQUATIONSHAPE = \"1000\"   CLASSID = \"VOID\"");
      break;
    case EquationProp:
      property.GetShape(&shape);
      text_ << OLESTR("EquationProp\"   EQUATIONSHAPE = \"") << INT{shape} << OLESTR("\"   CLASSID = \"VOID\"");
      break;
    case COMProp:
      text_ << OLESTR("COMProp\"   EQUATIONSHAPE = \"1000\"");
      className(property);
      break;
    default:
      text_ << OLESTR("VoidProp\"   EQUATIONSHAPE = \"1000\"   CLASSID = \"VOID\"");
  }
  if (complete_) text_.attribute(OLESTR("   LOADER = \""), property.loader());
  text_ << OLESTR(">\n");
  if (text_.form().provenance()) source(name, property);
  text_ << OLESTR("           <PropertyContent CONTENT = \"");
  content(property, kind);
  text_ << OLESTR("\"/> \n");
  closeProperty(element);
}

// Before the content, with which a reader stores the property.
void CompoundXmlWriter::source(WideView name, const CQSAbstractProp& property) {
  const ValueSource source = content_.record.sourceOf(name, property, database_);
  if (!source.isKnown()) return;
  text_ << OLESTR("           <PropertySource");
  const auto number = [this](const auto& tag, INT value) {
    text_ << OLESTR("   ") << viewOf(tag.get()) << OLESTR(" = \"") << value << OLESTR("\"");
  };
  number(kSourceKind, source.kind);
  number(kSourceQuality, source.quality);
  number(kSourceYear, source.year);
  forEachText(source, [this](const auto& tag, const Bstr& text) {
    if (!text) return;
    text_ << OLESTR("   ") << viewOf(tag.get()) << OLESTR(" = \"");
    text_.escaped(text.view()) << OLESTR("\"");
  });
  text_ << OLESTR("/> \n");
}

void CompoundXmlWriter::className(const CQSAbstractProp& component) {
  Bstr name;
  component.GetCOMClassName(name.out());
  text_.attribute(OLESTR("   CLASSNAME = \""), name);
}

void CompoundXmlWriter::content(const CQSAbstractProp& property, LONG kind) {
  switch (kind) {
    case PointProp: {
      LONG dependencies = 0;
      double value = kEmptyValue;
      property.GetValue(0.0, 0.0, eNoExtrapolation, &dependencies, &value);
      appendItem(text_, kPointValue, value);
      break;
    }
    case EquationProp:
      appendEquation(text_, property);
      break;
    case COMProp: {
      // From here on the property may be gone.
      const CQSCOMProp::Stored stored = static_cast<const CQSCOMProp&>(property).stored();
      componentText(kClassName, stored.className, stored.content);
      break;
    }
    default:
      text_ << kVoidText;
  }
}

// A complete text omits a class name that is null.
void CompoundXmlWriter::componentText(WideView key, const Bstr& className, const Bstr& content) {
  ComponentText text{className.view(), content.view()};
  if (complete_ && !isReadable(className.view()))
    fail(E_INVALIDARG, {"the class name \"", className.get(), "\" cannot be read back"});
  if (complete_ && !className) text.className.reset();
  appendComponent(text_, key, text);
}

void CompoundXmlWriter::userProperties(const UserProperties& properties) {
  for (auto next = properties.begin(); next != properties.end();) {
    const WideString name = next->first;
    const Bstr classId = next->second.classId;
    Bstr content = next->second.content;
    const ComPtr<IDispatch> component = next->second.component;
    if (const auto store = ComPtr<ICOMUserProp>::from(component.get()))
      check(store.get(), store->Store(content.out()), {"the user property \"", name, "\""});
    text_ << OLESTR("      <UserProperty NAME=\"");
    text_.value(name) << OLESTR("\"   CONTENT = \"");
    componentText(kClassId, classId, content);
    text_ << OLESTR("\"> \n      </UserProperty>\n");
    next = properties.upper_bound(name);
  }
}

}  // namespace qs
