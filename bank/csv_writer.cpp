#include "bank/csv_writer.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "bank/csv_columns.h"

namespace qs::bank {
namespace {

using database::CompoundData;
using database::Correlation;

std::string cell(const std::string& text) { return text; }
std::string cell(double number) { return exactText(number); }
std::string cell(std::int32_t number) { return std::to_string(number); }
std::string cell(bool flag) { return flag ? "true" : "false"; }
std::string cell(tagCompoundFamilyEnum family) { return std::string(nameOf(kFamilies, family)); }
std::string cell(tagXYShapeEnum shape) { return std::string(nameOf(kTransformations, shape)); }
template <class T>
std::string cell(const std::optional<T>& value) {
  return value ? cell(*value) : std::string();
}

std::string listOfSynonyms(const CompoundData& compound) {
  std::string list;
  for (const std::string& synonym : compound.synonyms) {
    if (synonym.find(kListSeparator) != synonym.npos)
      throw std::runtime_error(database::describe(compound) + ", synonyms: \"" + synonym + "\" has a " +
                               kListSeparator + ", which separates synonyms in a cell");
    if (!list.empty()) list += kListSeparator;
    list += synonym;
  }
  return list;
}

std::string listOfGroups(const CompoundData& compound) {
  std::string list;
  for (const auto& [subgroup, count] : compound.unifac) {
    if (!list.empty()) list += kListSeparator;
    list += std::to_string(subgroup) + ':' + std::to_string(count);
  }
  return list;
}

std::string identityCell(const CompoundData& compound, std::string_view member) {
  if (member == "number") return cell(compound.number);
#define BANK_FIELD(key, field, record_name, name) \
  if (member == name) return cell(compound.field);
#include "props/identity.def"
  return member == "synonyms" ? listOfSynonyms(compound) : listOfGroups(compound);
}

std::string correlationCell(const Correlation& correlation, const Column& column) {
  switch (column.part) {
    case ColumnPart::Form:
      return std::string(nameOf(kForms, correlation.form));
    case ColumnPart::Coefficient: {
      const auto i = static_cast<std::size_t>(column.coefficient);
      return i < correlation.coefficients.size() ? cell(correlation.coefficients[i]) : std::string();
    }
    case ColumnPart::Tmin:
      return cell(correlation.tmin);
    case ColumnPart::Tmax:
      return cell(correlation.tmax);
    case ColumnPart::Pmin:
      return cell(correlation.pmin);
    case ColumnPart::Pmax:
      return cell(correlation.pmax);
    case ColumnPart::Xshape:
      return cell(correlation.xShape);
    case ColumnPart::Yshape:
      return cell(correlation.yShape);
    case ColumnPart::Xpow:
      return cell(correlation.xPower);
    case ColumnPart::Ypow:
      return cell(correlation.yPower);
    default:
      return {};
  }
}

std::string provenanceCell(const Provenance& provenance, ColumnPart part) {
  switch (part) {
    case ColumnPart::Source:
      return provenance.origin;
    case ColumnPart::Kind:
      return std::string(nameOf(kKinds, provenance.kind));
    case ColumnPart::Quality:
      return std::string(nameOf(kQualities, provenance.quality));
    case ColumnPart::Uncertainty:
      return provenance.uncertainty;
    case ColumnPart::Note:
      return provenance.note;
    default:
      return {};
  }
}

std::string cellOf(const Compound& compound, const Column& column) {
  const CompoundData& data = compound.data;
  if (column.part == ColumnPart::Identity) return identityCell(data, column.member);
  const auto constant = data.constants.find(column.key);
  if (column.part == ColumnPart::Value)
    return constant == data.constants.end() ? std::string() : cell(constant->second);
  const auto provenance = compound.provenance.find(column.key);
  if (provenance != compound.provenance.end()) {
    std::string text = provenanceCell(provenance->second, column.part);
    if (!text.empty()) return text;
  }
  const auto correlation = data.correlations.find(column.key);
  return correlation == data.correlations.end() ? std::string() : correlationCell(correlation->second, column);
}

// Whether some compound has something in a column that a reader would not take for granted.
bool isNeeded(const Source& source, const Column& column) {
  const std::string usual = column.part >= ColumnPart::Pmin ? correlationCell({}, column) : std::string();
  return std::ranges::any_of(source.compounds, [&](const Compound& compound) {
    const std::string text = cellOf(compound, column);
    return !text.empty() && text != usual;
  });
}

std::vector<Column> columnsOf(const Source& source) {
  std::vector<Column> columns;
  const auto addIfNeeded = [&](Column column) {
    if (isNeeded(source, column)) columns.push_back(std::move(column));
  };
  for (const std::string_view member : kIdentityMembers) addIfNeeded({.member = member});
  std::set<Key> constants;
  std::map<Key, std::size_t> correlations;  // with the most coefficients
  for (const Compound& compound : source.compounds) {
    for (const auto& [key, value] : compound.data.constants) constants.insert(key);
    for (const auto& [key, correlation] : compound.data.correlations)
      correlations[key] = std::max(correlations[key], correlation.coefficients.size());
  }
  for (const Key key : kKeysInOrder) {
    if (constants.contains(key)) columns.push_back({.part = ColumnPart::Value, .key = key, .unit = unitOf(key)});
    const auto correlation = correlations.find(key);
    if (correlation != correlations.end()) {
      columns.push_back({.part = ColumnPart::Form, .key = key, .unit = unitOf(key)});
      for (int i = 0; i < static_cast<int>(correlation->second); ++i)
        columns.push_back({.part = ColumnPart::Coefficient, .key = key, .coefficient = i});
      columns.push_back({.part = ColumnPart::Tmin, .key = key, .unit = "K"});
      columns.push_back({.part = ColumnPart::Tmax, .key = key, .unit = "K"});
      addIfNeeded({.part = ColumnPart::Pmin, .key = key, .unit = "kPa"});
      addIfNeeded({.part = ColumnPart::Pmax, .key = key, .unit = "kPa"});
      for (const ColumnPart part : {ColumnPart::Xshape, ColumnPart::Yshape, ColumnPart::Xpow, ColumnPart::Ypow})
        addIfNeeded({.part = part, .key = key});
    }
    if (correlation != correlations.end() || constants.contains(key))
      for (const ColumnPart part :
           {ColumnPart::Source, ColumnPart::Kind, ColumnPart::Quality, ColumnPart::Uncertainty, ColumnPart::Note})
        addIfNeeded({.part = part, .key = key});
  }
  return columns;
}

}  // namespace

std::string writeCsv(const Source& source) {
  const std::vector<Column> columns = columnsOf(source);
  std::string text;
  const auto addRow = [&](auto cellIn) {
    for (const Column& column : columns) {
      if (&column != &columns.front()) text += ',';
      text += csvCell(cellIn(column));
    }
    text += '\n';
  };
  addRow(headerOf);
  for (const Compound& compound : source.compounds)
    addRow([&](const Column& column) { return cellOf(compound, column); });
  return text;
}

std::string csvCell(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == text.npos) return std::string(text);
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted += '"';
}

}  // namespace qs::bank
