// The names of the pure-component database files, and the layout of purecmp1.idx and purecmp1.dat; docs/database.md
// describes it in full, and that of purecmp1.src, which persist/provenance_file.cpp alone reads and writes.
// All numbers are little-endian, text is 8-bit text of the system code page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qs::database {

inline constexpr std::string_view kIndexFile = "purecmp1.idx";
inline constexpr std::string_view kDataFile = "purecmp1.dat";
inline constexpr std::string_view kProvenanceFile = "purecmp1.src";

// Length of a field definition and of an index record; a conforming file's record length R is the same.
inline constexpr std::size_t kRecordLength = 78;

// Both files start with a header in a record of its own.
inline constexpr std::size_t kVersionOffset = 0;         // double
inline constexpr std::size_t kBuildOffset = 8;           // uint64, the same in both files of a build that has the mark
inline constexpr std::size_t kRecordLengthOffset = 18;   // int32 R
inline constexpr std::size_t kFieldCountOffset = 22;     // int32 F, used from the index file
inline constexpr std::size_t kCompoundCountOffset = 26;  // int32 C, used from the index file
inline constexpr std::size_t kMarkOffset = 30;           // kMark, or anything in the files of others
inline constexpr std::string_view kMark = "QSB1";
inline constexpr std::size_t kHeaderLength = 34;

// Readers keep the index file in memory, and refuse a larger one.
inline constexpr std::uint64_t kLargestIndexFile = (std::uint64_t{1} << 31) - 1;

// A field definition: int32 number, int32 size, name, kind.
inline constexpr std::size_t kFieldNameLength = 50;
inline constexpr std::size_t kFieldKindLength = 20;

// An index record: int32 compound number, int32 data record number, name, identifier.
inline constexpr std::size_t kIndexNameLength = 50;
inline constexpr std::size_t kIndexIdentifierLength = 20;

// A synonym of a conforming file: int32 compound number, text.
inline constexpr std::size_t kSynonymLength = kRecordLength - sizeof(std::int32_t);

enum class FieldKind : int {
  Other = 0,
  Byte = 1,
  ShortInteger = 2,
  LongInteger = 3,
  Double = 4,
  String = 5,
  Group = 6,
  Equation = 7,
};

struct KindText {
  std::string_view text;
  FieldKind kind;
};

// The field of UNIFAC groups.
inline constexpr std::string_view kGroupField = "UNIFAC";

// A field's kind text is compared with these as prefixes, in this order; the first match wins.
inline constexpr KindText kKindTexts[] = {
    {"Double", FieldKind::Double}, {"Equation", FieldKind::Equation},        {"Byte", FieldKind::Byte},
    {"String", FieldKind::String}, {"Long Integer", FieldKind::LongInteger}, {"Short Integer", FieldKind::ShortInteger},
    {"Group", FieldKind::Group},
};

// An equation field without its coefficients: int16 shape before them; then four doubles of range, two int16 shapes of
// X and Y, two double exponents and three reserved int16.
inline constexpr std::size_t kEquationReserved = 3;
inline constexpr std::size_t kEquationOverhead = 2 + 4 * 8 + 2 * 2 + 2 * 8 + kEquationReserved * 2;

// Bytes that a field of a kind and size declares for itself in a data record; size is not negative. The sum over the
// fields before it is a field's offset.
constexpr std::uint64_t fieldBytes(FieldKind kind, std::uint64_t size) {
  switch (kind) {
    case FieldKind::Equation:
      return kEquationOverhead + 8 * size;
    case FieldKind::Group:
      return 4 * size;
    case FieldKind::Byte:
    case FieldKind::ShortInteger:
    case FieldKind::LongInteger:
    case FieldKind::Double:
    case FieldKind::String:
    case FieldKind::Other:
      break;
  }
  return size;
}

// Bytes that a field's encoding takes when a record is read from its start, field by field: numbers have their own
// width. The same as fieldBytes in a conforming file, where numbers declare just that width.
constexpr std::uint64_t encodedBytes(FieldKind kind, std::uint64_t size) {
  switch (kind) {
    case FieldKind::Byte:
      return 1;
    case FieldKind::ShortInteger:
      return 2;
    case FieldKind::LongInteger:
      return 4;
    case FieldKind::Double:
      return 8;
    case FieldKind::String:
    case FieldKind::Group:
    case FieldKind::Equation:
    case FieldKind::Other:
      break;
  }
  return fieldBytes(kind, size);
}

// Wide characters that a text must stay below.
inline constexpr std::size_t kTextLimit = 1024;

inline constexpr double kVersionWithOldShapes = 1.0;

}  // namespace qs::database
