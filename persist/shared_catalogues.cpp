#include "persist/shared_catalogues.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <mutex>
#include <utility>
#include <vector>

#include "com/error.h"
#include "persist/file_watch.h"
#include "platform/per_thread.h"
#include "platform/system_reason.h"

namespace qs::database {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kDirectoryLimit = 1024;  // bytes of 8-bit text

void checkDirectory(WideView directory) {
  if (directory.empty()) fail(E_FAIL, {"the path of the database is empty"});
  if (directory.find(OLECHAR{}) != directory.npos) fail(E_FAIL, {"the path of the database has a null character"});
  if (narrow(directory).size() > kDirectoryLimit)
    fail(E_FAIL, {"the path of the database is longer than ", kDirectoryLimit, " bytes"});
}

std::vector<std::byte> readWhole(const InputFile& file, WideView path) {
  if (file.stamp().size > kLargestIndexFile) fail(E_FAIL, {path, ": it is too large for an index file"});
  std::vector<std::byte> bytes(static_cast<std::size_t>(file.stamp().size));
  const auto got = file.readAt(0, bytes);
  if (!got) fail(E_FAIL, {path, ": ", systemReason().text});
  bytes.resize(*got);
  return bytes;
}

// A catalogue with what tells whether it still holds.
struct Reading {
  Clock::time_point begin;
  FileWatch watch;
  FilePath indexPath;
  Catalogue catalogue;

  bool holds() const {
    const auto stamp = stampOf(indexPath);
    return stamp && watch.holds(*stamp);
  }
};

// The index file of a directory and its latest reading.
class Index {
 public:
  explicit Index(WideView directory) : directory_(directory) {}

  const WideString& directory() const { return directory_; }

  // The reading that holds; null when the file cannot be opened.
  std::shared_ptr<const Reading> reading() {
    const auto asked = Clock::now();
    const std::lock_guard lock(mutex_);
    const auto begin = Clock::now();
    // What another thread has read since is as new as what this one would read.
    if (latest_ && latest_->begin > asked) return latest_;

    const WideString name = joinPath(directory_, widen(kIndexFile));
    FilePath path = name;
    const auto file = InputFile::open(path);
    if (file && latest_ && latest_->watch.holds(file->stamp())) return latest_;
    if (!file) because(E_FAIL, {name, ": ", systemReason().text});
    latest_.reset();
    if (!file) return nullptr;
    watch_.beforeReading(file->stamp());
    latest_.reset(new Reading{begin, watch_, std::move(path), Catalogue(readWhole(*file, name), directory_)});
    return latest_;
  }

 private:
  const WideString directory_;
  std::mutex mutex_;
  FileWatch watch_;
  std::shared_ptr<const Reading> latest_;
};

// The indexes of the directories that were asked for last, the latest first. It exists only while it is used, and has
// no destructor of static storage: a host may release its objects after those have run.
using Indexes = std::array<std::shared_ptr<Index>, 8>;
std::mutex indexesMutex;
constinit Indexes* indexes = nullptr;
constinit std::atomic<long> uses = 0;

std::shared_ptr<Index> indexOf(WideView directory) {
  const std::lock_guard lock(indexesMutex);
  if (uses == 0) return std::make_shared<Index>(directory);
  if (!indexes) indexes = new Indexes;
  auto found =
      std::ranges::find_if(*indexes, [&](const auto& index) { return index && index->directory() == directory; });
  if (found == indexes->end()) *--found = std::make_shared<Index>(directory);
  std::rotate(indexes->begin(), found, found + 1);
  return indexes->front();
}

// A directory that a thread has opened, and the reading that it found.
struct Opened {
  WideString directory;
  std::weak_ptr<const Reading> reading;
};

}  // namespace

std::shared_ptr<const Catalogue> openCatalogue(WideView directory) {
  static PerThread<std::array<Opened, 4>> threads;
  auto& opened = threads.get();  // the last used first
  auto found = std::ranges::find(opened, directory, &Opened::directory);
  if (found == opened.end() || directory.empty()) {
    checkDirectory(directory);
    found = opened.end() - 1;
    *found = {WideString(directory), {}};
  }
  std::rotate(opened.begin(), found, found + 1);
  auto reading = opened.front().reading.lock();
  if (!reading || !reading->holds()) opened.front().reading = reading = indexOf(directory)->reading();
  if (!reading) return nullptr;
  return {reading, &reading->catalogue};
}

CatalogueUse::CatalogueUse() noexcept { ++uses; }

CatalogueUse::~CatalogueUse() {
  if (--uses > 0) return;
  const std::lock_guard lock(indexesMutex);
  if (uses == 0) delete std::exchange(indexes, nullptr);
}

}  // namespace qs::database
