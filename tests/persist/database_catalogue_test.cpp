#include "persist/database_catalogue.h"

#include <gmock/gmock.h>

#include <random>

#include "com/error.h"
#include "tests/support/database_builder.h"

namespace qs::database {
namespace {

using namespace qs::test;

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
  const std::tuple<std::string_view, std::int32_t, FieldKind, std::uint64_t> cases[] = {
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
      {"Equation", 0x7FFFFFFF, FieldKind::Equation, 0x400000034}};
  std::vector<Bytes> definitions;
  for (const auto& [text, size, kind, bytes] : cases) definitions.push_back(fieldDefinition(text, size, text));
  const std::string fullName(50, 'x'), fullIdentifier(20, 'y');
  const Catalogue catalogue(indexFile(definitions, {indexRecord(7, 3, fullName, fullIdentifier)}).get());
  EXPECT_EQ(catalogue.indexRecord(0).name, wide(fullName));
  EXPECT_EQ(catalogue.indexRecord(0).identifier, wide(fullIdentifier));

  std::uint64_t offset = 0;
  for (std::size_t i = 0; const auto& [text, size, kind, bytes] : cases) {
    const Field& field = catalogue.fields().at(i);
    EXPECT_EQ(std::tie(field.index, field.name, field.kind, field.size, field.offset),
              std::tuple(i++, wide(text), kind, size, offset));
    offset += bytes;
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
    if (last == compound) found.push_back(wide(std::to_string(i)));
  }
  return found;
}

TEST(DatabaseCatalogue, SynonymsAreThoseThatTheScanMeets) {
  std::mt19937 random(4711);
  for (int i = 0; i < 300; ++i) {
    std::vector<LONG> section(random() % 12);
    std::vector<Bytes> records;
    for (LONG& number : section) {
      number = static_cast<LONG>(random() % 9) - 3;
      records.push_back(synonymRecord(number, std::to_string(records.size())));
    }
    const Catalogue catalogue(indexFile({}, {indexRecord(1, 0)}, records).get());
    for (LONG compound = -4; compound < 7; ++compound)
      EXPECT_EQ(synonymTexts(catalogue, compound), scanned(section, compound)) << testing::PrintToString(section);
  }
}

TEST(DatabaseCatalogue, SectionsStartAtMultiplesOfTheRecordLength) {
  const struct {
    std::size_t recordLength;
    std::string synonym, expected;
  } cases[] = {{100, "dihydrogen oxide  ", "dihydrogen oxide  "},
               {100, std::string("ice\0water", 9), "ice"},
               {1027, std::string(1023, 'b'), std::string(1023, 'b')},
               {1028, std::string(1024, 'b'), "refused"},
               {9000, std::string(8996, ' '), "refused"}};
  for (const auto& c : cases) {
    Bytes file = header(1.0, static_cast<std::int64_t>(c.recordLength), 1, 1).zerosTo(c.recordLength);
    file.append(fieldDefinition("MW", 8, "Double")).zerosTo(2 * c.recordLength);
    file.append(indexRecord(5, 20)).zerosTo(3 * c.recordLength);
    const Catalogue catalogue(file.append(synonymRecord(5, c.synonym, c.recordLength)).get());
    EXPECT_EQ(catalogue.fields().at(0).name, wide("MW"));
    EXPECT_EQ(catalogue.dataRecordOf(5), 20);
    std::vector<WideString> texts;
    EXPECT_EQ(raisedBy([&] { texts = synonymTexts(catalogue, 5); }), c.expected == "refused" ? E_FAIL : S_OK);
    EXPECT_EQ(texts, c.expected == "refused" ? texts : std::vector{wide(c.expected)});
  }
}

TEST(DatabaseCatalogue, HostileHeaders) {
  constexpr std::int32_t kMost = 0x7FFFFFFF, kLeast = -kMost - 1;
  // The file goes on with three field definitions, two index records and a synonym.
  const struct {
    std::int32_t recordLength, fields, compounds;
    std::size_t fieldsFound, compoundsFound;
    HRESULT result = S_OK;
  } cases[] = {{78, 3, 0, 3, 0},          {78, 3, kLeast, 3, 0},         {78, 3, kMost, 3, 3},
               {78, kMost, kMost, 6, 0},  {kMost, 3, 2, 0, 0},           {1, 0, kMost, 0, 7},
               {78, -1, 2, 0, 0, E_FAIL}, {78, kLeast, 2, 0, 0, E_FAIL}, {0, 3, 2, 0, 0, E_FAIL},
               {-78, 3, 2, 0, 0, E_FAIL}};
  for (const auto& c : cases) {
    Bytes file = header(2.0, c.recordLength, c.fields, c.compounds).zerosTo(78);
    for (int i = 0; i < 3; ++i) file.append(fieldDefinition("MW", 8, "Double"));
    file.append(indexRecord(1, 0)).append(indexRecord(2, 1)).append(synonymRecord(2, "two"));
    EXPECT_EQ(raisedBy([&] {
                const Catalogue catalogue(file.get());
                EXPECT_EQ(catalogue.fields().size(), c.fieldsFound);
                EXPECT_EQ(catalogue.indexRecordCount(), c.compoundsFound);
                for (std::size_t i = 0; i < catalogue.indexRecordCount(); ++i) catalogue.indexRecord(i);
                synonymTexts(catalogue, 2);
              }),
              c.result)
        << c.recordLength << ' ' << c.fields << ' ' << c.compounds;
  }
}

TEST(DatabaseCatalogue, TruncatedAtEveryOffset) {
  const Bytes file = indexFile({fieldDefinition("MW", 8, "Double"), fieldDefinition("TC", 8, "Double")},
                               {indexRecord(1, 10, "one"), indexRecord(2, 20, "two")}, {synonymRecord(2, "due")});
  ASSERT_EQ(file.size(), 6u * 78);
  for (std::size_t size = 0; size <= file.size(); ++size) {
    SCOPED_TRACE(size);
    const Catalogue catalogue(file.first(size));
    EXPECT_EQ(catalogue.fields().size(), (size >= 156) + (size >= 234u));
    EXPECT_EQ(catalogue.dataRecordOf(2), size >= 320 ? std::optional<LONG>(20) : std::nullopt);
    ASSERT_EQ(catalogue.indexRecordCount(), (size >= 242) + (size >= 320u));
    if (size >= 320) {
      EXPECT_EQ(catalogue.indexRecord(1).name, wide(std::string_view("two").substr(0, size - 320)));
    }
    std::vector<WideString> synonyms;
    if (size > 394) synonyms.push_back(wide(std::string_view("due").substr(0, size - 394)));
    EXPECT_EQ(synonymTexts(catalogue, 2), synonyms);
  }
}

}  // namespace
}  // namespace qs::database
