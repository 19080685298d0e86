#include "bank/csv_import.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "bank/csv_columns.h"
#include "bank/csv_reader.h"
#include "bank/csv_writer.h"
#include "bank/names.h"
#include "bank/text_file.h"
#include "bank/units.h"
#include "platform/number_text.h"
#include "platform/text.h"

namespace qs::bank {
namespace {

using database::CompoundData;
using database::Correlation;

// The origin of what has no origin in the sheet.
constexpr const char* kSheet = "sheet";

constexpr Key kUsualKeys[] = {Key::MW,   Key::TC,     Key::PC,     Key::VC,  Key::ACEN, Key::NBP, Key::MP,
                              Key::HFUS, Key::IGHF25, Key::IGGF25, Key::VP,  Key::LDN,  Key::HVP, Key::LCP,
                              Key::IGH,  Key::LVS,    Key::VVS,    Key::LTC, Key::VTC,  Key::ST};

constexpr Key kTemperatureDependent[] = {
    Key::LDN,  Key::VDN, Key::VP,  Key::HVP,  Key::LCP,  Key::VCP,  Key::SVR,   Key::LVS,   Key::VVS, Key::LTC,
    Key::VTC,  Key::ST,  Key::IT,  Key::LIQH, Key::VAPH, Key::LIQS, Key::VAPS,  Key::IGG,   Key::IGH, Key::IGS,
    Key::IGCP, Key::KV1, Key::KV2, Key::SDN,  Key::SOLH, Key::SOLS, Key::SOLCP, Key::SOLTC, Key::SUBP};

// The parts of a list, without blanks around them; none of an empty text.
std::vector<std::string_view> partsOf(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (std::size_t at = 0; !text.empty() && at <= text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    parts.push_back(trimmed(text.substr(at, end - at)));
    at = end + 1;
  }
  return parts;
}

bool isUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto byte = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u; };
    const unsigned first = byte(i), second = byte(i + 1);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0) return false;
    for (std::size_t next = 1; next < length; ++next)
      if ((byte(i + next) & 0xC0) != 0x80) return false;
    if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) || (first == 0xF0 && second < 0x90) ||
        (first == 0xF4 && second > 0x8F))
      return false;
    i += length;
  }
  return true;
}

bool mayHaveUnit(ColumnPart part) {
  switch (part) {
    case ColumnPart::Value:
    case ColumnPart::Form:
    case ColumnPart::Tmin:
    case ColumnPart::Tmax:
    case ColumnPart::Pmin:
    case ColumnPart::Pmax:
      return true;
    default:
      return false;
  }
}

class SheetReader {
 public:
  SheetReader(const std::filesystem::path& file, std::vector<Finding>& findings)
      : file_(utf8(file)), findings_(findings) {
    source_.file = file;
    const std::string name = utf8(file.filename());
    source_.description = "Imported from the sheet " + name;
    source_.origins[kSheet] = {"Sheet " + name, kNotStated, kNotStated, {}, {}};
  }

  Source read(std::string_view text) {
    CsvReader reader(text);
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
      fault(1, {}, "the text is UTF-16; save the sheet as CSV in UTF-8");
    else if (!reader.next(row_))
      fault(1, {}, "the sheet is empty");
    else if (readHeader())
      while (reader.next(row_)) readRow();
    return std::move(source_);
  }

 private:
  static constexpr const char* kNotStated = "not stated in the sheet";
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

  // The columns of a key, by their places.
  struct KeyColumns {
    KeyColumns() { coefficients.fill(kNowhere); }
    std::size_t operator[](ColumnPart part) const {
      const auto found = places.find(part);
      return found == places.end() ? kNowhere : found->second;
    }

    std::map<ColumnPart, std::size_t> places;
    std::array<std::size_t, kMostCoefficients> coefficients;
  };

  void fault(int line, std::string column, std::string message) {
    findings_.push_back({.rule = "import",
                         .file = file_,
                         .line = line,
                         .compound = compound_ ? database::describe(compound_->data) : std::string(),
                         .field = std::move(column),
                         .message = std::move(message)});
  }
  // In a column of the row that is being read.
  void fault(std::size_t place, std::string message) {
    const int line = place < row_.size() ? row_[place].line : row_.front().line;
    fault(line, place < headers_.size() ? headers_[place] : std::string(), std::move(message));
  }
  // True, with a fault, where there is a reason.
  bool refused(std::size_t place, std::string reason) {
    if (reason.empty()) return false;
    fault(place, std::move(reason));
    return true;
  }

  // False where the rows cannot be read.
  bool readHeader() {
    for (const CsvCell& cell : row_) headers_.emplace_back(trimmed(cell.text));
    if (row_.size() == 1 && headers_[0].find_first_of(";\t") != std::string::npos) {
      fault(row_[0].line, {},
            std::string(headers_[0].find(';') != std::string::npos ? "semicolons" : "tabs") +
                " divide the columns; save the sheet with commas, and with points in numbers");
      return false;
    }
    std::set<std::tuple<ColumnPart, std::string_view, Key, int>> there;
    for (std::size_t place = 0; place < headers_.size(); ++place) {
      columns_.push_back(headers_[place].empty() ? std::nullopt : readColumn(place));
      if (auto& column = columns_.back();
          column && !there.emplace(column->part, column->member, column->key, column->coefficient).second) {
        fault(place, "the column is there twice");
        column.reset();
      }
      if (columns_.back()) addColumn(place, *columns_.back());
    }
    for (const std::string_view needed : {"number", "name"})
      if (!identity_.contains(needed)) fault(row_[0].line, {}, "no column \"" + std::string(needed) + '"');
    return true;
  }
  std::optional<Column> readColumn(std::size_t place) {
    const std::string& header = headers_[place];
    if (!row_[place].fault.empty()) {
      fault(place, std::string(row_[place].fault));
      return std::nullopt;
    }
    auto column = columnOf(header);
    if (!column) {
      fault(place, "no such column" + suggestionFor(header));
      return std::nullopt;
    }
    if (column->unit.empty()) return column;
    double ignored = 0.0;
    if (!mayHaveUnit(column->part)) {
      fault(place, "the column has no unit");
      return std::nullopt;
    }
    if (refused(place, convertNumber(targetOf(*column), column->unit, ignored))) return std::nullopt;
    return column;
  }
  static std::string suggestionFor(std::string_view header) {
    const auto end = std::min(header.find_first_of(".["), header.size());
    const std::string_view name = trimmed(header.substr(0, end));
    if (findKey(widen(name)))
      return header.substr(end).starts_with('.') ? suggestionFrom(kColumnParts, trimmed(header.substr(end + 1))) : "";
    std::vector<std::string> texts;
    for (const Key key : kKeysInOrder) texts.push_back(narrow(nameOf(key)));
    std::vector<std::string_view> names(texts.begin(), texts.end());
    if (end == header.size()) names.insert(names.end(), kIdentityMembers.begin(), kIdentityMembers.end());
    return suggestion(name, names);
  }
  // The unit to which numbers of the column are converted.
  static std::string targetOf(const Column& column) {
    switch (column.part) {
      case ColumnPart::Tmin:
      case ColumnPart::Tmax:
        return std::string(kTemperatureUnit);
      case ColumnPart::Pmin:
      case ColumnPart::Pmax:
        return std::string(kPressureUnit);
      default:
        return unitOf(column.key);
    }
  }
  void addColumn(std::size_t place, const Column& column) {
    if (column.part == ColumnPart::Identity)
      identity_[column.member] = place;
    else if (column.part == ColumnPart::Coefficient)
      keys_[column.key].coefficients[static_cast<std::size_t>(column.coefficient)] = place;
    else
      keys_[column.key].places[column.part] = place;
  }

  void readRow() {
    if (std::ranges::all_of(row_, [](const CsvCell& cell) { return trimmed(cell.text).empty(); })) return;
    compound_.emplace();
    compound_->line = row_.front().line;
    const std::size_t number = identityPlace("number"), name = identityPlace("name");
    compound_->data.name = text(name);
    if (const auto value = wholeInteger(text(number)); value) compound_->data.number = *value;
    for (std::size_t place = 0; place < row_.size(); ++place) {
      const CsvCell& cell = row_[place];
      if (!cell.fault.empty())
        fault(place, std::string(cell.fault));
      else if (!isUtf8(cell.text))
        fault(place, "the text is not UTF-8");
      else if ((place >= headers_.size() || headers_[place].empty()) && !trimmed(cell.text).empty())
        fault(place, "\"" + cell.text + "\" is in a column without a header");
    }
    readNumber(number);
    if (name != kNowhere && text(name).empty()) fault(name, "a compound needs a name");
    readIdentity();
    for (const auto& [key, columns] : keys_) readKey(key, columns);
    source_.compounds.push_back(std::move(*compound_));
    compound_.reset();
  }

  std::size_t identityPlace(std::string_view member) const {
    const auto found = identity_.find(member);
    return found == identity_.end() ? kNowhere : found->second;
  }
  // Empty where there is no such column or cell.
  std::string_view text(std::size_t place) const {
    return place < row_.size() ? trimmed(row_[place].text) : std::string_view();
  }

  void readNumber(std::size_t place) {
    if (place == kNowhere) return;
    const auto value = wholeInteger(text(place));
    if (!value || *value < 1) return fault(place, '"' + std::string(text(place)) + "\" is not a number from 1 on");
    const auto [first, isNew] = lines_.emplace(*value, compound_->line);
    if (!isNew) fault(place, "line " + std::to_string(first->second) + " has the same number");
  }
  void readIdentity() {
    CompoundData& data = compound_->data;
#define BANK_FIELD(key, field, record_name, member) readMember(identityPlace(member), data.field);
#include "props/identity.def"
    const std::size_t synonyms = identityPlace("synonyms"), groups = identityPlace("unifac");
    for (const std::string_view part : partsOf(text(synonyms), kListSeparator)) data.synonyms.emplace_back(part);
    for (const std::string_view part : partsOf(text(groups), kListSeparator)) {
      const std::size_t colon = std::min(part.find(':'), part.size());
      const auto subgroup = wholeInteger(part.substr(0, colon));
      const auto count = colon < part.size() ? wholeInteger(part.substr(colon + 1)) : std::nullopt;
      if (subgroup && count)
        data.unifac.push_back({*subgroup, *count});
      else
        fault(groups, '"' + std::string(part) + "\" is not a sub-group and a count, as in 1:2");
    }
    for (const auto& [member, place] : identity_)
      if (!text(place).empty()) source_.identityOrigins.emplace(member, kSheet);
  }
  void readMember(std::size_t place, std::string& target) { target = text(place); }
  void readMember(std::size_t place, std::optional<std::int32_t>& target) {
    if (text(place).empty()) return;
    target = wholeInteger(text(place));
    if (!target) fault(place, '"' + std::string(text(place)) + "\" is not an integer");
  }
  void readMember(std::size_t place, std::optional<bool>& target) {
    std::string word(text(place));
    std::ranges::transform(word, word.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (word == "true" || word == "false")
      target = word == "true";
    else if (!word.empty())
      fault(place, '"' + std::string(text(place)) + "\" is neither true nor false");
  }
  void readMember(std::size_t place, std::optional<tagCompoundFamilyEnum>& target) {
    tagCompoundFamilyEnum family{};
    if (readName(place, kFamilies, family)) target = family;
  }
  // False where there is no such name.
  template <class Table, class T>
  bool readName(std::size_t place, const Table& table, T& target) {
    if (text(place).empty()) return false;
    const auto* value = valueOf(table, text(place));
    if (value)
      target = *value;
    else
      fault(place, "no \"" + std::string(text(place)) + '"' + suggestionFrom(table, text(place)));
    return value;
  }
  // Nothing for an empty cell, and with a fault for one that is no number.
  std::optional<double> number(std::size_t place) {
    if (text(place).empty()) return std::nullopt;
    const auto value = wholeDouble(text(place));
    if (!value)
      fault(place, '"' + std::string(text(place)) + "\" is not a finite number" +
                       (text(place).find(',') != std::string_view::npos ? "; its decimal sign is a point" : ""));
    return value;
  }
  // In the unit of the key table.
  void readConverted(std::size_t place, double& target) {
    auto value = number(place);
    const Column* column = value ? &*columns_[place] : nullptr;
    if (!column || (!column->unit.empty() && refused(place, convertNumber(targetOf(*column), column->unit, *value))))
      return;
    target = *value;
  }

  void readKey(Key key, const KeyColumns& columns) {
    const std::size_t value = columns[ColumnPart::Value], form = columns[ColumnPart::Form];
    const auto isThere = [&](std::size_t place) { return !text(place).empty(); };
    bool hasParts = std::ranges::any_of(columns.coefficients, isThere);
    for (const ColumnPart part : {ColumnPart::Tmin, ColumnPart::Tmax, ColumnPart::Pmin, ColumnPart::Pmax,
                                  ColumnPart::Xshape, ColumnPart::Yshape, ColumnPart::Xpow, ColumnPart::Ypow})
      hasParts = hasParts || isThere(columns[part]);
    if (isThere(value) && (isThere(form) || hasParts)) return fault(value, "there is an equation besides the value");
    if (!isThere(value) && !isThere(form)) {
      for (const auto& [part, place] : columns.places)
        if (isThere(place)) return fault(place, "there is no value or form for this");
      if (hasParts) fault(*std::ranges::find_if(columns.coefficients, isThere), "there is no form for the coefficient");
      return;
    }
    if (isThere(value))
      readConverted(value, compound_->data.constants[key]);
    else
      readCorrelation(key, columns);
    readProvenance(key, columns);
  }

  void readCorrelation(Key key, const KeyColumns& columns) {
    Correlation& correlation = compound_->data.correlations[key];
    const std::size_t place = columns[ColumnPart::Form];
    if (!readName(place, kForms, correlation.form)) return;
    const std::size_t count = database::coefficientCount(key, correlation.form);
    bool isComplete = true;
    for (std::size_t i = 0; i < columns.coefficients.size(); ++i) {
      const std::size_t at = columns.coefficients[i];
      const std::string letter(1, static_cast<char>('A' + i));
      const auto coefficient = number(at);
      if (i < count && text(at).empty())
        fault(at == kNowhere ? place : at, std::string(text(place)) + " needs the coefficient " + letter);
      else if (i >= count && !text(at).empty())
        fault(at, std::string(text(place)) + " has no coefficient " + letter);
      isComplete = isComplete && (i >= count || coefficient);
      if (i < count) correlation.coefficients.push_back(coefficient.value_or(0.0));
    }
    const std::pair<ColumnPart, double Correlation::*> limits[] = {{ColumnPart::Tmin, &Correlation::tmin},
                                                                   {ColumnPart::Tmax, &Correlation::tmax},
                                                                   {ColumnPart::Pmin, &Correlation::pmin},
                                                                   {ColumnPart::Pmax, &Correlation::pmax}};
    for (const auto& [part, limit] : limits) {
      readConverted(columns[part], correlation.*limit);
      const bool isNeeded = part == ColumnPart::Tmin || part == ColumnPart::Tmax;
      if (isNeeded && text(columns[part]).empty())
        fault(columns[part] == kNowhere ? place : columns[part],
              "an equation needs " + std::string(nameOf(kColumnParts, part)));
    }
    readName(columns[ColumnPart::Xshape], kTransformations, correlation.xShape);
    readName(columns[ColumnPart::Yshape], kTransformations, correlation.yShape);
    correlation.xPower = number(columns[ColumnPart::Xpow]).value_or(correlation.xPower);
    correlation.yPower = number(columns[ColumnPart::Ypow]).value_or(correlation.yPower);
    const Column& column = *columns_[place];
    if (isComplete && !column.unit.empty()) refused(place, convertCorrelation(key, column.unit, correlation));
  }

  void readProvenance(Key key, const KeyColumns& columns) {
    Provenance& provenance = compound_->provenance[key];
    provenance.line = compound_->line;
    provenance.origin = text(columns[ColumnPart::Source]);
    if (provenance.origin.empty()) provenance.origin = kSheet;
    if (!source_.origins.contains(provenance.origin))
      source_.origins[provenance.origin] = {provenance.origin, kNotStated, kNotStated, {}, {}};
    readName(columns[ColumnPart::Kind], kKinds, provenance.kind);
    readName(columns[ColumnPart::Quality], kQualities, provenance.quality);
    provenance.uncertainty = text(columns[ColumnPart::Uncertainty]);
    provenance.note = text(columns[ColumnPart::Note]);
  }

  const std::string file_;
  std::vector<Finding>& findings_;
  Source source_;
  std::vector<std::string> headers_;
  std::vector<std::optional<Column>> columns_;  // by place; nothing where the header is of no use
  std::map<std::string_view, std::size_t> identity_;
  std::map<Key, KeyColumns> keys_;
  std::map<std::int32_t, int> lines_;  // of the compounds' numbers
  std::vector<CsvCell> row_;
  std::optional<Compound> compound_;  // of that row
};

}  // namespace

Source importCsv(const std::filesystem::path& file, std::vector<Finding>& findings) {
  return SheetReader(file, findings).read(readText(file));
}

std::span<const Key> usualKeys() { return kUsualKeys; }

std::string csvTemplate(std::span<const Key> keys) {
  std::string header;
  const auto add = [&](const Column& column) { header += (header.empty() ? "" : ",") + csvCell(headerOf(column)); };
  for (const std::string_view member : kIdentityMembers) add({.member = member});
  for (const Key key : keys) {
    const bool isEquation = std::ranges::find(kTemperatureDependent, key) != std::end(kTemperatureDependent);
    // Nearly all forms have fewer.
    const auto letters = static_cast<int>(database::coefficientCount(key, PropCurveVELDB3));
    for (const Column& column : columnsOf(key)) {
      const ColumnPart part = column.part;
      const bool isOfEquation = part == ColumnPart::Form || part == ColumnPart::Tmin || part == ColumnPart::Tmax ||
                                (part == ColumnPart::Coefficient && column.coefficient < letters);
      if (part == ColumnPart::Source || (isEquation ? isOfEquation : part == ColumnPart::Value)) add(column);
    }
  }
  return header + '\n';
}

}  // namespace qs::bank
