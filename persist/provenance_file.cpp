#include "persist/provenance_file.h"

#include <algorithm>
#include <compare>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "com/error.h"
#include "com/not_set.h"
#include "persist/byte_cursor.h"
#include "persist/byte_writer.h"
#include "persist/database_format.h"
#include "platform/system_reason.h"

namespace qs::database {
namespace {

constexpr std::string_view kProvenanceMark = "QSBS";
constexpr std::uint32_t kLayoutVersion = 1;
constexpr std::size_t kProvenanceHeaderLength = 40;
constexpr std::size_t kTextLengthOffset = 16;
constexpr std::uint32_t kRecordLengths[] = {24, 8, 16, 24};  // of the sections, in their order

// The texts, each once, by where they begin. The texts must stay where they are.
class TextPool {
 public:
  std::uint32_t operator()(std::string_view text) {
    const auto [place, isNew] = places_.try_emplace(text, static_cast<std::uint32_t>(bytes_.size()));
    if (isNew) {
      if (const auto end = text.find('\0'); end != text.npos)
        throw std::invalid_argument('"' + std::string(text.substr(0, end)) + "\": a text with a NUL");
      if (text.size() >= std::numeric_limits<std::uint32_t>::max() - bytes_.size())
        throw std::invalid_argument("more text than the file can number");
      bytes_.append(text) += '\0';
    }
    return place->second;
  }

  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
  std::unordered_map<std::string_view, std::uint32_t> places_;
};

Bstr shown(const std::string& text) { return text.empty() ? Bstr() : Bstr(widenUtf8(text)); }

template <class Number>
Number known(std::uint8_t number, Number last) {
  return number <= static_cast<std::uint8_t>(last) ? static_cast<Number>(number) : Number{};
}

}  // namespace

std::vector<std::byte> encodeProvenance(const Annotations& annotations, std::uint64_t build) {
  std::vector<const Annotations::Value*> values;
  for (const Annotations::Value& value : annotations.values) values.push_back(&value);
  std::ranges::sort(values, {}, [](const auto* value) { return std::tie(value->compound, value->field); });

  TextPool pool;
  pool({});
  ByteWriter out;
  const auto putCount = [&out](const auto& list) { out.number(static_cast<std::uint32_t>(list.size())); };
  const auto putText = [&](std::string_view text) { out.number(pool(text)); };
  out.text(kProvenanceMark, kProvenanceMark.size(), '\0');
  out.number(kLayoutVersion);
  out.number(build);
  out.number(std::uint32_t{0});  // the text's length, which is not known yet
  putText(annotations.description);
  putCount(annotations.origins);
  putCount(annotations.identityOrigins);
  putCount(annotations.waivers);
  putCount(values);

  std::map<std::string_view, std::uint32_t> numbers{{"", 0}};
  for (std::uint32_t number = 0; const auto& [key, origin] : annotations.origins) {
    if (origin.year == kEmptyInteger) throw std::invalid_argument('"' + key + "\": -32767 stands for an unknown year");
    numbers.try_emplace(key, ++number);
    for (const auto* text : {&key, &origin.title, &origin.authors, &origin.licence, &origin.changes}) putText(*text);
    out.longInteger(origin.year.value_or(kEmptyInteger));
  }
  const auto putOrigin = [&](const std::string& key) {
    const auto found = numbers.find(key);
    if (found == numbers.end()) throw std::invalid_argument("no source \"" + key + '"');
    out.number(found->second);
  };
  for (const auto& [member, origin] : annotations.identityOrigins) {
    putText(member);
    putOrigin(origin);
  }
  for (const Waiver& waiver : annotations.waivers) {
    out.longInteger(waiver.compound);
    for (const auto* text : {&waiver.rule, &waiver.field, &waiver.reason}) putText(*text);
  }
  for (const auto* value : values) {
    const Provenance& provenance = value->provenance;
    out.longInteger(value->compound);
    putText(value->field);
    putOrigin(provenance.origin);
    out.number(static_cast<std::uint8_t>(provenance.kind));
    out.number(static_cast<std::uint8_t>(provenance.quality));
    out.shortInteger(0);
    putText(provenance.uncertainty);
    putText(provenance.note);
  }
  out.text(pool.bytes(), pool.bytes().size(), '\0');
  std::vector<std::byte> bytes = out.take();
  const auto length = static_cast<std::uint32_t>(pool.bytes().size());
  std::memcpy(bytes.data() + kTextLengthOffset, &length, sizeof length);
  return bytes;
}

ValueSource sourceOf(const Provenance& provenance, const Origin& origin) {
  return {provenance.kind,
          provenance.quality,
          shown(origin.title),
          shown(origin.authors),
          origin.year.value_or(kEmptyInteger),
          shown(origin.licence),
          shown(origin.changes),
          shown(provenance.uncertainty),
          shown(provenance.note)};
}

struct ProvenanceFile::Entry {
  LONG compound;
  std::uint32_t field, origin;
  tagValueKindEnum kind;
  tagValueQualityEnum quality;
  std::uint32_t uncertainty, note;
};

std::optional<ProvenanceFile> ProvenanceFile::open(WideView directory, std::uint64_t build) {
  WideString path = joinPath(directory, widen(kProvenanceFile));
  auto opened = InputFile::open(path);
  if (!opened || opened->stamp().size < kProvenanceHeaderLength) return std::nullopt;
  ProvenanceFile file(std::move(path), std::move(*opened));
  std::array<std::byte, kProvenanceHeaderLength> header;
  file.readAt(0, header);
  ByteCursor cursor(header);
  if (cursor.takeText(kProvenanceMark.size()) != kProvenanceMark || cursor.take<std::uint32_t>() != kLayoutVersion ||
      cursor.take<std::uint64_t>() != build)
    return std::nullopt;
  const auto textLength = cursor.take<std::uint32_t>();
  file.description_ = cursor.take<std::uint32_t>();
  std::uint64_t end = kProvenanceHeaderLength;
  for (std::size_t section = 0; section < kSections; ++section) {
    file.counts_[section] = cursor.take<std::uint32_t>();
    file.offsets_[section] = end;
    end += std::uint64_t{file.counts_[section]} * kRecordLengths[section];
  }
  file.text_ = end;
  if (end + textLength != file.file_.stamp().size) return std::nullopt;
  return file;
}

HRESULT ProvenanceFile::find(LONG compound, std::string_view field, Provenance& provenance, Origin& origin) const {
  std::uint32_t first = 0, last = counts_[Values];
  while (first < last) {
    const std::uint32_t middle = first + (last - first) / 2;
    const Entry entry = entryAt(middle);
    const auto order = entry.compound != compound ? entry.compound <=> compound
                                                  : textAt(entry.field, field.size() + 1).compare(field) <=> 0;
    if (order == 0) {
      std::tie(provenance.origin, origin) = originAt(entry.origin);
      fill(entry, provenance);
      return S_OK;
    }
    if (order < 0)
      first = middle + 1;
    else
      last = middle;
  }
  return S_FALSE;
}

ValueSource ProvenanceFile::sourceOf(LONG compound, WideView name) const {
  Provenance provenance;
  Origin origin;
  if (find(compound, narrow(name), provenance, origin) != S_OK) {
    const auto key = findKey(name);
    const auto original = key ? derivedFrom(*key) : std::nullopt;
    if (!original || find(compound, narrow(nameOf(*original)), provenance, origin) != S_OK) return {};
    provenance.kind = eKindDerived;
  }
  return database::sourceOf(provenance, origin);
}

Annotations ProvenanceFile::readAll() {
  std::vector<std::byte> content(static_cast<std::size_t>(file_.stamp().size));
  readAt(0, content);
  whole_ = std::move(content);

  Annotations annotations;
  annotations.description = textAt(description_);
  std::vector<std::string> keys{""};
  for (std::uint32_t i = 1; i <= counts_[Origins]; ++i) {
    auto [key, origin] = originAt(i);
    annotations.origins[keys.emplace_back(key)] = std::move(origin);
  }
  const auto keyOf = [&](std::uint32_t origin) { return origin < keys.size() ? keys[origin] : std::string(); };
  for (std::uint32_t i = 0; i < counts_[IdentityOrigins]; ++i) {
    const Record record = recordAt(IdentityOrigins, i);
    ByteCursor cursor(record);
    const auto member = cursor.take<std::uint32_t>();
    annotations.identityOrigins[textAt(member)] = keyOf(cursor.take<std::uint32_t>());
  }
  for (std::uint32_t i = 0; i < counts_[Waivers]; ++i) {
    const Record record = recordAt(Waivers, i);
    ByteCursor cursor(record);
    Waiver& waiver = annotations.waivers.emplace_back();
    waiver.compound = cursor.take<std::int32_t>();
    for (auto* text : {&waiver.rule, &waiver.field, &waiver.reason}) *text = textAt(cursor.take<std::uint32_t>());
  }
  for (std::uint32_t i = 0; i < counts_[Values]; ++i) {
    const Entry entry = entryAt(i);
    auto& [compound, field, provenance] = annotations.values.emplace_back();
    compound = entry.compound;
    field = textAt(entry.field);
    provenance.origin = keyOf(entry.origin);
    fill(entry, provenance);
  }
  return annotations;
}

void ProvenanceFile::readAt(std::uint64_t offset, std::span<std::byte> buffer) const {
  if (!whole_.empty()) {
    std::ranges::copy(std::span(whole_).subspan(static_cast<std::size_t>(offset), buffer.size()), buffer.begin());
    return;
  }
  const auto got = file_.readAt(offset, buffer);
  if (!got) fail(E_FAIL, {path_, ": ", systemReason().text});
  if (*got != buffer.size()) fail(E_FAIL, {path_, ": it has become shorter"});
}

ProvenanceFile::Record ProvenanceFile::recordAt(Section section, std::uint32_t i) const {
  Record record;
  const std::size_t length = kRecordLengths[section];
  readAt(offsets_[section] + std::uint64_t{i} * length, std::span(record).first(length));
  return record;
}

std::string ProvenanceFile::textAt(std::uint32_t offset, std::size_t most) const {
  std::string text;
  std::array<char, 256> piece;
  for (std::uint64_t at = text_ + offset; at < file_.stamp().size && text.size() < most; at += piece.size()) {
    const auto length = std::min<std::uint64_t>({piece.size(), most - text.size(), file_.stamp().size - at});
    const auto part = std::span(piece).first(static_cast<std::size_t>(length));
    readAt(at, std::as_writable_bytes(part));
    const auto end = std::ranges::find(part, '\0');
    text.append(part.begin(), end);
    if (end != part.end()) break;
  }
  return text;
}

ProvenanceFile::Entry ProvenanceFile::entryAt(std::uint32_t i) const {
  const Record record = recordAt(Values, i);
  ByteCursor cursor(record);
  Entry entry;
  entry.compound = cursor.take<std::int32_t>();
  entry.field = cursor.take<std::uint32_t>();
  entry.origin = cursor.take<std::uint32_t>();
  entry.kind = known(cursor.take<std::uint8_t>(), eKindDecided);
  entry.quality = known(cursor.take<std::uint8_t>(), eQualityDoubtful);
  cursor.skip(2);
  entry.uncertainty = cursor.take<std::uint32_t>();
  entry.note = cursor.take<std::uint32_t>();
  return entry;
}

void ProvenanceFile::fill(const Entry& entry, Provenance& provenance) const {
  provenance.kind = entry.kind;
  provenance.quality = entry.quality;
  provenance.uncertainty = textAt(entry.uncertainty);
  provenance.note = textAt(entry.note);
}

std::pair<std::string, Origin> ProvenanceFile::originAt(std::uint32_t number) const {
  std::pair<std::string, Origin> found;
  if (number == 0 || number > counts_[Origins]) return found;
  const Record record = recordAt(Origins, number - 1);
  ByteCursor cursor(record);
  auto& [key, origin] = found;
  for (auto* text : {&key, &origin.title, &origin.authors, &origin.licence, &origin.changes})
    *text = textAt(cursor.take<std::uint32_t>());
  if (const auto year = cursor.take<std::int32_t>(); year != kEmptyInteger) origin.year = year;
  return found;
}

}  // namespace qs::database
