#include "persist/database_catalogue.h"

#include <algorithm>
#include <array>
#include <utility>

#include "com/error.h"
#include "persist/byte_cursor.h"
#include "platform/per_thread.h"

namespace qs::database {
namespace {

constexpr std::size_t kDirectoryLimit = 1024;                 // bytes of 8-bit text
constexpr std::chrono::milliseconds kFileTimeResolution{20};  // the coarsest clock tick of the file systems in use

[[noreturn]] void fail() { throw CQSCOMError(E_FAIL); }

std::uint64_t notNegative(std::int32_t size) { return size < 0 ? 0 : static_cast<std::uint64_t>(size); }

FieldKind kindOf(std::string_view text) {
  const auto* known = std::ranges::find_if(kKindTexts, [text](const KindText& k) { return text.starts_with(k.text); });
  return known != std::end(kKindTexts) ? known->kind : FieldKind::Other;
}

// Text that blanks fill up; short enough for storedText to take it always.
WideString paddedText(std::string_view text) {
  static_assert(kFieldNameLength < kTextLimit && kIndexNameLength < kTextLimit && kIndexIdentifierLength < kTextLimit);
  text = text.substr(0, text.find('\0'));
  return *storedText(text.substr(0, text.find_last_not_of(' ') + 1));
}

std::vector<std::byte> readWhole(const InputFile& file) {
  if (file.stamp().size > kLargestIndexFile) fail();
  std::vector<std::byte> bytes(static_cast<std::size_t>(file.stamp().size));
  const auto got = file.readAt(0, bytes);
  if (!got) fail();
  bytes.resize(*got);
  return bytes;
}

struct CachedCatalogue {
  WideString directory;
  WideString indexPath;
  FileWatch watch;
  std::shared_ptr<const Catalogue> catalogue;
};

CachedCatalogue unread(WideView directory) {
  if (directory.empty() || directory.find(OLECHAR{}) != directory.npos || narrow(directory).size() > kDirectoryLimit)
    fail();
  return {WideString(directory), joinPath(directory, widen(kIndexFile)), {}, nullptr};
}

void read(CachedCatalogue& entry) {
  entry.catalogue.reset();
  const auto file = InputFile::open(entry.indexPath);
  if (!file) return;
  entry.watch.beforeReading(file->stamp());
  entry.catalogue = std::make_shared<Catalogue>(readWhole(*file), joinPath(entry.directory, widen(kDataFile)));
}

bool holds(const CachedCatalogue& entry) {
  if (!entry.catalogue) return false;
  const auto stamp = stampOf(entry.indexPath);
  return stamp && entry.watch.holds(*stamp);
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

std::optional<WideString> storedText(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  // No code page takes more than four bytes for a wide character.
  if (text.size() >= 4 * kTextLimit) return std::nullopt;
  if (text.size() >= kTextLimit && widen(text).size() >= kTextLimit) return std::nullopt;
  return widen(text);
}

Catalogue::Catalogue(std::vector<std::byte> indexFile, WideString dataPath)
    : file_(std::move(indexFile)), dataPath_(std::move(dataPath)) {
  if (file_.size() > kLargestIndexFile) fail();
  const Header header = readHeader(file_);
  build_ = header.build;
  if (!header.recordLength) return;
  if (*header.recordLength <= 0 || header.fieldCount < 0) fail();
  const auto length = static_cast<std::uint64_t>(*header.recordLength);
  const auto fieldCount = static_cast<std::uint64_t>(header.fieldCount);
  loadFields(length, header.fieldCount);
  if (header.compoundCount <= 0) return;
  const auto compoundCount = static_cast<std::uint64_t>(header.compoundCount);
  loadIndex((fieldCount + 1) * length, header.compoundCount);
  loadSynonyms((fieldCount + compoundCount + 1) * length, *header.recordLength);
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
    fields_.push_back({i, number, std::move(name), size, declared, kind});
    declared += fieldBytes(kind, notNegative(size));
    recordBytes_ += encodedBytes(kind, notNegative(size));
  }
}

void Catalogue::loadIndex(std::uint64_t offset, std::int32_t count) {
  ByteCursor cursor(bytesFrom(offset));
  indexOffset_ = file_.size() - cursor.left();
  const auto most = static_cast<std::uint32_t>(count);
  byCompound_.reserve(std::min<std::size_t>(most, cursor.left() / kRecordLength + 1));
  for (std::uint32_t i = 0; i < most; ++i) {
    const auto compound = cursor.take<std::int32_t>();
    cursor.skip(sizeof(std::int32_t));
    if (cursor.cutOff()) break;
    byCompound_.push_back({compound, i});
    cursor.skip(kIndexNameLength + kIndexIdentifierLength);
  }
  if (!std::ranges::is_sorted(byCompound_)) std::ranges::sort(byCompound_);
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
}

std::optional<LONG> Catalogue::dataRecordOf(LONG compound) const {
  const auto first = std::ranges::lower_bound(byCompound_, compound, {}, &IndexKey::compound);
  if (first == byCompound_.end() || first->compound != compound) return std::nullopt;
  ByteCursor cursor(bytesFrom(indexOffset_ + std::uint64_t{first->position} * kRecordLength));
  cursor.skip(sizeof(std::int32_t));
  return cursor.take<std::int32_t>();
}

IndexRecord Catalogue::indexRecord(std::size_t i) const {
  ByteCursor cursor(bytesFrom(indexOffset_ + i * kRecordLength));
  const auto compound = cursor.take<std::int32_t>();
  const auto dataRecord = cursor.take<std::int32_t>();
  WideString name = paddedText(cursor.takeText(kIndexNameLength));
  return {compound, dataRecord, std::move(name), paddedText(cursor.takeText(kIndexIdentifierLength))};
}

std::span<const Synonym> Catalogue::synonymsOf(LONG compound) const {
  const auto first = std::ranges::lower_bound(synonyms_, compound, {}, &Synonym::compound);
  return {first, std::ranges::upper_bound(first, synonyms_.end(), compound, {}, &Synonym::compound)};
}

WideString Catalogue::synonymText(const Synonym& synonym) const {
  auto text = storedText(ByteCursor(bytesFrom(synonym.offset)).takeText(synonymTextLength_));
  if (!text) fail();
  return *std::move(text);
}

std::shared_ptr<const Catalogue> openCatalogue(WideView directory) {
  static PerThread<std::array<CachedCatalogue, 4>> caches;
  auto& cache = caches.get();  // the last used first
  const auto known = std::ranges::find(cache, directory, &CachedCatalogue::directory);
  if (known == cache.end() || directory.empty()) {
    CachedCatalogue entry = unread(directory);
    read(entry);
    std::rotate(cache.begin(), cache.end() - 1, cache.end());
    cache.front() = std::move(entry);
  } else {
    if (!holds(*known)) read(*known);
    std::rotate(cache.begin(), known, known + 1);
  }
  return cache.front().catalogue;
}

void FileWatch::beforeReading(const FileStamp& stamp) {
  const auto now = std::chrono::steady_clock::now();
  if (stamp != stamp_) {
    stamp_ = stamp;
    seen_ = now;
  }
  settled_ = now - seen_ > kFileTimeResolution;
}

}  // namespace qs::database
