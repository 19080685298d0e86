#include "bank/csv_columns.h"

#include <algorithm>

#include "platform/text.h"

namespace qs::bank {

std::string headerOf(const Column& column) {
  if (column.part == ColumnPart::Identity) return std::string(column.member);
  std::string header = narrow(nameOf(column.key));
  if (column.part == ColumnPart::Coefficient)
    header.append(".") += static_cast<char>('A' + column.coefficient);
  else if (column.part != ColumnPart::Value)
    header.append(".").append(nameOf(kColumnParts, column.part));
  if (!column.unit.empty()) header.append(" [").append(column.unit).append("]");
  return header;
}

std::optional<Column> columnOf(std::string_view header) {
  Column column;
  if (const auto* member = std::ranges::find(kIdentityMembers, header); member != kIdentityMembers.end()) {
    column.member = *member;
    return column;
  }
  if (const auto bracket = header.find(" ["); bracket != header.npos) {
    if (!header.ends_with(']')) return std::nullopt;
    column.unit = header.substr(bracket + 2, header.size() - bracket - 3);
    header = header.substr(0, bracket);
  }
  const auto point = header.find('.');
  const auto key = findKey(widen(header.substr(0, point)));
  if (!key) return std::nullopt;
  column.key = *key;
  column.part = ColumnPart::Value;
  if (point == header.npos) return column;
  const std::string_view part = header.substr(point + 1);
  if (part.size() == 1 && part[0] >= 'A' && part[0] < 'A' + kMostCoefficients) {
    column.part = ColumnPart::Coefficient;
    column.coefficient = part[0] - 'A';
  } else if (const auto* known = valueOf(kColumnParts, part)) {
    column.part = *known;
  } else {
    return std::nullopt;
  }
  return column;
}

}  // namespace qs::bank
