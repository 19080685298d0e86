// Puts the files of a pure-component database into a directory so that readers find the old database or the new
// one; docs/database.md describes the steps. The server itself never writes.
#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

namespace qs::database {

struct DatabaseFiles {
  std::vector<std::byte> index;       // purecmp1.idx
  std::vector<std::byte> data;        // purecmp1.dat
  std::vector<std::byte> provenance;  // purecmp1.src
};

// Whether a directory has a database, or what a killed build left of one.
bool hasDatabase(const std::filesystem::path& directory);

// Puts all files into a directory, which is made when it is not there, in place of those that it has; first it puts
// right what a killed call has left. Throws std::runtime_error, naming the file; the directory's files are then as
// they were, or, when they cannot be put back, as a killed call leaves them.
void saveDatabase(const DatabaseFiles& files, const std::filesystem::path& directory);

}  // namespace qs::database
