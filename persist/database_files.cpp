#include "persist/database_files.h"

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "persist/database_catalogue.h"
#include "platform/input_file.h"
#include "platform/output_file.h"

namespace qs::database {
namespace {

using std::filesystem::path;

std::runtime_error fileError(const path& file, std::string_view what) {
  const std::u8string text = file.u8string();
  return std::runtime_error(std::string(text.begin(), text.end()).append(": ").append(what));
}

bool isThere(const path& file) {
  std::error_code ignored;
  return std::filesystem::exists(file, ignored);
}

// A file of the database and its names while it is replaced.
struct Target {
  Target(const path& directory, std::string_view name)
      : present(directory / name),
        made(directory / (std::string(name) + ".new")),
        old(directory / (std::string(name) + ".old")) {}

  void write(std::span<const std::byte> content) const {
    if (!writeFile(made, content)) throw fileError(present, "cannot be written");
  }

  void replace() const {
    std::error_code ignored;
    if ((std::filesystem::is_regular_file(present, ignored) && !setAside(present, old)) || !renameFile(made, present))
      throw fileError(present, "cannot be replaced");
  }

  // Puts back what was set aside, or removes it when its place is taken.
  bool restore() const {
    if (!isThere(old)) return true;
    return isThere(present) ? removeFile(old) : renameFile(old, present);
  }

  // Gives the new file its first name again.
  bool withdraw() const { return renameFile(present, made); }

  const path present, made, old;
};

// The build that a file belongs to by its header.
std::optional<std::uint64_t> buildOf(const path& name) {
  const auto file = InputFile::open(name.string<OLECHAR>());
  std::array<std::byte, kHeaderLength> bytes;
  const auto got = file ? file->readAt(0, bytes) : std::nullopt;
  return got ? readHeader(std::span(bytes).first(*got)).build : std::nullopt;
}

// Replaces the data file, then the provenance file, then the index file: from the first to the last, readers see two
// builds. The new files that are not renamed yet show how far it came:
//   purecmp1.dat.new    no new file is in place; what was set aside is to be put back
//   purecmp1.idx.new    and not the data file: that is in place, the others are to follow
//   neither             all are in place; what was set aside is not needed any more
class Rebuild {
 public:
  // Finishes a killed rebuild or takes it back.
  explicit Rebuild(const path& directory)
      : data_(directory, kDataFile), provenance_(directory, kProvenanceFile), index_(directory, kIndexFile) {
    if (!isThere(data_.made) && isThere(index_.made)) {
      const auto build = buildOf(index_.made);
      if (build && build == buildOf(data_.present)) {
        if (isThere(provenance_.made)) provenance_.replace();
        index_.replace();
      }
    }
    if (!tidy()) throw fileError(data_.present, "what an earlier build left beside it cannot be removed");
  }
  Rebuild(const Rebuild&) = delete;
  Rebuild& operator=(const Rebuild&) = delete;
  // Takes back what did not succeed. The new data file gets its first name again, so that a build which finds this
  // half done takes it back too.
  ~Rebuild() {
    const bool isHalfDone = dataIsNew_ && !indexIsNew_;
    if (!isHalfDone || (index_.restore() && (!provenanceIsNew_ || provenance_.withdraw()) && data_.withdraw())) tidy();
  }

  void write(const DatabaseFiles& files) const {
    data_.write(files.data);
    provenance_.write(files.provenance);
    index_.write(files.index);
  }

  void replaceFiles() {
    data_.replace();
    dataIsNew_ = true;
    provenance_.replace();
    provenanceIsNew_ = true;
    index_.replace();
    indexIsNew_ = true;
  }

 private:
  // Leaves the files alone that have their names, in the order that keeps the table above true.
  bool tidy() const {
    return index_.restore() && provenance_.restore() && data_.restore() && removeFile(index_.made) &&
           removeFile(provenance_.made) && removeFile(data_.made);
  }

  const Target data_, provenance_, index_;
  bool dataIsNew_ = false;
  bool provenanceIsNew_ = false;
  bool indexIsNew_ = false;
};

}  // namespace

bool hasDatabase(const path& directory) {
  const Target data(directory, kDataFile), index(directory, kIndexFile);
  return isThere(data.present) || isThere(data.old) || isThere(index.present) || isThere(index.old);
}

void saveDatabase(const DatabaseFiles& files, const path& directory) {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (!std::filesystem::is_directory(directory, error))
    throw fileError(directory, "is no directory and cannot become one");
  const auto lock = DirectoryLock::take(directory);
  if (!lock) throw fileError(directory, "another build is writing there");
  Rebuild rebuild(directory);
  rebuild.write(files);
  rebuild.replaceFiles();
  lock->sync();
}

}  // namespace qs::database
