// Compounds in memory with, for every value, where it comes from: what sources, imports and databases are read into,
// and what is checked, built, exported and shown.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "persist/database_writer.h"

namespace qs::bank {

// A publication, or another origin of values.
struct Origin {
  std::string title, authors, licence;
  std::string changes;  // to the values
  std::optional<int> year;

  bool operator==(const Origin&) const = default;
};

enum class ValueKind { NotKnown, Measured, Fitted, Estimated, Derived, Decided };
enum class Quality { NotKnown, Good, Usable, Doubtful };

// Where a value comes from.
struct Provenance {
  std::string origin;  // a key of Source::origins; empty where it is not known
  ValueKind kind = ValueKind::NotKnown;
  Quality quality = Quality::NotKnown;
  std::string uncertainty;  // as the origin states it, such as "1 %"; empty where it does not
  std::string note;
  int line = 0;  // of the file; 0 where there are no lines
};

struct Compound {
  database::CompoundData data;  // in the units of the key table
  std::map<Key, Provenance> provenance;
  int line = 0;
};

// A finding that is known and accepted.
struct Waiver {
  std::string rule;
  LONG compound = 0;  // its number
  std::string field;  // a key, or the name of an identity member
  std::string reason;
  int line = 0;
};

struct Source {
  std::filesystem::path file;  // or the directory of a database
  std::string description;
  std::map<std::string, Origin> origins;
  std::map<std::string, std::string> identityOrigins;  // by identity member
  std::vector<Compound> compounds;
  std::vector<Waiver> waivers;
};

// The compounds without what is known of their values.
std::vector<database::CompoundData> compoundsOf(Source source);

}  // namespace qs::bank
