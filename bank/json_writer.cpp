#include "bank/json_writer.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "bank/names.h"
#include "platform/text.h"

namespace qs::bank {
namespace {

using database::CompoundData;
using database::Correlation;

std::string json(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}
std::string json(const std::string& text) { return json(std::string_view(text)); }
std::string json(bool flag) { return flag ? "true" : "false"; }
std::string json(std::int32_t number) { return std::to_string(number); }
std::string json(double number) {
  std::string text = exactText(number);
  return text == "-0" ? "-0.0" : text;  // as an integer it would lose its sign
}
std::string json(tagCompoundFamilyEnum family) { return json(nameOf(kFamilies, family)); }

// The members of an object or the elements of a list, as JSON.
class Items {
 public:
  void add(std::string item) { items_.push_back(std::move(item)); }
  void addMember(std::string_view name, const std::string& value) { add(json(name) + ": " + value); }

  template <class T>
  void put(std::string_view name, const T& value) {
    addMember(name, json(value));
  }
  // Nothing for what is not known.
  void putKnown(std::string_view name, std::string_view text) {
    if (!text.empty()) put(name, text);
  }
  template <class T>
  void putKnown(std::string_view name, const std::optional<T>& value) {
    if (value) put(name, *value);
  }

  bool empty() const { return items_.empty(); }

  std::string inOneLine(char open = '{') const { return joined(open, "", ", ", ""); }
  std::string inLines(std::size_t indent, char open = '{') const {
    const std::string line = '\n' + std::string(indent, ' ');
    return empty() ? inOneLine(open) : joined(open, line + "  ", ',' + line + "  ", line);
  }

 private:
  std::string joined(char open, std::string_view first, std::string_view between, std::string_view last) const {
    std::string text(1, open);
    for (std::size_t i = 0; i < items_.size(); ++i) text.append(i == 0 ? first : between).append(items_[i]);
    return text.append(last) += open == '{' ? '}' : ']';
  }

  std::vector<std::string> items_;
};

template <class List, class ToJson>
std::string listOf(const List& list, ToJson toJson) {
  Items items;
  for (const auto& element : list) items.add(toJson(element));
  return items.inOneLine('[');
}

std::string originOf(const Origin& origin) {
  Items items;
  items.put("title", origin.title);
  items.put("authors", origin.authors);
  items.put("licence", origin.licence);
  items.putKnown("year", origin.year);
  items.putKnown("changes", origin.changes);
  return items.inLines(4);
}

std::string waiverOf(const Waiver& waiver) {
  Items items;
  items.put("rule", waiver.rule);
  if (waiver.compound != 0) items.put("compound", std::int32_t{waiver.compound});
  items.putKnown("field", waiver.field);
  items.put("reason", waiver.reason);
  return items.inOneLine();
}

void putProvenance(Items& items, const Compound& compound, Key key) {
  items.put("unit", unitOf(key));
  const auto found = compound.provenance.find(key);
  if (found == compound.provenance.end()) return;
  const Provenance& provenance = found->second;
  items.putKnown("source", provenance.origin);
  items.putKnown("kind", nameOf(kKinds, provenance.kind));
  items.putKnown("quality", nameOf(kQualities, provenance.quality));
  items.putKnown("uncertainty", provenance.uncertainty);
  items.putKnown("note", provenance.note);
}

// Members that have their usual values are omitted.
std::string correlationOf(const Compound& compound, Key key, const Correlation& correlation) {
  static const Correlation usual;
  Items items;
  const auto putUnusual = [&](const char* name, double Correlation::*member) {
    if (correlation.*member != usual.*member) items.put(name, correlation.*member);
  };
  items.put("form", nameOf(kForms, correlation.form));
  items.addMember("coefficients", listOf(correlation.coefficients, [](double number) { return json(number); }));
  items.put("tmin", correlation.tmin);
  items.put("tmax", correlation.tmax);
  putUnusual("pmin", &Correlation::pmin);
  putUnusual("pmax", &Correlation::pmax);
  if (correlation.xShape != usual.xShape) items.put("xshape", nameOf(kTransformations, correlation.xShape));
  if (correlation.yShape != usual.yShape) items.put("yshape", nameOf(kTransformations, correlation.yShape));
  putUnusual("xpow", &Correlation::xPower);
  putUnusual("ypow", &Correlation::yPower);
  putProvenance(items, compound, key);
  return items.inOneLine();
}

std::string compoundOf(const Compound& compound) {
  const CompoundData& data = compound.data;
  Items items;
  items.put("number", data.number);
#define BANK_FIELD(key, field, record_name, member) items.putKnown(member, data.field);
#include "props/identity.def"
  if (!data.synonyms.empty())
    items.addMember("synonyms", listOf(data.synonyms, [](const std::string& synonym) { return json(synonym); }));
  if (!data.unifac.empty()) {
    items.addMember("unifac", listOf(data.unifac, [](const database::UnifacGroup& group) {
                      Items members;
                      members.put("subgroup", group.subgroup);
                      members.put("count", group.count);
                      return members.inOneLine();
                    }));
  }
  Items constants, correlations;
  for (const auto& [key, value] : data.constants) {
    Items constant;
    constant.put("value", value);
    putProvenance(constant, compound, key);
    constants.addMember(narrow(nameOf(key)), constant.inOneLine());
  }
  for (const auto& [key, correlation] : data.correlations)
    correlations.addMember(narrow(nameOf(key)), correlationOf(compound, key, correlation));
  if (!constants.empty()) items.addMember("constants", constants.inLines(6));
  if (!correlations.empty()) items.addMember("correlations", correlations.inLines(6));
  return items.inLines(4);
}

}  // namespace

std::string writeSource(const Source& source) {
  Items root, origins, identityOrigins, units, waivers;
  std::set<Key> keys;
  for (const auto& [name, origin] : source.origins) origins.addMember(name, originOf(origin));
  for (const auto& [member, origin] : source.identityOrigins) identityOrigins.put(member, origin);
  for (const Waiver& waiver : source.waivers) waivers.add(waiverOf(waiver));
  for (const Compound& compound : source.compounds) {
    for (const auto& [key, value] : compound.data.constants) keys.insert(key);
    for (const auto& [key, correlation] : compound.data.correlations) keys.insert(key);
  }
  for (const Key key : keys) units.put(narrow(nameOf(key)), unitOf(key));
  root.put("description", source.description);
  root.addMember("sources", origins.inLines(2));
  root.addMember("identity_sources", identityOrigins.inLines(2));
  root.addMember("units", units.inLines(2));
  if (!waivers.empty()) root.addMember("waivers", waivers.inLines(2, '['));

  // The compounds, nearly all of the text, are appended one after the other: no list of them is joined.
  constexpr std::string_view kEnd = "\n}";
  std::string text = root.inLines(0);
  text.resize(text.size() - kEnd.size());
  text += ",\n  \"compounds\": [";
  for (const Compound& compound : source.compounds)
    text.append(&compound == &source.compounds.front() ? "\n    " : ",\n    ").append(compoundOf(compound));
  return text.append(source.compounds.empty() ? "]" : "\n  ]").append(kEnd) += '\n';
}

}  // namespace qs::bank
