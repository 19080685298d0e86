#include "persist/database_catalogue.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <random>
#include <thread>

#include "com/error.h"
#include "persist/database_record.h"
#include "tests/support/database_builder.h"

namespace qs::database {
namespace {

using namespace qs::test;
using testing::ElementsAre;
using testing::IsEmpty;

std::string numbered(std::string_view text, std::size_t number) {
  return std::string(text).append(std::to_string(number));
}

// The result code that a call raises, S_OK when it raises nothing.
template <class Call>
HRESULT raisedBy(Call&& call) {
  return guarded([&] {
    call();
    return S_OK;
  });
}

std::vector<WideString> synonymTexts(const Catalogue& catalogue, LONG compound) {
  std::vector<WideString> texts;
  for (const Synonym& synonym : catalogue.synonymsOf(compound)) texts.push_back(catalogue.synonymText(synonym));
  return texts;
}

TEST(DatabaseCatalogue, FieldKindsComparedAsPrefixesDecideOffsets) {
  const struct {
    std::string_view kindText;
    std::int32_t size;
    FieldKind kind;
    std::uint64_t bytes;
  } cases[] = {{"Double", 8, FieldKind::Double, 8},
               {"Doubles", 8, FieldKind::Double, 8},
               {"EquationGroup", 0, FieldKind::Equation, 60},
               {"Byte", 1, FieldKind::Byte, 1},
               {"String", 30, FieldKind::String, 30},
               {"Long Integer", 4, FieldKind::LongInteger, 4},
               {"Short Integer", 2, FieldKind::ShortInteger, 2},
               {"Groups of UNIFAC ...", 3, FieldKind::Group, 12},
               {"Long", 4, FieldKind::Other, 4},
               {"String", -5, FieldKind::String, 0},
               {"Group", 0x7FFFFFFF, FieldKind::Group, 0x1FFFFFFFC},
               {"Equation", 0x7FFFFFFF, FieldKind::Equation, 0x400000034},
               {"Double", 8, FieldKind::Double, 8}};
  std::vector<Bytes> definitions;
  for (const auto& c : cases) definitions.push_back(fieldDefinition(c.kindText, c.size, c.kindText));
  const std::string fullName(50, 'x'), fullIdentifier(20, 'y');
  const Catalogue catalogue(indexFile(definitions, {indexRecord(7, 3, fullName, fullIdentifier)}).get());
  EXPECT_EQ(catalogue.indexRecord(0).name, wide(fullName));
  EXPECT_EQ(catalogue.indexRecord(0).identifier, wide(fullIdentifier));

  ASSERT_EQ(catalogue.fields().size(), std::size(cases));
  std::uint64_t offset = 0;
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].kindText);
    const Field& field = catalogue.fields()[i];
    EXPECT_EQ(field.index, i);
    EXPECT_EQ(field.name, wide(cases[i].kindText));
    EXPECT_EQ(field.kind, cases[i].kind);
    EXPECT_EQ(field.size, cases[i].size);
    EXPECT_EQ(field.offset, offset);
    offset += cases[i].bytes;
  }
  EXPECT_EQ(catalogue.recordBytes(), offset);
}

TEST(DatabaseCatalogue, FirstIndexRecordOfANumberWins) {
  const Catalogue catalogue(indexFile({}, {indexRecord(19, 4), indexRecord(3, 1), indexRecord(19, 5),
                                           indexRecord(-7, 0), indexRecord(3, 9), indexRecord(0x7FFFFFFF, -2)})
                                .get());
  for (const auto& [compound, record] : {std::pair{19, 4}, {3, 1}, {-7, 0}, {0x7FFFFFFF, -2}}) {
    EXPECT_EQ(catalogue.dataRecordOf(compound), record);
  }
  for (const LONG absent : {0, 4, 18, 20, -8}) EXPECT_EQ(catalogue.dataRecordOf(absent), std::nullopt) << absent;
  ASSERT_EQ(catalogue.indexRecordCount(), 6u);
  EXPECT_EQ(catalogue.indexRecord(2).dataRecord, 5);
}

// The scan of the synonym section for one compound, as it is defined.
std::vector<WideString> scanned(const std::vector<LONG>& numbers, LONG compound) {
  std::vector<WideString> found;
  LONG last = -1;
  for (std::size_t i = 0; i < numbers.size() && last <= compound; ++i) {
    last = numbers[i];
    if (last == compound) found.push_back(wide(numbered("synonym ", i)));
  }
  return found;
}

TEST(DatabaseCatalogue, SynonymsAreThoseThatTheScanMeets) {
  std::vector<std::vector<LONG>> sections = {
      {}, {5}, {1, 1, 2, 5, 5, 5, 9}, {5, 9, 5}, {9, 5}, {-1, 0, 0}, {-3, -1, -3, 4}, {2, -5, 2, 1, 3, 2},
  };
  std::mt19937 random(4711);
  for (int i = 0; i < 300; ++i) {
    std::vector<LONG>& section = sections.emplace_back(random() % 12);
    for (LONG& number : section) number = static_cast<LONG>(random() % 9) - 3;
  }
  for (const auto& section : sections) {
    SCOPED_TRACE(testing::PrintToString(section));
    std::vector<Bytes> records;
    for (const LONG number : section) records.push_back(synonymRecord(number, numbered("synonym ", records.size())));
    const Catalogue catalogue(indexFile({}, {indexRecord(1, 0)}, records).get());
    for (LONG compound = -4; compound < 11; ++compound) {
      EXPECT_EQ(synonymTexts(catalogue, compound), scanned(section, compound)) << compound;
    }
  }
}

TEST(DatabaseCatalogue, SectionsStartAtMultiplesOfTheRecordLength) {
  const struct {
    std::size_t recordLength;
    std::string synonym;
    HRESULT result;
    std::string expected;
  } cases[] = {{100, "dihydrogen oxide  ", S_OK, "dihydrogen oxide  "},
               {100, std::string("ice\0water", 9), S_OK, "ice"},
               {1027, std::string(1023, 'b'), S_OK, std::string(1023, 'b')},
               {1028, std::string(1024, 'b'), E_FAIL, ""},
               {9000, std::string(8996, ' '), E_FAIL, ""},
               {9000, "short", S_OK, "short"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.recordLength);
    Bytes file = header(1.0, static_cast<std::int64_t>(c.recordLength), 1, 1).zerosTo(c.recordLength);
    file.append(fieldDefinition("MW", 8, "Double")).zerosTo(2 * c.recordLength);
    file.append(indexRecord(5, 20)).zerosTo(3 * c.recordLength);
    const Catalogue catalogue(file.append(synonymRecord(5, c.synonym, c.recordLength)).get());
    EXPECT_EQ(catalogue.fields().at(0).name, wide("MW"));
    EXPECT_EQ(catalogue.dataRecordOf(5), 20);
    const auto synonyms = catalogue.synonymsOf(5);
    ASSERT_EQ(synonyms.size(), 1u);
    WideString text;
    EXPECT_EQ(raisedBy([&] { text = catalogue.synonymText(synonyms[0]); }), c.result);
    EXPECT_EQ(text, wide(c.expected));
  }
}

TEST(DatabaseCatalogue, HostileHeaders) {
  constexpr std::int32_t kMost = 0x7FFFFFFF;
  constexpr std::int32_t kLeast = -kMost - 1;
  // The file goes on with three field definitions, two index records and a synonym.
  const struct {
    std::int32_t recordLength, fields, compounds;
    HRESULT result;
    std::size_t fieldsFound, compoundsFound;
  } cases[] = {
      {78, 3, 2, S_OK, 3, 2},        {78, 3, 0, S_OK, 3, 0},
      {78, 3, -1, S_OK, 3, 0},       {78, 3, kLeast, S_OK, 3, 0},
      {78, 3, kMost, S_OK, 3, 3},    {78, kMost, kMost, S_OK, 6, 0},
      {78, 0, 1, S_OK, 0, 1},        {78, -1, 2, E_FAIL, 0, 0},
      {78, kLeast, 2, E_FAIL, 0, 0}, {0, 3, 2, E_FAIL, 0, 0},
      {-78, 3, 2, E_FAIL, 0, 0},     {kLeast, kLeast, kLeast, E_FAIL, 0, 0},
      {kMost, 3, 2, S_OK, 0, 0},     {kMost, kMost, kMost, S_OK, 0, 0},
      {1, 0, kMost, S_OK, 0, 7},     {3, kMost, kMost, S_OK, 6, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.recordLength << ", " << c.fields << ", " << c.compounds);
    Bytes file = header(2.0, c.recordLength, c.fields, c.compounds).zerosTo(78);
    for (int i = 0; i < 3; ++i) file.append(fieldDefinition("MW", 8, "Double"));
    file.append(indexRecord(1, 0)).append(indexRecord(2, 1)).append(synonymRecord(2, "two"));
    EXPECT_EQ(raisedBy([&] {
                const Catalogue catalogue(file.get());
                EXPECT_EQ(catalogue.fields().size(), c.fieldsFound);
                EXPECT_EQ(catalogue.indexRecordCount(), c.compoundsFound);
                for (std::size_t i = 0; i < catalogue.indexRecordCount(); ++i) catalogue.indexRecord(i);
                for (const LONG compound : {0, 1, 2}) synonymTexts(catalogue, compound);
              }),
              c.result);
  }
}

TEST(DatabaseCatalogue, TruncatedAtEveryOffset) {
  const Bytes file = indexFile({fieldDefinition("MW", 8, "Double"), fieldDefinition("TC", 8, "Double")},
                               {indexRecord(1, 10, "one"), indexRecord(2, 20, "two")},
                               {synonymRecord(1, "uno"), synonymRecord(2, "due")});
  ASSERT_EQ(file.size(), 7u * 78);
  for (std::size_t size = 0; size <= file.size(); ++size) {
    SCOPED_TRACE(size);
    const Catalogue catalogue(file.first(size));
    EXPECT_EQ(catalogue.fields().size(), (size >= 156) + (size >= 234u));
    EXPECT_EQ(catalogue.dataRecordOf(1), size >= 242 ? std::optional<LONG>(10) : std::nullopt);
    EXPECT_EQ(catalogue.dataRecordOf(2), size >= 320 ? std::optional<LONG>(20) : std::nullopt);
    ASSERT_EQ(catalogue.indexRecordCount(), (size >= 242) + (size >= 320u));
    if (size >= 320) {
      EXPECT_EQ(catalogue.indexRecord(1).name, wide(std::string_view("two").substr(0, size - 320)));
    }
    const std::string_view second = size > 472 ? std::string_view("due").substr(0, size - 472) : "";
    EXPECT_EQ(synonymTexts(catalogue, 1).size(), size > 394 ? 1u : 0u);
    EXPECT_EQ(synonymTexts(catalogue, 2),
              second.empty() ? std::vector<WideString>() : std::vector<WideString>{wide(second)});
  }
}

Bytes oneField(std::string_view name) { return indexFile({fieldDefinition(name, 8, "Double")}); }

WideString fieldNameIn(const TemporaryDirectory& directory) {
  return openCatalogue(directory.name())->fields().at(0).name;
}

HRESULT opening(WideView directory) {
  return raisedBy([&] { openDatabase(directory); });
}

TEST(DatabaseCatalogue, OpensADirectoryOrFails) {
  const TemporaryDirectory directory;
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "no index file";
  EXPECT_EQ(opening({}), E_FAIL);
  directory.write(kIndexFile, header(2.0, -78, 1, 1).zerosTo(78));
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "not to be positioned";
  directory.write(kIndexFile, Bytes());
  EXPECT_THAT(openCatalogue(directory.name())->fields(), IsEmpty());

  // Up to the NUL the path is that of a readable file.
  const WideString indexPath = (directory.path() / kIndexFile).string<OLECHAR>();
  EXPECT_EQ(opening(indexPath + OLECHAR{} + WideString(3, u'x')), E_FAIL);
  WideString longest = directory.name() + WideString(narrow(directory.name()).size() % 2, u'/');
  while (narrow(longest).size() < 1024) longest.append({u'/', u'.'});
  EXPECT_EQ(opening(longest), S_OK);
  EXPECT_EQ(opening(longest + WideString(1, u'/')), E_FAIL);

  directory.remove(kIndexFile);
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "removed again";
  std::filesystem::create_directory(directory.path() / kIndexFile);
  EXPECT_EQ(opening(directory.name()), E_FAIL) << "a directory of that name";
}

TEST(DatabaseCatalogue, ReadsAFileAgainWhenItWasRewrittenOrReplaced) {
  const TemporaryDirectory directory;
  // In place and of the same length, at once: the file's time may not show it.
  for (const char* name : {"AA", "BB", "CC", "DD"}) {
    directory.write(kIndexFile, oneField(name));
    EXPECT_EQ(fieldNameIn(directory), wide(name));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const auto settled = openCatalogue(directory.name());
  EXPECT_EQ(openCatalogue(directory.name()), settled);

  directory.write(kIndexFile, oneField("EE"));
  EXPECT_EQ(fieldNameIn(directory), wide("EE"));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(fieldNameIn(directory), wide("EE"));

  // Another file of the same length and time takes its place.
  const auto modified = std::filesystem::last_write_time(directory.path() / kIndexFile);
  directory.write("new", oneField("FF"));
  std::filesystem::last_write_time(directory.path() / "new", modified);
  std::filesystem::rename(directory.path() / "new", directory.path() / kIndexFile);
  EXPECT_EQ(fieldNameIn(directory), wide("FF"));
  EXPECT_EQ(settled->fields().at(0).name, wide("DD")) << "whoever keeps a catalogue keeps it";
}

TEST(DatabaseCatalogue, TrustsAReadingOnceItsStampWasSeenForLongEnough) {
  const FileStamp first{100, 5, 7};
  FileWatch watch;
  watch.beforeReading(first);
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_FALSE(watch.holds(first)) << "another writing may have kept the stamp";
  watch.beforeReading(first);
  EXPECT_TRUE(watch.holds(first));
  for (const FileStamp& other : {FileStamp{101, 5, 7}, FileStamp{100, 6, 7}, FileStamp{100, 5, 8}})
    EXPECT_FALSE(watch.holds(other));
}

TEST(DatabaseCatalogue, EachThreadKeepsTheLastFourDirectories) {
  const std::array<TemporaryDirectory, 5> directories;
  std::vector<std::shared_ptr<const Catalogue>> catalogues;
  for (const auto& directory : directories) {
    directory.write(kIndexFile, oneField("MW"));
    // Opened twice, with the resolution of file times between, a file is read for the last time.
    openCatalogue(directory.name());
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    catalogues.push_back(openCatalogue(directory.name()));
  }
  const auto kept = [&](std::size_t i) { return openCatalogue(directories[i].name()) == catalogues[i]; };
  for (const std::size_t i : {2u, 1u, 4u, 3u, 1u}) EXPECT_TRUE(kept(i)) << i;
  EXPECT_FALSE(kept(0)) << "given up for the fifth";
  EXPECT_TRUE(kept(1)) << "used since";
  EXPECT_FALSE(kept(2)) << "not used for the longest time";
  std::thread([&] { EXPECT_FALSE(kept(1)) << "another thread's own"; }).join();
}

}  // namespace
}  // namespace qs::database
