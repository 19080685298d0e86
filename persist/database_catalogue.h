// The content of purecmp1.idx, the index of a pure-component database: the fields of a data record, where each
// compound's record is, and the synonyms. database_format.h has the layout, database_record.h reads the records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "com/error.h"
#include "persist/database_format.h"
#include "persist/hashed_positions.h"
#include "platform/input_file.h"
#include "props/identity_fields.h"
#include "props/key_table.h"

namespace qs::database {

// A build of a database and its directory, without a trailing separator.
struct Build {
  WideString directory;
  std::uint64_t number;
};

// The header of either file.
struct Header {
  double version = 0.0;
  std::optional<std::int32_t> recordLength;  // nothing when the end of the file cuts it off
  std::int32_t fieldCount = 0;
  std::int32_t compoundCount = 0;
  std::optional<std::uint64_t> build;  // nothing without the mark
};
Header readHeader(std::span<const std::byte> file);

// Widens the text of a String field or a synonym: it ends at the first NUL, and blanks at its end belong to it. False
// when it has kTextLimit wide characters or more. Throws std::bad_alloc.
bool readText(std::string_view text, WideString& wide);

struct Field {
  std::size_t index;  // within the field table
  std::int32_t number;
  WideString name;
  std::int32_t size;     // as declared: bytes, coefficients of an equation or pairs of a group; may be negative
  std::uint64_t offset;  // declared bytes before it in a data record; negative sizes count as zero
  FieldKind kind;

  // What compounds have for a field of this name and kind.
  std::optional<Key> key = {};
  std::optional<IdentityField> identity = {};
  bool groups = false;  // the UNIFAC groups
};
using DBFieldTable = std::vector<Field>;

struct CompoundRecord {
  LONG compound;
  LONG dataRecord;
};

struct IndexRecord : CompoundRecord {
  WideString name;
  WideString identifier;
};

struct Synonym {
  LONG compound;
  std::uint32_t offset;  // of its text in the index file
};

// Whether two texts are the same name: in any case of ASCII letters, and with any blanks at the end.
bool sameName(WideView a, WideView b);

// The bytes of the index file and look-ups in them; immutable. A look-up takes the same time in a small and in a large
// file. No value of the file is trusted, and no count or size in it makes a loop or an allocation that the file's
// length does not justify. What the end of the file cuts off does not exist: a header's missing numbers read as zero; a
// field definition counts only when it is whole, an index record when both its numbers are, a synonym when its number
// is and its text has begun.
class Catalogue {
 public:
  // Throws CQSCOMError(E_FAIL) when the sections cannot be positioned: a record length that is not positive, a negative
  // number of fields, or a file of 2 GiB and more.
  explicit Catalogue(std::vector<std::byte> indexFile, WideView directory = {});

  // The build that the data file must be of.
  std::optional<std::uint64_t> build() const { return build_ ? std::optional(build_->number) : std::nullopt; }

  // For compounds to remember; null without a build.
  const std::shared_ptr<const Build>& sharedBuild() const { return build_; }

  const DBFieldTable& fields() const { return fields_; }

  // Bytes from the start of a data record to the end of its last field.
  std::uint64_t recordBytes() const { return recordBytes_; }

  // The paths of the index file and of the data file beside it.
  WideString indexPath() const { return joinPath(directory_, widen(kIndexFile)); }
  const FilePath& dataPath() const { return dataPath_; }

  // The data record number of a compound, from the first index record that carries the compound's number.
  std::optional<LONG> dataRecordOf(LONG compound) const;

  // The index records in the order of the file.
  std::size_t indexRecordCount() const { return indexRecordCount_; }
  IndexRecord indexRecord(std::size_t i) const;

  // The numbers of compounds, each with that of its data record, in the order of their first index records.
  std::vector<CompoundRecord> compounds() const;

  // The synonyms of a compound in the order of the file, as a scan of the section for this compound meets them that
  // stops after the first record with a greater number: the ones that an unsorted file has later are not found.
  std::span<const Synonym> synonymsOf(LONG compound) const;

  // Throws CQSCOMError(E_FAIL) when the text reaches kTextLimit wide characters.
  WideString synonymText(const Synonym& synonym) const;

  // Compounds in the order of their numbers: all that have a name among their synonyms, all that have a synonym of
  // kTextLimit wide characters or more, and perhaps others.
  std::vector<LONG> candidatesBySynonym(WideView name) const;

 private:
  std::span<const std::byte> bytesFrom(std::uint64_t offset) const;
  void loadFields(std::uint64_t offset, std::int32_t count);
  void loadIndex(std::uint64_t offset, std::int32_t count);
  void loadSynonyms(std::uint64_t offset, std::int32_t recordLength);

  CompoundRecord compoundRecord(std::size_t i) const;
  std::optional<std::size_t> firstRecordOf(LONG compound) const;
  bool readTextOf(const Synonym& synonym, WideString& text) const;
  std::uint32_t hashOf(LONG compound) const;
  std::uint32_t hashOf(const Synonym& synonym) const;

  [[noreturn]] void fail(TextParts why) const;

  std::vector<std::byte> file_;
  WideString directory_;
  FilePath dataPath_;
  std::shared_ptr<const Build> build_;
  DBFieldTable fields_;
  std::uint64_t recordBytes_ = 0;
  std::size_t indexOffset_ = 0;
  std::size_t indexRecordCount_ = 0;
  HashedPositions recordsByCompound_;
  std::size_t synonymTextLength_ = 0;
  std::vector<Synonym> synonyms_;  // those that some scan meets; their numbers never decrease
  HashedPositions synonymsByCompound_;

  // Made when it is first needed.
  mutable std::mutex byNameMutex_;
  mutable std::optional<HashedPositions> synonymsByName_;
};

}  // namespace qs::database
