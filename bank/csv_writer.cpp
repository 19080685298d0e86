#include "bank/csv_writer.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "bank/csv_columns.h"

namespace qs::bank {
namespace {

// Whether some compound has something in a column that a reader would not take for granted.
bool isNeeded(const Source& source, const Column& column) {
  const std::string usual = usualCell(column);
  return std::ranges::any_of(source.compounds, [&](const Compound& compound) {
    const std::string text = cellOf(compound, column);
    return !text.empty() && text != usual;
  });
}

std::vector<Column> neededColumns(const Source& source) {
  std::vector<Column> columns;
  std::set<Key> keys;
  for (const Compound& compound : source.compounds) {
    for (const auto& [key, value] : compound.data.constants) keys.insert(key);
    for (const auto& [key, correlation] : compound.data.correlations) keys.insert(key);
  }
  const auto addIfNeeded = [&](Column column) {
    if (isNeeded(source, column)) columns.push_back(std::move(column));
  };
  for (const std::string_view member : kIdentityMembers) addIfNeeded({.member = member});
  for (const Key key : keys)
    for (Column& column : columnsOf(key)) addIfNeeded(std::move(column));
  return columns;
}

void checkSynonyms(const Compound& compound) {
  for (const std::string& synonym : compound.data.synonyms)
    if (synonym.find(kListSeparator) != synonym.npos)
      throw std::runtime_error(describe(compound.data) + ", synonyms: \"" + synonym + "\" has a " + kListSeparator +
                               ", which separates synonyms in a cell");
}

}  // namespace

std::string writeCsv(const Source& source) {
  const std::vector<Column> columns = neededColumns(source);
  std::string text;
  const auto addRow = [&](auto cellIn) {
    for (const Column& column : columns) {
      if (&column != &columns.front()) text += ',';
      text += csvCell(cellIn(column));
    }
    text += '\n';
  };
  addRow(headerOf);
  for (const Compound& compound : source.compounds) {
    checkSynonyms(compound);
    addRow([&](const Column& column) { return cellOf(compound, column); });
  }
  return text;
}

std::string csvCell(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == text.npos) return std::string(text);
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted += '"';
}

}  // namespace qs::bank
