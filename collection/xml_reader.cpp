#include "collection/xml_reader.h"

#include <algorithm>
#include <iterator>

#include "com/host_arrays.h"
#include "compound/compound.h"
#include "compound/new_component.h"

namespace qs {
namespace {

constexpr XmlTag kName{OLESTR("NAME")};
constexpr XmlTag kClassName{OLESTR("CLASSNAME")};

HRESULT without(const char* attribute) { return because(S_FALSE, {"the element has no attribute ", attribute}); }

// Numbers divided by commas.
template <class T>
std::vector<T> numbersIn(WideView text) {
  std::vector<T> numbers;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find(OLESTR(',')), text.size());
    T number{};
    convertValue(text.substr(0, length), &number);
    numbers.push_back(number);
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return numbers;
}

}  // namespace

const COQSCompoundCollection::CollectionXmlReader::Element COQSCompoundCollection::CollectionXmlReader::kElements[] = {
    {OLESTR("Compound"), &CollectionXmlReader::startCompound},
    {OLESTR("EmptySlot"), &CollectionXmlReader::addEmptySlot},
    {OLESTR("Model"), &CollectionXmlReader::nameModel},
    {OLESTR("IPModel"), &CollectionXmlReader::startModel},
    {OLESTR("AddedLoaders"), &CollectionXmlReader::group},
    {OLESTR("Loader"), &CollectionXmlReader::addComponent<&State::loaders>},
    {OLESTR("DefaultLoader"), &CollectionXmlReader::nameDefault<&CollectionXmlReader::defaultLoader_>},
    {OLESTR("AddedEstimators"), &CollectionXmlReader::group},
    {OLESTR("Estimator"), &CollectionXmlReader::addComponent<&State::estimators>},
    {OLESTR("DefaultEstimator"), &CollectionXmlReader::nameDefault<&CollectionXmlReader::defaultEstimator_>},
    {OLESTR("OffsetH"), &CollectionXmlReader::readOffsets<&State::offsetH>},
    {OLESTR("OffsetS"), &CollectionXmlReader::readOffsets<&State::offsetS>},
    {OLESTR("NamedView"), &CollectionXmlReader::addNamedView},
};

HRESULT COQSCompoundCollection::CollectionXmlReader::startCollection(TaggedAttributes* attributes) {
  INT version = 2;
  XmlAttributes(attributes).read(XmlTag(OLESTR("VERSION")), version);
  return version == 1 || version == 2 ? S_OK : because(S_FALSE, {"there is no version ", version, " of collections"});
}

HRESULT COQSCompoundCollection::CollectionXmlReader::startElement(BSTR name, TaggedAttributes* attributes) {
  if (!span_.isOpen()) {
    const auto element = std::find_if(std::begin(kElements), std::end(kElements),
                                      [name](const Element& known) { return known.name == viewOf(name); });
    if (element == std::end(kElements)) {
      span_.open(viewOf(name));
      return because(S_FALSE, {"the element <", name, "> is not known here and is skipped"});
    }
    const HRESULT result = (this->*element->start)(XmlAttributes(attributes));
    if (!span_.isOpen() || !receiver_) return result;
  } else {
    span_.start(viewOf(name));
  }
  if (!receiver_) return because(S_FALSE, {"the element <", name, "> is in an element that is skipped"});
  return handOn([&](XMLParserClient& receiver) { return receiver.StartElement(name, attributes); });
}

HRESULT COQSCompoundCollection::CollectionXmlReader::endElement(BSTR name) {
  if (!span_.isOpen()) {
    if (viewOf(name) == OLESTR("Model")) model_ = {};
    return isRoot(viewOf(name)) ? finish() : S_OK;
  }
  const HRESULT result = handOn([name](XMLParserClient& receiver) { return receiver.EndElement(name); });
  if (FAILED(result) || !span_.end(viewOf(name))) return result;
  receiver_ = ComPtr<XMLParserClient>();
  if (compound_) state_.slots.append(std::exchange(compound_, ComPtr<IBasicCompound>()));
  return result;
}

HRESULT COQSCompoundCollection::CollectionXmlReader::finish() {
  complete_ = true;
  bool known = true;
  const auto makeDefault = [&known](ComponentRegistry& registry, const Bstr& name) {
    if (name && registry.makeDefault(name.get()) != S_OK && !name.view().empty()) known = false;
  };
  makeDefault(state_.loaders, defaultLoader_);
  makeDefault(state_.estimators, defaultEstimator_);
  return known ? S_OK : S_FALSE;
}

HRESULT COQSCompoundCollection::CollectionXmlReader::startCompound(const XmlAttributes&) {
  compound_ = COQSCompound::make<IBasicCompound>();
  receiver_ = ComPtr<XMLParserClient>::from(compound_.get());
  span_.open(OLESTR("Compound"));
  return S_OK;
}

HRESULT COQSCompoundCollection::CollectionXmlReader::addEmptySlot(const XmlAttributes&) {
  state_.slots.append({});
  return S_OK;
}

HRESULT COQSCompoundCollection::CollectionXmlReader::nameModel(const XmlAttributes& attributes) {
  model_ = {};
  attributes.read(XmlTag(OLESTR("PANE")), model_.pane);
  return attributes.read(kName, model_.name) ? S_OK : without("NAME");
}

HRESULT COQSCompoundCollection::CollectionXmlReader::startModel(const XmlAttributes& attributes) {
  span_.open(OLESTR("IPModel"));
  Bstr className, ownName;
  attributes.read(kClassName, className);
  attributes.read(kName, ownName);
  const WideString name(model_.name ? model_.name.view() : ownName ? ownName.view() : WideView(OLESTR("Default")));

  auto parameters = newComponent<IInteractionParameters>(className.get());
  if (!parameters)
    if (const auto found = collection_.state_.models.find(name); found != collection_.state_.models.end())
      parameters = found->second.parameters;
  if (!parameters) return because(S_FALSE, {"there is no object for the model \"", name, "\", which is skipped"});
  receiver_ = ComPtr<XMLParserClient>::from(parameters.get());
  state_.models.insert_or_assign(name, Model{std::move(parameters), model_.pane});
  return receiver_ ? S_OK : because(S_FALSE, {"the object of a model does not read XML"});
}

template <ComponentRegistry COQSCompoundCollection::State::*registry>
HRESULT COQSCompoundCollection::CollectionXmlReader::addComponent(const XmlAttributes& attributes) {
  CQSLoader record;
  attributes.read(kName, record.Name);
  attributes.read(kClassName, record.ClassName);
  attributes.read(XmlTag(OLESTR("DESCRIPTION")), record.Description);
  attributes.read(XmlTag(OLESTR("PATH")), record.Path);
  record.object = newComponent<IDispatch>(record.ClassName.get());
  const bool complete = record.object || !record.ClassName;
  const HRESULT added = (state_.*registry).restore(std::move(record));
  return complete ? added : because(S_FALSE, {"there is no object of the class of a loader or estimator"});
}

template <Bstr COQSCompoundCollection::CollectionXmlReader::*name>
HRESULT COQSCompoundCollection::CollectionXmlReader::nameDefault(const XmlAttributes& attributes) {
  this->*name = Bstr();
  attributes.read(kName, this->*name);
  return S_OK;
}

template <ComPtr<IRealArrayDisp> COQSCompoundCollection::State::*array>
HRESULT COQSCompoundCollection::CollectionXmlReader::readOffsets(const XmlAttributes& attributes) {
  Bstr values;
  if (!attributes.read(XmlTag(OLESTR("VALUES")), values)) return without("VALUES");
  state_.*array = newRealArray(numbersIn<double>(values.view()));
  return S_OK;
}

HRESULT COQSCompoundCollection::CollectionXmlReader::addNamedView(const XmlAttributes& attributes) {
  Bstr name, positions;
  if (!attributes.read(kName, name) || !attributes.read(XmlTag(OLESTR("POSITIONS")), positions))
    return without("NAME or no attribute POSITIONS");
  auto list = std::make_shared<Positions>(numbersIn<LONG>(positions.view()));
  const bool isNew = state_.subLists.emplace(WideString(name.view()), std::move(list)).second;
  return isNew ? S_OK : because(S_FALSE, {"there is a view \"", name.get(), "\" already"});
}

}  // namespace qs
