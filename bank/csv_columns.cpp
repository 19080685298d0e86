#include "bank/csv_columns.h"

#include <algorithm>

#include "bank/units.h"
#include "platform/text.h"

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

}  // namespace

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

std::vector<Column> columnsOf(Key key) {
  std::vector<Column> columns = {{.part = ColumnPart::Value, .key = key, .unit = unitOf(key)},
                                 {.part = ColumnPart::Form, .key = key, .unit = unitOf(key)}};
  for (int i = 0; i < int{kMostCoefficients}; ++i)
    columns.push_back({.part = ColumnPart::Coefficient, .key = key, .coefficient = i});
  for (const auto& [name, part] : kColumnParts) {
    const bool isTemperature = part == ColumnPart::Tmin || part == ColumnPart::Tmax;
    const bool isPressure = part == ColumnPart::Pmin || part == ColumnPart::Pmax;
    if (part != ColumnPart::Form)
      columns.push_back({.part = part,
                         .key = key,
                         .unit = std::string(isTemperature ? kTemperatureUnit
                                             : isPressure  ? kPressureUnit
                                                           : std::string_view())});
  }
  return columns;
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

std::string usualCell(const Column& column) {
  return column.part >= ColumnPart::Pmin ? correlationCell({}, column) : std::string();
}

}  // namespace qs::bank
