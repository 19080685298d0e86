// Rebuilding a database that is read, with operations that fail and builds that are killed: readers find the old
// database or the new one, or fail, and never a mixture.
#include "persist/database_files.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <functional>
#include <optional>
#include <thread>

#include "persist/database_writer.h"
#include "platform/file_faults.h"
#include "platform/output_file.h"
#include "tests/support/compounds.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/record_log.h"

namespace qs::test {
namespace {

using database::DatabaseFiles;
using testing::AnyOf;
using testing::HasSubstr;

constexpr int kDiskFull = 28;  // on Linux; any error will do

// Lets a range of the file operations fail from now on.
class Faults {
 public:
  Faults(int first, int last, int code = kDiskFull) {
    count_ = 0, first_ = first, last_ = last, code_ = code;
    setFileFault([](FileOperation) {
      const int number = count_++;
      return number >= first_ && number <= last_ ? code_ : 0;
    });
  }
  Faults(const Faults&) = delete;
  Faults& operator=(const Faults&) = delete;
  ~Faults() { setFileFault(nullptr); }

  static bool reached() { return count_ > first_; }

 private:
  static inline int count_, first_, last_, code_;
};

constexpr Key kSameKeys[] = {Key::MW, Key::TC, Key::PC, Key::SRKVC};

// A database in which all tells its build and its compound. Every other build has other fields and other compounds.
DatabaseFiles build(int number, bool marked = true) {
  const bool odd = number % 2 != 0;
  std::vector<database::CompoundData> compounds;
  database::Annotations annotations;
  for (int compound = odd ? 1 : 4; compound <= (odd ? 30 : 20); ++compound) {
    const double value = 1000.0 * number + compound;
    auto& data = compounds.emplace_back();
    data.number = compound;
    data.name = "build " + std::to_string(number);
    data.synonyms.assign(odd ? 2 : 1, data.name);
    annotations.values.push_back({compound, "MW", {"", {}, {}, "", data.name}});
    for (const Key key : kSameKeys) data.constants[key] = value;
    if (odd) data.constants[Key::ACEN] = data.constants[Key::ZC] = value;
    if (odd) data.correlations[Key::VP] = {PropCurvePOLY2, {value, 0, 0}, 1, 2};
  }
  DatabaseFiles files = database::encodeDatabase(compounds, annotations);
  for (auto* file : {&files.index, &files.data}) {
    for (const int offset : {8, 30})
      if (!marked) std::fill_n(file->begin() + offset, 4, std::byte{});
  }
  return files;
}

const std::vector<std::string> kFileNames = {"purecmp1.dat", "purecmp1.idx", "purecmp1.src"};
constexpr int kFailed = 0, kMixture = -1;

class DatabaseRebuild : public CompoundTest {
 protected:
  // The build that a compound is read from.
  static int buildRead(const ComPtr<IBasicCompound>& compound, const TemporaryDirectory& directory, INT number) {
    const HRESULT result = query<ICompoundInitFromVelDB>(compound)->Init(Bstr(directory.name()).get(), number);
    if (result == E_FAIL) return kFailed;
    const double weight = propertyOf(compound, OLESTR("MW")).value;
    const int build = static_cast<int>(weight / 1000);
    for (const Key key : kSameKeys)
      if (propertyOf(compound, nameOf(key)) != PropertyReading{S_OK, 1000.0 * build + number}) return kMixture;
    const WideString name = wide("build " + std::to_string(build));
    BSTR last = nullptr;
    const INT synonyms = got(compound, &ICompoundID::get_NumberOfSynonymNames);
    query<ICompoundID>(compound)->get_SynonymName(build % 2, &last);
    const bool fits = got(compound, &ICompoundID::get_Name) == name && taken(last) == name && synonyms == 1 + build % 2;
    return result == S_OK && fits ? build : kMixture;
  }
  int buildIn(const TemporaryDirectory& directory) {
    const int first = buildRead(compound, directory, 4);
    return first == kFailed || first == buildRead(compound, directory, 20) ? first : kMixture;
  }

  // The same where the third file was saved with the others, and counts unless they have no mark.
  int savedIn(const TemporaryDirectory& directory) {
    const int number = buildIn(directory);
    if (number == kFailed) return number;
    const auto identifier = database::openDatabase(directory.name()).catalogue->build();
    if (!identifier) return number;
    const auto file = database::ProvenanceFile::open(directory.name(), *identifier);
    database::Provenance found;
    database::Origin origin;
    if (!file || file->find(4, "MW", found, origin) != S_OK) return kMixture;
    return found.note == "build " + std::to_string(number) ? number : kMixture;
  }

  // What may be in a directory before: nothing, or build 1 without or with marks.
  const std::optional<DatabaseFiles> olds[3] = {std::nullopt, build(1, false), build(1)};
  void expectNextBuild(const TemporaryDirectory& directory) {
    EXPECT_TRUE(saves(build(3), directory));
    EXPECT_EQ(namesIn(directory.path()), kFileNames);
    EXPECT_EQ(savedIn(directory), 3);
  }
  static bool saves(const DatabaseFiles& files, const TemporaryDirectory& directory) {
    try {
      database::saveDatabase(files, directory.path());
      return true;
    } catch (const std::runtime_error&) {
      return false;
    }
  }

  const ComPtr<IBasicCompound> compound = newCompound();
};

TEST_F(DatabaseRebuild, MakesTheDirectoryAndReplacesFiles) {
  const TemporaryDirectory temporary;
  const auto directory = temporary.path() / "new" / "directory";
  for (const int number : {1, 2}) database::saveDatabase(build(number), directory);
  EXPECT_EQ(readFile(directory / "purecmp1.idx").size(), build(2).index.size());
  EXPECT_EQ(namesIn(directory), kFileNames);
  EXPECT_THROW(database::saveDatabase(build(1), directory / "purecmp1.idx"), std::runtime_error);

  const auto lock = DirectoryLock::take(directory);
  EXPECT_THAT([&] { database::saveDatabase(build(3), directory); },
              testing::ThrowsMessage<std::runtime_error>(HasSubstr("another build")));
}

// Calls `attempt` for the first, second, ... file operation as long as it returns that it came so far.
void atEachOperation(const std::function<bool(int)>& attempt) {
  for (int operation = 0; attempt(operation) && !testing::Test::HasFailure(); ++operation) ASSERT_LT(operation, 100);
}

TEST_F(DatabaseRebuild, OneFailureLeavesTheOldDatabaseOrTheNewOne) {
  for (const auto& old : olds)
    atEachOperation([&](int failing) {
      const TemporaryDirectory directory;
      if (old) database::saveDatabase(*old, directory.path());
      const auto before = namesIn(directory.path());
      const bool saved = (Faults(failing, failing), saves(build(2), directory));
      EXPECT_TRUE(saved || namesIn(directory.path()) == before);
      EXPECT_EQ(savedIn(directory), saved ? 2 : old ? 1 : kFailed) << failing;
      expectNextBuild(directory);
      return Faults::reached();
    });
}

// To be killed and to see every further operation fail is the same for the files.
TEST_F(DatabaseRebuild, TheNextBuildFinishesAKilledOneOrTakesItBack) {
  for (const auto& old : olds)
    atEachOperation([&](int last) {
      const int before = old ? 1 : kFailed;
      const TemporaryDirectory directory;
      if (old) database::saveDatabase(*old, directory.path());
      Faults(last, INT_MAX), saves(build(2), directory);
      const bool killed = Faults::reached();
      EXPECT_THAT(savedIn(directory), AnyOf(before, 2, kFailed));
      // The next build, which is killed as well, gets further and further.
      int found = kFailed;
      for (int next = last % 3; next < 42; next += 3) {
        Faults(next, INT_MAX), saves(build(4), directory);
        found = savedIn(directory);
        EXPECT_THAT(found, AnyOf(before, 2, 4, kFailed)) << next;
      }
      EXPECT_EQ(found, 4) << last;
      expectNextBuild(directory);
      return killed;
    });
}

TEST_F(DatabaseRebuild, AFailedOperationOfAReadingIsNoWrongValue) {
  const TemporaryDirectory directory;
  database::saveDatabase(build(1), directory.path());
  const auto read = [&] {
    RecordLog log;
    const HRESULT result = guarded([&] {
      const auto opened = database::openDatabase(directory.name());
      return database::readRecord(opened, opened.catalogue->dataRecordOf(9).value(), log);
    });
    return std::pair(result, log.text());
  };
  const auto expected = read();
  ASSERT_THAT(expected.second, HasSubstr("TC=1009 "));
  // What the thread keeps of the files is not proven yet, then it is.
  for (const int pause : {0, 50}) {
    std::this_thread::sleep_for(std::chrono::milliseconds(pause));
    atEachOperation([&](int failing) {
      for (const int last : {failing, INT_MAX}) {
        const Faults faults(failing, last);
        EXPECT_THAT(read(), AnyOf(expected, std::pair(E_FAIL, std::string()))) << failing;
      }
      EXPECT_EQ(read(), expected) << failing;
      return Faults::reached();
    });
  }
}

// Signals interrupt system calls where there are signals.
TEST_F(DatabaseRebuild, InterruptedOperationsAreRepeated) {
  if (std::filesystem::path::preferred_separator != '/') return;
  atEachOperation([&](int interrupted) {
    const TemporaryDirectory directory;
    const Faults faults(interrupted, interrupted, EINTR);
    EXPECT_TRUE(saves(build(1), directory)) << interrupted;
    EXPECT_EQ(buildIn(directory), 1) << interrupted;
    return Faults::reached();
  });
}

TEST_F(DatabaseRebuild, FilesOfDifferentBuildsAreNotReadTogether) {
  const DatabaseFiles one = build(1), two = build(2), plain = build(1, false), plainTwo = build(2, false);
  const std::vector<std::byte> none;
  const std::tuple<const std::vector<std::byte>&, const std::vector<std::byte>&, int> cases[] = {
      {one.index, one.data, 1},       {plain.index, plain.data, 1},     {one.index, two.data, kFailed},
      {two.index, one.data, kFailed}, {plain.index, two.data, kFailed}, {two.index, plainTwo.data, kFailed},
      {none, one.data, kFailed},      {one.index, none, kFailed}};
  const TemporaryDirectory directory;
  const auto put = [&](const char* name, const std::vector<std::byte>& content) {
    std::filesystem::remove(directory.path() / name);
    if (!content.empty()) qs::writeFile(directory.path() / name, content);
  };
  for (int row = 0; const auto& [index, data, expected] : cases) {
    put("purecmp1.idx", index);
    put("purecmp1.dat", data);
    EXPECT_EQ(buildIn(directory), expected) << "row " << row++;
  }

  // The other file comes after the reader has looked for both, and before it gives up.
  static int opened;
  static std::function<void()> bringOther;
  for (const bool indexIsLate : {true, false}) {
    put("purecmp1.idx", indexIsLate ? one.index : two.index);
    put("purecmp1.dat", indexIsLate ? two.data : none);
    put("late", indexIsLate ? two.index : two.data);
    opened = 0;
    bringOther = [&] {
      if (indexIsLate) setAside(directory.path() / "purecmp1.idx", directory.path() / "old");
      renameFile(directory.path() / "late", directory.path() / (indexIsLate ? "purecmp1.idx" : "purecmp1.dat"));
    };
    setFileFault([](FileOperation operation) {
      if (operation == FileOperation::Open && ++opened == 4) {
        setFileFault(nullptr);
        bringOther();
      }
      return 0;
    });
    const database::Database database = database::openDatabase(directory.name());
    EXPECT_EQ(opened, 4);
    ASSERT_TRUE(database.data);
    EXPECT_EQ(database.data->header.build, database::readHeader(two.data).build);
  }
}

TEST_F(DatabaseRebuild, RacedByTwoReaders) {
  constexpr int kRebuilds = 100;
  const TemporaryDirectory directory;
  database::saveDatabase(build(1), directory.path());
  std::atomic<bool> done = false;
  std::atomic<int> reads = 0, failures = 0, mixtures = 0;
  const auto reader = [&](const ComPtr<IBasicCompound>& own, int latest) {
    for (INT number = 4; !done; number = number < 20 ? number + 1 : 4) {
      const int found = buildRead(own, directory, number);
      ++reads;
      failures += found == kFailed;
      mixtures += found != kFailed && found < latest;
      latest = std::max(found, latest);
    }
  };
  const auto first = newCompound(), second = newCompound();
  std::thread readers[] = {std::thread(reader, std::ref(first), 1), std::thread(reader, std::ref(second), 1)};
  for (int number = 2; number < 2 + kRebuilds; ++number) {
    EXPECT_TRUE(saves(build(number), directory)) << number;
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  done = true;
  for (std::thread& each : readers) each.join();
  EXPECT_EQ(buildIn(directory), 1 + kRebuilds);
  EXPECT_EQ(mixtures, 0);
  EXPECT_GT(reads, failures);
}

}  // namespace
}  // namespace qs::test
