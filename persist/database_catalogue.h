// The content of purecmp1.idx, the index of a pure-component database: the fields of a data record, where each
// compound's record is, and the synonyms. database_format.h has the layout, database_record.h reads the records.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "persist/database_format.h"
#include "platform/input_file.h"
#include "platform/text.h"

namespace qs::database {

// The header of either file.
struct Header {
  double version = 0.0;
  std::optional<std::int32_t> recordLength;  // nothing when the end of the file cuts it off
  std::int32_t fieldCount = 0;
  std::int32_t compoundCount = 0;
  std::optional<std::uint64_t> build;  // nothing without the mark
};
Header readHeader(std::span<const std::byte> file);

// Widens the text of a String field or a synonym: it ends at the first NUL, and blanks at its end belong to it. Nothing
// when it has kTextLimit wide characters or more. Throws std::bad_alloc.
std::optional<WideString> storedText(std::string_view text);

struct Field {
  std::size_t index;  // within the field table
  std::int32_t number;
  WideString name;
  std::int32_t size;     // as declared: bytes, coefficients of an equation or pairs of a group; may be negative
  std::uint64_t offset;  // declared bytes before it in a data record; negative sizes count as zero
  FieldKind kind;
};
using DBFieldTable = std::vector<Field>;

struct IndexRecord {
  LONG compound;
  LONG dataRecord;
  WideString name;
  WideString identifier;
};

struct Synonym {
  LONG compound;
  std::uint32_t offset;  // of its text in the index file
};

// The bytes of the index file and look-ups in them; immutable. No value of the file is trusted, and no count or size in
// it makes a loop or an allocation that the file's length does not justify. What the end of the file cuts off does not
// exist: a header's missing numbers read as zero; a field definition counts only when it is whole, an index record when
// both its numbers are, a synonym when its number is and its text has begun.
class Catalogue {
 public:
  // Throws CQSCOMError(E_FAIL) when the sections cannot be positioned: a record length that is not positive, a negative
  // number of fields, or a file of 2 GiB and more.
  explicit Catalogue(std::vector<std::byte> indexFile, WideString dataPath = {});

  // The build that the data file must be of.
  std::optional<std::uint64_t> build() const { return build_; }

  const DBFieldTable& fields() const { return fields_; }

  // Bytes from the start of a data record to the end of its last field.
  std::uint64_t recordBytes() const { return recordBytes_; }

  // The path of the data file beside the index file.
  const WideString& dataPath() const { return dataPath_; }

  // The data record number of a compound, from the first index record that carries the compound's number. O(log n).
  std::optional<LONG> dataRecordOf(LONG compound) const;

  // The index records in the order of the file.
  std::size_t indexRecordCount() const { return byCompound_.size(); }
  IndexRecord indexRecord(std::size_t i) const;

  // The synonyms of a compound in the order of the file, as a scan of the section for this compound meets them that
  // stops after the first record with a greater number: the ones that an unsorted file has later are not found.
  std::span<const Synonym> synonymsOf(LONG compound) const;

  // Throws CQSCOMError(E_FAIL) when the text reaches kTextLimit wide characters.
  WideString synonymText(const Synonym& synonym) const;

 private:
  struct IndexKey {
    LONG compound;
    std::uint32_t position;  // among the index records

    auto operator<=>(const IndexKey&) const = default;
  };

  std::span<const std::byte> bytesFrom(std::uint64_t offset) const;
  void loadFields(std::uint64_t offset, std::int32_t count);
  void loadIndex(std::uint64_t offset, std::int32_t count);
  void loadSynonyms(std::uint64_t offset, std::int32_t recordLength);

  std::vector<std::byte> file_;
  WideString dataPath_;
  std::optional<std::uint64_t> build_;
  DBFieldTable fields_;
  std::uint64_t recordBytes_ = 0;
  std::size_t indexOffset_ = 0;
  std::vector<IndexKey> byCompound_;  // sorted
  std::size_t synonymTextLength_ = 0;
  std::vector<Synonym> synonyms_;  // those that some scan meets; their numbers never decrease
};

// The catalogue of the database in a directory, which is given without a trailing separator; null when it has no index
// file that can be opened. Each thread keeps those of its last few directories and reads an index file again when it
// has changed; whoever keeps the pointer keeps the catalogue, and equal pointers are the same catalogue. Raises
// CQSCOMError(E_FAIL) when the directory is empty, holds a NUL or has more than 1024 bytes as 8-bit text, or when its
// index file cannot be read or positioned.
std::shared_ptr<const Catalogue> openCatalogue(WideView directory);

// Tells whether what was read from a file still holds. Files rewritten within the resolution of file times may keep
// their stamp, so a reading is trusted only when its stamp had already been seen for longer than that.
class FileWatch {
 public:
  bool holds(const FileStamp& stamp) const { return settled_ && stamp == stamp_; }

  // To be called with an open file's stamp before the file is read.
  void beforeReading(const FileStamp& stamp);

 private:
  FileStamp stamp_;
  std::chrono::steady_clock::time_point seen_;
  bool settled_ = false;
};

}  // namespace qs::database
