#include "bank/differences.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "bank/csv_columns.h"

namespace qs::bank {
namespace {

bool isProvenance(const Column& column) { return column.part >= ColumnPart::Source; }

bool isKnown(const Provenance& provenance) {
  return !provenance.origin.empty() || provenance.kind != eKindNotKnown || provenance.quality != eQualityNotKnown ||
         !provenance.uncertainty.empty() || !provenance.note.empty();
}

bool hasProvenance(const Source& source) {
  return std::ranges::any_of(source.compounds, [](const Compound& compound) {
    return std::ranges::any_of(compound.provenance, [](const auto& entry) { return isKnown(entry.second); });
  });
}

std::map<std::int32_t, const Compound*> byNumber(const Source& source) {
  std::map<std::int32_t, const Compound*> compounds;
  for (const Compound& compound : source.compounds) compounds[compound.data.number] = &compound;
  return compounds;
}

std::string originOf(const Source& source, const std::string& name) {
  const auto found = source.origins.find(name);
  if (found == source.origins.end()) return {};
  const Origin& origin = found->second;
  std::string text;
  for (const std::string& part :
       {origin.title, origin.authors, origin.year ? std::to_string(*origin.year) : std::string(), origin.licence,
        origin.changes})
    if (!part.empty()) text += (text.empty() ? "" : "; ") + part;
  return text;
}

class Comparison {
 public:
  Comparison(const Source& before, const Source& after)
      : before_(before), after_(after), comparesProvenance_(hasProvenance(before) && hasProvenance(after)) {
    for (const Key key : kKeysInOrder) columns_.push_back(columnsOf(key));
  }

  std::vector<Difference> take() {
    if (comparesProvenance_) compareOrigins();
    const auto before = byNumber(before_), after = byNumber(after_);
    std::set<std::int32_t> numbers;
    for (const auto* compounds : {&before, &after})
      for (const auto& [number, compound] : *compounds) numbers.insert(number);
    for (const std::int32_t number : numbers) {
      const auto old = before.find(number), present = after.find(number);
      if (old == before.end())
        add({.compound = describe(present->second->data), .after = "there"});
      else if (present == after.end())
        add({.compound = describe(old->second->data), .before = "there"});
      else
        compare(*old->second, *present->second);
    }
    return std::move(differences_);
  }

 private:
  void add(Difference difference) {
    if (difference.before != difference.after) differences_.push_back(std::move(difference));
  }

  void compareOrigins() {
    std::set<std::string> names;
    for (const Source* source : {&before_, &after_})
      for (const auto& [name, origin] : source->origins) names.insert(name);
    for (const std::string& name : names)
      add({.field = "source " + name, .before = originOf(before_, name), .after = originOf(after_, name)});
  }

  void compare(const Compound& before, const Compound& after) {
    const auto compareColumn = [&](const Column& column) {
      std::string old = cellOf(before, column), present = cellOf(after, column);
      if (old != present) add({describe(before.data), headerOf(column), std::move(old), std::move(present)});
    };
    for (const std::string_view member : kIdentityMembers) compareColumn({.member = member});
    std::set<Key> keys;
    for (const Compound* compound : {&before, &after}) {
      for (const auto& [key, value] : compound->data.constants) keys.insert(key);
      for (const auto& [key, correlation] : compound->data.correlations) keys.insert(key);
    }
    for (const Key key : keys)
      for (const Column& column : columns_[static_cast<std::size_t>(key)])
        if (comparesProvenance_ || !isProvenance(column)) compareColumn(column);
  }

  const Source &before_, &after_;
  std::vector<std::vector<Column>> columns_;  // of each key
  const bool comparesProvenance_;
  std::vector<Difference> differences_;
};

}  // namespace

std::vector<Difference> differences(const Source& before, const Source& after) {
  return Comparison(before, after).take();
}

std::string textOf(const Difference& difference) {
  const auto& [compound, field, before, after] = difference;
  if (field.empty()) return (before.empty() ? "+ " : "- ") + compound;
  return compound + (compound.empty() ? "" : ", ") + field + ": " + (before.empty() ? "nothing" : before) + " -> " +
         (after.empty() ? "nothing" : after);
}

}  // namespace qs::bank
