#include "collection/xml_writer.h"

#include <algorithm>

#include "com/bstr.h"
#include "com/host_arrays.h"
#include "com/query.h"

namespace qs {

void COQSCompoundCollection::CollectionXmlWriter::write() {
  const bool isView = collection_.isView();
  text_ << (isView ? OLESTR("<SubCompList VERSION = \"1\" NUMBCOMPOUND = \"")
                   : OLESTR("<CompoundCollection VERSION = \"2\" NUMBCOMPOUND = \""))
        << collection_.count() << OLESTR("\" > \n");
  // The compounds of a view are its parent's.
  if (complete_ || !isView) compounds();
  models();
  components(collection_.state_.loaders, OLESTR("Loader"), true);
  if (complete_) {
    components(collection_.state_.estimators, OLESTR("Estimator"), false);
    // Copies, since what the arrays' calls do may replace them.
    offsets(OLESTR("OffsetH"), ComPtr(collection_.state_.offsetH));
    offsets(OLESTR("OffsetS"), ComPtr(collection_.state_.offsetS));
    namedViews();
  }
  text_ << (isView ? OLESTR("</SubCompList>\n") : OLESTR("</CompoundCollection>\n"));
}

void COQSCompoundCollection::CollectionXmlWriter::compounds() {
  for (INT i = 0; i < collection_.count(); ++i) {
    ComPtr<IDispatch> compound;
    check(collection_.get_Compound(i, compound.out()));
    if (compound)
      stored(compound.get(), text_.form().flags());
    else if (complete_)
      text_ << OLESTR("   <EmptySlot/>\n");
    // The others are hardly longer than the first, so that the text need not grow again and again.
    if (i == 0 && !collection_.isView())
      text_.expect((text_.length() + text_.length() / 8) *
                   static_cast<std::size_t>(collection_.state_.slots.occupied()));
  }
}

void COQSCompoundCollection::CollectionXmlWriter::models() {
  auto& models = collection_.state_.models;
  for (auto next = models.begin(); next != models.end();) {
    const WideString name = next->first;
    const ComPtr<IInteractionParameters> parameters = next->second.parameters;
    if (complete_) {
      text_ << OLESTR("   <Model NAME = \"");
      text_.value(name) << OLESTR("\"");
      text_.attribute(OLESTR(" PANE = \""), next->second.pane);
      text_ << OLESTR(">\n");
    }
    // Parameters have no sources.
    stored(parameters.get(), text_.form().flags() & ~xmlProvenance);
    if (complete_) text_ << OLESTR("   </Model>\n");
    next = models.upper_bound(name);
  }
}

void COQSCompoundCollection::CollectionXmlWriter::components(const ComponentRegistry& registry, WideView element,
                                                             bool always) {
  if (registry.count() > 0) {
    text_ << OLESTR("   <Added") << element << OLESTR("s  NUMB = \"") << registry.count() << OLESTR("\">\n");
    for (const auto& [name, record] : registry.records()) {
      text_ << OLESTR("      <") << element << OLESTR(" ");
      text_.attribute(OLESTR(" NAME = \""), record.Name);
      text_.attribute(OLESTR("\n               CLASSNAME = \""), record.ClassName);
      text_.attribute(OLESTR("\n               DESCRIPTION = \""), record.Description);
      text_.attribute(OLESTR("\n               PATH = \""), record.Path);
      text_ << OLESTR(">\n      </") << element << OLESTR(">\n");
    }
    text_ << OLESTR("   </Added") << element << OLESTR("s>\n");
  }
  if (!always && !registry.defaultName()) return;
  text_ << OLESTR("   <Default") << element << OLESTR(" ");
  text_.attribute(OLESTR(" NAME = \""), registry.defaultName());
  text_ << OLESTR("/>\n");
}

void COQSCompoundCollection::CollectionXmlWriter::offsets(WideView element, const ComPtr<IRealArrayDisp>& array) {
  if (!array) return;
  LONG size = 0;
  checkSize(array.get(), array->get_Size(&size));
  text_ << OLESTR("   <") << element << OLESTR(" VALUES = \"");
  for (LONG i = 0; i < std::min<LONG>(size, collection_.count()); ++i) {
    double value = 0.0;
    checkElement(array.get(), array->get_IthValue(i, &value), static_cast<std::size_t>(i));
    if (i > 0) text_ << OLESTR(",");
    text_ << value;
  }
  text_ << OLESTR("\"/>\n");
}

void COQSCompoundCollection::CollectionXmlWriter::namedViews() {
  for (const auto& [name, positions] : collection_.state_.subLists) {
    text_ << OLESTR("   <NamedView NAME = \"");
    text_.value(name) << OLESTR("\" POSITIONS = \"");
    for (std::size_t i = 0; i < positions->size(); ++i) {
      if (i > 0) text_ << OLESTR(",");
      text_ << INT{(*positions)[i]};
    }
    text_ << OLESTR("\"/>\n");
  }
}

void COQSCompoundCollection::CollectionXmlWriter::stored(IUnknown* object, INT form) {
  Bstr text;
  const auto other = form != xmlDefaultForm ? ComPtr<IXMLStoreEx>::from(object) : ComPtr<IXMLStoreEx>();
  if (other) {
    check(object, other->StoreAsXMLEx(form, text.out()), {"a compound or a model"});
  } else {
    const auto store = required<IXMLStore>(object, "compound or model");
    check(object, store->StoreAsXML(text.out()), {"a compound or a model"});
  }
  text_ << text.view();
}

}  // namespace qs
