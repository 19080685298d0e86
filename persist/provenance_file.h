// The third file of a database, purecmp1.src: where its values come from. docs/database.md has the layout. Text is
// UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/input_file.h"
#include "props/key_table.h"
#include "props/value_source.h"

namespace qs::database {

// A publication, or another origin of values.
struct Origin {
  std::string title, authors, licence;
  std::string changes;  // to the values
  std::optional<int> year;

  bool operator==(const Origin&) const = default;
};

// Where a value comes from.
struct Provenance {
  std::string origin;  // a key of the origins; empty where it is not known
  tagValueKindEnum kind = eKindNotKnown;
  tagValueQualityEnum quality = eQualityNotKnown;
  std::string uncertainty;  // as the origin states it, such as "1 %"; empty where it does not
  std::string note;

  bool operator==(const Provenance&) const = default;
};

// The same as interfaces have it, with the origin of the provenance's key.
ValueSource sourceOf(const Provenance& provenance, const Origin& origin);

// The key from which readers of a database derive another where the compound has no entry of its own for that.
constexpr std::optional<Key> derivedFrom(Key key) {
  return key == Key::IGCP || key == Key::IGS ? std::optional(Key::IGH) : std::nullopt;
}

// A finding that is known and accepted.
struct Waiver {
  std::string rule;
  LONG compound = 0;  // its number
  std::string field;  // a key, or the name of an identity member
  std::string reason;
};

// What a database holds beside its values.
struct Annotations {
  struct Value {
    LONG compound;
    std::string field;
    Provenance provenance;
  };

  std::string description;
  std::map<std::string, Origin> origins;
  std::map<std::string, std::string> identityOrigins;  // by identity member
  std::vector<Waiver> waivers;
  std::vector<Value> values;  // in any order
};

// The bytes of the file for a build. Throws std::invalid_argument for a text with a NUL, an origin that is not among
// the origins, the year -32767, and more text than the file can number.
std::vector<std::byte> encodeProvenance(const Annotations& annotations, std::uint64_t build);

// Reads the file. No value in it is trusted, and none makes an allocation that the file's length does not justify. A
// text that begins beyond the end of the file is empty, a number that has no meaning reads as "not known". Throws
// CQSCOMError(E_FAIL) where the system cannot read the file.
class ProvenanceFile {
 public:
  // Opens the file in a directory, which is given without a trailing separator. Nothing when it is not known where the
  // values of this build come from: without a file, or with one that is of another build or layout or is not whole.
  static std::optional<ProvenanceFile> open(WideView directory, std::uint64_t build);

  // Where a compound's value of a field comes from: S_OK, or S_FALSE when that is not known. `origin` is that of the
  // provenance's key. Reads the entries of a binary search and what is returned.
  HRESULT find(LONG compound, std::string_view field, Provenance& provenance, Origin& origin) const;

  // The same for what a compound has under a name, derived or not; with nothing known, where it is not.
  ValueSource sourceOf(LONG compound, WideView name) const;

  // All that the file holds.
  Annotations readAll();

 private:
  enum Section { Origins, IdentityOrigins, Waivers, Values, kSections };
  static constexpr std::size_t kLongestRecord = 24;
  using Record = std::array<std::byte, kLongestRecord>;
  struct Entry;

  ProvenanceFile(WideString path, InputFile file) : path_(std::move(path)), file_(std::move(file)) {}

  void readAt(std::uint64_t offset, std::span<std::byte> buffer) const;
  Record recordAt(Section section, std::uint32_t i) const;
  // As much of a text as is asked for.
  std::string textAt(std::uint32_t offset, std::size_t most = std::string::npos) const;
  Entry entryAt(std::uint32_t i) const;
  void fill(const Entry& entry, Provenance& provenance) const;  // but for the origin
  // With its key; both empty for a number that no origin has.
  std::pair<std::string, Origin> originAt(std::uint32_t number) const;

  WideString path_;
  InputFile file_;
  std::vector<std::byte> whole_;  // the content, where all of it has been asked for
  std::array<std::uint32_t, kSections> counts_{};
  std::array<std::uint64_t, kSections> offsets_{};
  std::uint64_t text_ = 0;  // where it begins
  std::uint32_t description_ = 0;
};

}  // namespace qs::database
