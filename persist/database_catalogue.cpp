#include "persist/database_catalogue.h"

#include <algorithm>
#include <utility>

#include "persist/byte_cursor.h"

namespace qs::database {
namespace {

std::uint64_t notNegative(std::int32_t size) { return size < 0 ? 0 : static_cast<std::uint64_t>(size); }

FieldKind kindOf(std::string_view text) {
  const auto* known = std::ranges::find_if(kKindTexts, [text](const KindText& k) { return text.starts_with(k.text); });
  return known != std::end(kKindTexts) ? known->kind : FieldKind::Other;
}

// Text that blanks fill up; short enough for readText to take it always.
WideString paddedText(std::string_view text) {
  static_assert(kFieldNameLength < kTextLimit && kIndexNameLength < kTextLimit && kIndexIdentifierLength < kTextLimit);
  text = text.substr(0, text.find('\0'));
  WideString wide;
  readText(text.substr(0, text.find_last_not_of(' ') + 1), wide);
  return wide;
}

constexpr std::uint32_t kUnreadableHash = 0;  // of synonyms that are too long

// The identity field that is kept under a name in fields of a kind.
std::optional<IdentityField> identityOf(FieldKind kind, WideView name) {
  static constexpr struct {
    FieldKind kind;
    WideView name;
    IdentityField field;
  } kPlaces[] = {
#define BANK_TEXT(key, field, record_name, size, member) {FieldKind::String, OLESTR(record_name), IdentityField::key},
#define BANK_LONG(key, field, record_name, member) {FieldKind::LongInteger, OLESTR(record_name), IdentityField::key},
#define BANK_SHORT(key, field, type, record_name, member) \
  {FieldKind::ShortInteger, OLESTR(record_name), IdentityField::key},
#include "props/identity.def"
  };
  for (const auto& place : kPlaces)
    if (place.kind == kind && place.name == name) return place.field;
  return std::nullopt;
}

// Names are ASCII.
constexpr OLECHAR lowerCase(OLECHAR c) {
  return c >= OLESTR('A') && c <= OLESTR('Z') ? static_cast<OLECHAR>(c - OLESTR('A') + OLESTR('a')) : c;
}

WideView withoutTrailingBlanks(WideView text) { return text.substr(0, text.find_last_not_of(OLESTR(' ')) + 1); }

// The same for all texts that are the same name.
std::uint32_t nameHash(WideView name) {
  std::uint32_t hash = 2166136261u;
  for (const OLECHAR c : withoutTrailingBlanks(name)) hash = (hash ^ lowerCase(c)) * 16777619u;
  return hash;
}

}  // namespace

Header readHeader(std::span<const std::byte> file) {
  ByteCursor cursor(file);
  Header header;
  header.version = cursor.take<double>();
  const auto build = cursor.take<std::uint64_t>();
  cursor.skip(kRecordLengthOffset - kBuildOffset - sizeof build);
  const auto recordLength = cursor.take<std::int32_t>();
  if (!cursor.cutOff()) header.recordLength = recordLength;
  header.fieldCount = cursor.take<std::int32_t>();
  header.compoundCount = cursor.take<std::int32_t>();
  if (cursor.takeText(kMark.size()) == kMark) header.build = build;
  return header;
}

bool readText(std::string_view text, WideString& wide) {
  text = text.substr(0, text.find('\0'));
  // No code page takes more than four bytes for a wide character.
  if (text.size() >= 4 * kTextLimit) return false;
  wide.resize(text.size());
  wide.resize(static_cast<std::size_t>(writeWide(text, wide.data()) - wide.data()));
  return wide.size() < kTextLimit;
}

bool sameName(WideView a, WideView b) {
  return std::ranges::equal(withoutTrailingBlanks(a), withoutTrailingBlanks(b), {}, lowerCase, lowerCase);
}

Catalogue::Catalogue(std::vector<std::byte> indexFile, WideView directory)
    : file_(std::move(indexFile)), directory_(directory), dataPath_(joinPath(directory, widen(kDataFile))) {
  if (file_.size() > kLargestIndexFile) fail({"it is too large for an index file"});
  const Header header = readHeader(file_);
  if (header.build) build_ = std::make_shared<const Build>(Build{WideString(directory), *header.build});
  if (!header.recordLength) return;
  if (*header.recordLength <= 0) fail({"its records have the length ", *header.recordLength});
  if (header.fieldCount < 0) fail({"it has ", header.fieldCount, " fields"});
  const auto length = static_cast<std::uint64_t>(*header.recordLength);
  const auto fieldCount = static_cast<std::uint64_t>(header.fieldCount);
  loadFields(length, header.fieldCount);
  if (header.compoundCount <= 0) return;
  const auto compoundCount = static_cast<std::uint64_t>(header.compoundCount);
  loadIndex((fieldCount + 1) * length, header.compoundCount);
  loadSynonyms((fieldCount + compoundCount + 1) * length, *header.recordLength);
}

void Catalogue::fail(TextParts why) const {
  because(E_FAIL, {indexPath(), ": "});
  throw CQSCOMError(also(E_FAIL, why));
}

std::span<const std::byte> Catalogue::bytesFrom(std::uint64_t offset) const {
  return std::span(file_).subspan(static_cast<std::size_t>(std::min<std::uint64_t>(offset, file_.size())));
}

void Catalogue::loadFields(std::uint64_t offset, std::int32_t count) {
  ByteCursor cursor(bytesFrom(offset));
  const std::size_t whole = std::min(static_cast<std::size_t>(count), cursor.left() / kRecordLength);
  fields_.reserve(whole);
  std::uint64_t declared = 0;
  for (std::size_t i = 0; i < whole; ++i) {
    const auto number = cursor.take<std::int32_t>();
    const auto size = cursor.take<std::int32_t>();
    WideString name = paddedText(cursor.takeText(kFieldNameLength));
    const FieldKind kind = kindOf(cursor.takeText(kFieldKindLength));
    const auto key = findKey(name);
    const auto identity = identityOf(kind, name);
    const bool groups = kind == FieldKind::Group && name == widen(kGroupField);
    fields_.push_back({i, number, std::move(name), size, declared, kind, key, identity, groups});
    declared += fieldBytes(kind, notNegative(size));
    recordBytes_ += encodedBytes(kind, notNegative(size));
  }
}

void Catalogue::loadIndex(std::uint64_t offset, std::int32_t count) {
  ByteCursor cursor(bytesFrom(offset));
  indexOffset_ = file_.size() - cursor.left();
  // A last record needs no more than its two numbers.
  constexpr std::size_t kTextLength = kIndexNameLength + kIndexIdentifierLength;
  indexRecordCount_ = std::min(static_cast<std::size_t>(count), (cursor.left() + kTextLength) / kRecordLength);
  recordsByCompound_ = {indexRecordCount_, [this](std::size_t i) { return hashOf(compoundRecord(i).compound); }};
}

void Catalogue::loadSynonyms(std::uint64_t offset, std::int32_t recordLength) {
  constexpr std::int32_t kNumberLength = sizeof(std::int32_t);
  if (recordLength < kNumberLength) return;
  synonymTextLength_ = static_cast<std::size_t>(recordLength - kNumberLength);
  ByteCursor cursor(bytesFrom(offset));
  synonyms_.reserve(cursor.left() / static_cast<std::size_t>(recordLength) + 1);
  // A scan for a compound meets a record when no number before it is greater than the compound's; when the record is
  // the compound's own, that is the same for every scan. A scan starts as if after a record of number -1.
  LONG greatest = -1;
  while (cursor.left() > 0) {
    const auto compound = cursor.take<std::int32_t>();
    const std::size_t text = file_.size() - cursor.left();
    cursor.skip(synonymTextLength_);
    const bool textStarts = text < file_.size() || synonymTextLength_ == 0;
    if (compound < greatest || !textStarts) continue;
    synonyms_.push_back({compound, static_cast<std::uint32_t>(text)});
    greatest = compound;
  }
  synonymsByCompound_ = {synonyms_.size(), [this](std::size_t i) { return hashOf(synonyms_[i].compound); }};
}

CompoundRecord Catalogue::compoundRecord(std::size_t i) const {
  ByteCursor cursor(bytesFrom(indexOffset_ + i * kRecordLength));
  const auto compound = cursor.take<std::int32_t>();
  return {compound, cursor.take<std::int32_t>()};
}

std::optional<std::size_t> Catalogue::firstRecordOf(LONG compound) const {
  return recordsByCompound_.find(hashOf(compound),
                                 [&](std::size_t i) { return compoundRecord(i).compound == compound; });
}

std::optional<LONG> Catalogue::dataRecordOf(LONG compound) const {
  const auto first = firstRecordOf(compound);
  if (!first) return std::nullopt;
  return compoundRecord(*first).dataRecord;
}

IndexRecord Catalogue::indexRecord(std::size_t i) const {
  ByteCursor cursor(bytesFrom(indexOffset_ + i * kRecordLength + 2 * sizeof(std::int32_t)));
  WideString name = paddedText(cursor.takeText(kIndexNameLength));
  return {compoundRecord(i), std::move(name), paddedText(cursor.takeText(kIndexIdentifierLength))};
}

std::vector<CompoundRecord> Catalogue::compounds() const {
  std::vector<CompoundRecord> compounds;
  compounds.reserve(indexRecordCount_);
  for (std::size_t i = 0; i < indexRecordCount_; ++i) {
    const CompoundRecord record = compoundRecord(i);
    if (firstRecordOf(record.compound) == i) compounds.push_back(record);
  }
  return compounds;
}

std::span<const Synonym> Catalogue::synonymsOf(LONG compound) const {
  const auto isOfIt = [&](std::size_t i) { return i < synonyms_.size() && synonyms_[i].compound == compound; };
  const auto first = synonymsByCompound_.find(hashOf(compound), isOfIt);
  if (!first) return {};
  std::size_t end = *first;
  while (isOfIt(end)) ++end;
  return std::span(synonyms_).subspan(*first, end - *first);
}

bool Catalogue::readTextOf(const Synonym& synonym, WideString& text) const {
  return readText(ByteCursor(bytesFrom(synonym.offset)).takeText(synonymTextLength_), text);
}

WideString Catalogue::synonymText(const Synonym& synonym) const {
  WideString text;
  if (!readTextOf(synonym, text)) fail({"a synonym of compound ", synonym.compound, " is too long"});
  return text;
}

std::vector<LONG> Catalogue::candidatesBySynonym(WideView name) const {
  std::vector<LONG> compounds;
  const std::lock_guard lock(byNameMutex_);
  if (!synonymsByName_)
    synonymsByName_.emplace(synonyms_.size(), [this](std::size_t i) { return hashOf(synonyms_[i]); });
  for (const std::uint32_t hash : {nameHash(name), kUnreadableHash})
    synonymsByName_->find(hash, [&](std::size_t i) {
      compounds.push_back(synonyms_[i].compound);
      return false;
    });
  std::ranges::sort(compounds);
  return compounds;
}

// Universal, with a factor that whoever wrote the file does not know: no choice of numbers makes look-ups slow.
std::uint32_t Catalogue::hashOf(LONG compound) const {
  const std::uint64_t factor = reinterpret_cast<std::uintptr_t>(file_.data()) * 0x9E3779B97F4A7C15u | 1;
  return static_cast<std::uint32_t>(static_cast<std::uint32_t>(compound) * factor >> 32);
}

std::uint32_t Catalogue::hashOf(const Synonym& synonym) const {
  WideString text;
  return readTextOf(synonym, text) ? nameHash(text) : kUnreadableHash;
}

}  // namespace qs::database
