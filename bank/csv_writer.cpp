#include "bank/csv_writer.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "bank/csv_columns.h"

namespace qs::bank {
namespace {

// The columns in which some compound has something that a reader would not take for granted.
std::vector<Column> neededColumns(const Source& source) {
  std::set<Key> keys;
  for (const Compound& compound : source.compounds) {
    for (const auto& [key, value] : compound.data.constants) keys.insert(key);
    for (const auto& [key, correlation] : compound.data.correlations) keys.insert(key);
  }
  std::vector<Column> columns;
  for (const std::string_view member : kIdentityMembers) columns.push_back({.member = member});
  for (const Key key : keys) std::ranges::move(columnsOf(key), std::back_inserter(columns));
  std::vector<bool> isNeeded(columns.size());
  for (const Compound& compound : source.compounds)
    for (std::size_t i = 0; i < columns.size(); ++i)
      if (const std::string text = isNeeded[i] ? std::string() : cellOf(compound, columns[i]); !text.empty())
        isNeeded[i] = text != usualCell(columns[i]);
  std::vector<Column> needed;
  for (std::size_t i = 0; i < columns.size(); ++i)
    if (isNeeded[i]) needed.push_back(std::move(columns[i]));
  return needed;
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
