// Compounds in memory with, for every value, where it comes from: what sources, imports and databases are read into,
// and what is checked, built, exported and shown.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "persist/database_writer.h"

namespace qs::bank {

using database::Origin;

struct Provenance : database::Provenance {
  int line = 0;  // of the file; 0 where there are no lines
};

struct Compound {
  database::CompoundData data;  // in the units of the key table
  std::map<Key, Provenance> provenance;
  int line = 0;
};

struct Waiver : database::Waiver {
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

bool hasValue(const database::CompoundData& compound, Key key);

// The compounds without what is known of their values.
std::vector<database::CompoundData> compoundsOf(Source source);

// What a database keeps beside the compounds.
database::Annotations annotationsOf(const Source& source);

// The files of a database with all of this. Throws as database::encodeDatabase.
database::DatabaseFiles encode(Source source);

}  // namespace qs::bank
