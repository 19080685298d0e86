#include "persist/shared_catalogues.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <thread>

#include "com/error.h"
#include "persist/database_record.h"
#include "persist/file_watch.h"
#include "platform/file_faults.h"
#include "tests/support/database_builder.h"

namespace qs::database {
namespace {

using namespace qs::test;
using namespace std::chrono_literals;
using testing::IsEmpty;

Bytes oneField(std::string_view name) { return indexFile({fieldDefinition(name, 8, "Double")}); }

void setAge(const TemporaryDirectory& directory, std::chrono::seconds age) {
  std::filesystem::last_write_time(directory.path() / kIndexFile, std::filesystem::file_time_type::clock::now() - age);
}

WideString fieldNameIn(const TemporaryDirectory& directory) {
  return openCatalogue(directory.name())->fields().at(0).name;
}

HRESULT opening(WideView directory) {
  return guarded([&] { return openDatabase(directory), S_OK; });
}

// How often index files are read while it exists.
class Readings {
 public:
  Readings() {
    count_ = 0;
    setFileFault([](FileOperation operation) { return count_ += operation == FileOperation::Read, 0; });
  }
  Readings(const Readings&) = delete;
  Readings& operator=(const Readings&) = delete;
  ~Readings() { setFileFault(nullptr); }

  int count() const { return count_; }

 private:
  static inline std::atomic<int> count_;
};

TEST(SharedCatalogues, OpensADirectoryOrFails) {
  const TemporaryDirectory directory;
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "no index file";
  EXPECT_EQ(opening({}), E_FAIL);
  directory.write(kIndexFile, header(2.0, -78, 1, 1).zerosTo(78));
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "not to be positioned";
  directory.write(kIndexFile, Bytes());
  EXPECT_THAT(openCatalogue(directory.name())->fields(), IsEmpty());

  // Up to the NUL the path is that of a readable file.
  EXPECT_EQ(opening((directory.path() / kIndexFile).string<OLECHAR>() + OLECHAR{} + WideString(3, u'x')), E_FAIL);
  WideString longest = directory.name() + WideString(narrow(directory.name()).size() % 2, u'/');
  while (narrow(longest).size() < 1024) longest.append({u'/', u'.'});
  EXPECT_EQ(opening(longest), S_OK);
  EXPECT_EQ(opening(longest + WideString(1, u'/')), E_FAIL);

  directory.remove(kIndexFile);
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "removed again";
  std::filesystem::create_directory(directory.path() / kIndexFile);
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "a directory of that name";
}

TEST(SharedCatalogues, ReadsAFileAgainWhenItWasRewrittenOrReplaced) {
  const CatalogueUse use;
  const TemporaryDirectory directory;
  // In place and of the same length, at once: the file's time may not show it.
  for (const char* name : {"AA", "BB", "CC", "DD"}) {
    directory.write(kIndexFile, oneField(name));
    EXPECT_EQ(fieldNameIn(directory), wide(name));
    std::thread([&] { EXPECT_EQ(fieldNameIn(directory), wide(name)); }).join();
  }
  std::this_thread::sleep_for(50ms);
  const auto settled = openCatalogue(directory.name());
  EXPECT_EQ(openCatalogue(directory.name()), settled);

  // Another file of the same length and time takes its place.
  const auto modified = std::filesystem::last_write_time(directory.path() / kIndexFile);
  directory.write("new", oneField("FF"));
  std::filesystem::last_write_time(directory.path() / "new", modified);
  std::filesystem::rename(directory.path() / "new", directory.path() / kIndexFile);
  EXPECT_EQ(fieldNameIn(directory), wide("FF"));
  EXPECT_EQ(settled->fields().at(0).name, wide("DD")) << "whoever keeps a catalogue keeps it";
}

TEST(SharedCatalogues, TrustsAReadingWhenALaterWritingMustChangeTheStamp) {
  const auto now =
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
  const auto second = std::chrono::nanoseconds(1s).count();
  const struct {
    std::int64_t modified;
    bool atOnce, seen;
  } cases[] = {{now - 3 * second, true, true},
               {now - second / 2, false, true},
               {now + 3600 * second + 1, false, true},
               {(now / second + 3600) * second, false, false}};  // whole seconds: perhaps the file system has no others
  for (const auto& [modified, atOnce, seen] : cases) {
    const FileStamp stamp{100, modified, 7};
    FileWatch watch;
    watch.beforeReading(stamp);
    EXPECT_EQ(watch.holds(stamp), atOnce) << modified - now;
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(watch.holds(stamp), atOnce) << "another writing may have kept the stamp";
    watch.beforeReading(stamp);
    EXPECT_EQ(watch.holds(stamp), seen) << modified - now;
    for (const FileStamp& other :
         {FileStamp{101, modified, 7}, FileStamp{100, modified + 1, 7}, FileStamp{100, modified, 8}})
      EXPECT_FALSE(watch.holds(other));
  }
}

TEST(SharedCatalogues, ThreadsShareWhatOneOfThemHasRead) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, oneField("AA"));
  setAge(directory, 1h);
  std::weak_ptr<const Catalogue> last;
  {
    const CatalogueUse use;
    const Readings readings;
    const auto first = openCatalogue(directory.name());
    EXPECT_EQ(openCatalogue(directory.name()), first);
    // All find the file replaced, and all but one wait for that one.
    directory.write(kIndexFile, oneField("BB"));
    setAge(directory, 2h);
    std::array<std::thread, 8> threads;
    std::array<std::shared_ptr<const Catalogue>, threads.size()> found;
    for (std::size_t i = 0; i < threads.size(); ++i)
      threads[i] = std::thread([&, i] { found[i] = openCatalogue(directory.name()); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(readings.count(), 2);
    for (const auto& catalogue : found) EXPECT_EQ(catalogue, openCatalogue(directory.name()));
    EXPECT_EQ(found[0]->fields().at(0).name, wide("BB"));
    last = found[0];
  }
  EXPECT_TRUE(last.expired()) << "goes with the last object";
  EXPECT_EQ(fieldNameIn(directory), wide("BB"));
}

TEST(SharedCatalogues, StayForTheLastEightDirectories) {
  const CatalogueUse use;
  const std::array<TemporaryDirectory, 9> directories;
  const Readings readings;
  const auto open = [&](std::size_t i) { openCatalogue(directories[i].name()); };
  for (std::size_t i = 0; i < directories.size(); ++i) {
    directories[i].write(kIndexFile, oneField("MW"));
    setAge(directories[i], 1h);
    open(i);
  }
  for (const auto& [directory, count] : {std::pair{1u, 9}, {0u, 10}, {1u, 10}, {2u, 11}}) {
    open(directory);
    EXPECT_EQ(readings.count(), count) << directory;
  }
}

}  // namespace
}  // namespace qs::database
