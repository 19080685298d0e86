#include "bank/csv_reader.h"

#include <algorithm>

namespace qs::bank {
namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr std::string_view kCellEnds = ",\r\n";

}  // namespace

CsvReader::CsvReader(std::string_view text) : rest_(text) {
  if (rest_.starts_with(kMark)) rest_.remove_prefix(kMark.size());
}

bool CsvReader::next(std::vector<CsvCell>& row) {
  row.clear();
  while (takeRowEnd()) {
  }
  if (rest_.empty()) return false;
  row.push_back(readCell());
  while (rest_.starts_with(',')) {
    rest_.remove_prefix(1);
    row.push_back(readCell());
  }
  takeRowEnd();
  return true;
}

CsvCell CsvReader::readCell() {
  if (rest_.starts_with('"')) return readQuoted();
  const std::string_view text = rest_.substr(0, rest_.find_first_of(kCellEnds));
  rest_.remove_prefix(text.size());
  CsvCell cell{std::string(text), line_};
  if (text.find('"') != text.npos) cell.fault = "a quotation mark in a cell that does not start with one";
  return cell;
}

CsvCell CsvReader::readQuoted() {
  CsvCell cell{{}, line_};
  for (;;) {
    rest_.remove_prefix(1);
    const std::string_view text = rest_.substr(0, rest_.find('"'));
    cell.text += text;
    line_ += static_cast<int>(std::ranges::count(text, '\n'));
    rest_.remove_prefix(text.size());
    if (rest_.empty()) {
      cell.fault = "the quotation mark is not closed";
      return cell;
    }
    rest_.remove_prefix(1);
    if (!rest_.starts_with('"')) break;
    cell.text += '"';
  }
  if (const auto after = std::min(rest_.find_first_of(kCellEnds), rest_.size()); after > 0) {
    cell.fault = "text after the closing quotation mark";
    rest_.remove_prefix(after);
  }
  return cell;
}

bool CsvReader::takeRowEnd() {
  const std::size_t length = rest_.starts_with("\r\n") ? 2 : rest_.starts_with('\n') || rest_.starts_with('\r') ? 1 : 0;
  rest_.remove_prefix(length);
  if (length > 0) ++line_;
  return length > 0;
}

}  // namespace qs::bank
