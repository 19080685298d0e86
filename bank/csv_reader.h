// Reads the rows of a sheet in CSV, as RFC 4180 describes it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qs::bank {

struct CsvCell {
  std::string text;
  int line = 0;
  std::string_view fault = {};  // what is wrong with its quotation marks; empty where nothing is
};

class CsvReader {
 public:
  // The text stays with the caller; a byte order mark of UTF-8 is skipped.
  explicit CsvReader(std::string_view text);

  // Reads the next row that is not empty; false, with an empty row, at the end.
  bool next(std::vector<CsvCell>& row);

 private:
  CsvCell readCell();
  CsvCell readQuoted();
  bool takeRowEnd();

  std::string_view rest_;
  int line_ = 1;
};

}  // namespace qs::bank
