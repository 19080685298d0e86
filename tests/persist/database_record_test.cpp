#include "persist/database_record.h"

#include <gmock/gmock.h>

#include <random>
#include <thread>

#include "com/error.h"
#include "interfaces/interfaces.h"
#include "tests/support/database_builder.h"
#include "tests/support/record_log.h"

namespace qs::database {
namespace {

using namespace qs::test;

constexpr std::int32_t kMost = 0x7FFFFFFF;
constexpr std::int32_t kLeast = -kMost - 1;

Bytes equation(std::int64_t shape, std::initializer_list<double> coefficients, std::int64_t xShape = 1,
               std::int64_t yShape = 1) {
  Bytes bytes = Bytes().int16(shape).reals(coefficients).reals({250.0, 600.0, 1.5, 900.0});
  return bytes.int16(xShape).int16(yShape).reals({1.25, 0.38}).int16(7).int16(8).int16(9);
}

// A data file with records of 78 bytes.
Bytes dataFile(const Bytes& records, double version = 2.0) {
  return header(version, 78, 0, 0).zerosTo(78).append(records);
}

// What is delivered of a record of a data file in memory.
std::string delivered(const std::vector<Bytes>& fields, std::span<const std::byte> file, HRESULT expected = S_OK,
                      LONG record = 0) {
  RecordLog log;
  EXPECT_EQ(readRecord(Catalogue(indexFile(fields).get()), file, record, log), expected);
  return log.text();
}

// A field of a record, and what is delivered of it once so many of its bytes are there.
struct Part {
  Bytes definition, content;
  std::vector<std::pair<std::size_t, std::string>> delivered;
};
const std::vector<Part>& allKinds() {
  static const std::vector<Part> parts = {
      {fieldDefinition("Flag", 1, "Byte"), Bytes().integer(1, 1), {}},
      {fieldDefinition("Family", 2, "Short Integer"), Bytes().int16(-2), {{2, "Family=-2 "}}},
      {fieldDefinition("DDBID", 4, "Long Integer"), Bytes().int32(-70000), {{4, "DDBID=-70000 "}}},
      {fieldDefinition("TC", 8, "Double"), Bytes().real(647.096), {{8, "TC=647.096 "}}},
      {fieldDefinition("CASN", 4, "String"),
       Bytes().text("7-7", 4),
       {{1, "CASN=7 "}, {2, "CASN=7- "}, {3, "CASN=7-7 "}, {4, "CASN=7-7  "}}},
      {fieldDefinition("UNIFAC", 2, "Group"),
       Bytes().int16(16).int16(1).int16(-1).int16(-32768),
       {{4, "UNIFAC=16*1 "}, {8, "UNIFAC=16*1 -1*-32768 "}}},
      {fieldDefinition("Spare", 5, "Padding"), Bytes().text("?????", 5), {}},
      {fieldDefinition("VP", 2, "Equation"),
       equation(20, {73.649, -7258.2}, 2, 7),
       {{76, "VP=20(73.649 -7258.2 )T250..600 P1.5..900 X2^1.25 Y7^0.38 "}}},
      {fieldDefinition("MW", 8, "Double"), Bytes().real(18.0153), {{8, "MW=18.0153 "}}},
  };
  return parts;
}
std::vector<Bytes> allFields() {
  std::vector<Bytes> fields;
  for (const Part& part : allKinds()) fields.push_back(part.definition);
  return fields;
}
Bytes allContents() {
  Bytes record;
  for (const Part& part : allKinds()) record.append(part.content);
  return record;
}
std::string expectedOf(std::size_t held) {
  std::string expected;
  for (const Part& part : allKinds()) {
    std::string delivered;
    for (const auto& [needed, text] : part.delivered)
      if (held >= needed) delivered = text;
    expected += delivered;
    if (held < part.content.size()) break;
    held -= part.content.size();
  }
  return expected;
}

TEST(DatabaseRecord, DeliversEveryKindAsFarAsTheFileGoes) {
  const Bytes file = dataFile(allContents());
  for (std::size_t size = 0; size <= file.size(); ++size) {
    SCOPED_TRACE(size);
    EXPECT_EQ(delivered(allFields(), file.first(size)), expectedOf(size > 78 ? size - 78 : 0));
  }
}

TEST(DatabaseRecord, RecordsArePositionedByTheDataFilesRecordLength) {
  const std::tuple<std::int32_t, LONG, HRESULT, std::string> cases[] = {
      {78, 2, S_OK, "TC=2.5 "}, {156, 0, S_OK, "TC=1.5 "}, {39, 3, S_OK, "TC=1.5 "}, {78, 3, S_OK, ""},
      {kMost, kMost, S_OK, ""}, {78, -1, E_FAIL, ""},      {0, 0, E_FAIL, ""},       {kLeast, kMost, E_FAIL, ""}};
  for (const auto& [recordLength, record, result, expected] : cases) {
    Bytes file = header(2.0, recordLength, 0, 0).zerosTo(78);
    for (const double value : {0.5, 1.5, 2.5}) file.append(Bytes().real(value).zerosTo(78));
    EXPECT_EQ(delivered({fieldDefinition("TC", 8, "Double")}, file.get(), result, record), expected)
        << recordLength << ", " << record;
  }
}

TEST(DatabaseRecord, LyingSizes) {
  // Eight bytes of record are left for the field X between two numbers.
  const std::tuple<std::string_view, std::int32_t, HRESULT, std::string> cases[] = {
      {"String", 8, S_OK, "X=abcd     Y=5 "},
      {"String", 0, S_OK, "X= Y=1684234849 "},
      {"String", kMost, S_OK, "X=abcd    \x05 "},
      {"String", -1, E_FAIL, ""},
      {"Group", 0, S_OK, "X=Y=1684234849 "},
      {"Group", kMost, S_OK, "X=25185*25699 8224*8224 5*0 "},
      {"Group", kLeast, E_FAIL, ""},
      {"Equation", kMost, S_OK, ""},
      {"Equation", -7, E_FAIL, ""},
      {"Unknown", 8, S_OK, "Y=5 "},
      {"Unknown", kMost, S_OK, ""},
      {"Unknown", -8, E_FAIL, ""},
      {"Short Integer", kLeast, S_OK, "X=25185 Y=538993763 "}};
  const Bytes file = dataFile(Bytes().real(1.0).text("abcd", 8).int32(5));
  for (const auto& [kind, size, result, expected] : cases) {
    const std::vector<Bytes> fields = {fieldDefinition("TC", 8, "Double"), fieldDefinition("X", size, kind),
                                       fieldDefinition("Y", 4, "Long Integer")};
    EXPECT_EQ(delivered(fields, file.get(), result), "TC=1 " + expected) << kind << ", " << size;
  }
}

TEST(DatabaseRecord, TextEndsAtNulOrAtItsSize) {
  const std::string longest(1023, 'x');
  const std::pair<std::string, std::string> cases[] = {{" 1,4-dioxane  ", "X= 1,4-dioxane   "},
                                                       {std::string("acetone  \0garbage", 17), "X=acetone   "},
                                                       {longest + '\0' + longest, "X=" + longest + ' '},
                                                       {longest + ' ', ""}};
  for (const auto& [text, expected] : cases) {
    const Bytes field = fieldDefinition("X", static_cast<std::int64_t>(text.size()), "String");
    EXPECT_EQ(delivered({field}, dataFile(Bytes().text(text, text.size())).get(), expected.empty() ? E_FAIL : S_OK),
              expected);
  }
}

TEST(DatabaseRecord, UnsetShapeAndCoefficients) {
  const Bytes record = equation(-32767, {1.0, -32767.0, -32766.0}).append(equation(-1, {}));
  EXPECT_EQ(
      delivered({fieldDefinition("VP", 3, "Equation"), fieldDefinition("LDN", 0, "Equation")}, dataFile(record).get()),
      "VP=1000(1 0 -32766 )T250..600 P1.5..900 X1^1.25 Y1^0.38 LDN=-1()T250..600 P1.5..900 X1^1.25 Y1^0.38 ");
}

TEST(DatabaseRecord, ShapesOfXAndYInOldFiles) {
  const std::tuple<double, std::string_view, std::int32_t, std::int32_t, std::string> cases[] = {
      {1.0, "HVP", COMxr, COMlnxxo, "X2^1.25 Y27^0.38 old "},     {1.0, "ST", COMxr, COMx, "X2^1.25 Y1^0.38 old "},
      {1.0, "STX", COMxr, COMlnxxo, "X35^1.25 Y27^0.38 old "},    {1.0, "st", COMxr, COMx, "X35^1.25 Y1^0.38 old "},
      {1.0, "HVP", COMx, COMlnxxo, "X1^1.25 Y36^0.38 old "},      {1.0, "VP", COMlnxxo, COMxr, "X27^1.25 Y2^0.38 old "},
      {1.0, "VP", -5, 9999, "X-5^1.25 Y9999^0.38 old "},          {2.0, "VP", COMxr, COMlnxxo, "X2^1.25 Y27^0.38 "},
      {1.0000000000000002, "VP", COMxr, COMx, "X2^1.25 Y1^0.38 "}};
  for (const auto& [version, key, xShape, yShape, expected] : cases)
    EXPECT_THAT(
        delivered({fieldDefinition(key, 1, "Equation")}, dataFile(equation(5, {1.0}, xShape, yShape), version).get()),
        testing::EndsWith(expected))
        << key << version;
}

HRESULT readOne(const Database& database, LONG record, const Field& field, RecordSink& sink) {
  const CompoundRecord records[] = {{0, record}};
  return readField(database, records, field, sink, [](std::size_t) {});
}

TEST(DatabaseRecord, ReadsFromTheDirectoryWholeOrByField) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, indexFile(allFields()));
  RecordLog whole, byField, none;
  EXPECT_EQ(readRecord(openDatabase(directory.name()), 1, whole), E_FAIL) << "no data file";

  directory.write(kDataFile, dataFile(Bytes().zerosTo(78).append(allContents())));
  const Database database = openDatabase(directory.name());
  EXPECT_EQ(readRecord(database, 1, whole), S_OK);
  for (const Field& field : database.catalogue->fields()) EXPECT_EQ(readOne(database, 1, field, byField), S_OK);
  EXPECT_EQ(whole.text(), expectedOf(allContents().size()));
  EXPECT_EQ(byField.text(), whole.text());

  EXPECT_EQ(readRecord(database, -1, none), E_FAIL);
  const Field negative{0, 0, wide("X"), -1, 0, FieldKind::String};
  const Field farAway{0, 0, wide("X"), 8, ~std::uint64_t{0} - 3, FieldKind::Double};
  EXPECT_EQ(readOne(database, 1, negative, none), E_FAIL);
  EXPECT_EQ(readOne(database, 1, farAway, none), S_OK);
  EXPECT_EQ(none.text(), "");

  // A field alone is found by the declared sizes of those before it.
  directory.write(kIndexFile, indexFile({fieldDefinition("A", 3, "Byte"), fieldDefinition("B", 2, "Short Integer")}));
  directory.write(kDataFile, dataFile(Bytes().integer(1, 1).int16(2).int16(3)));
  const Database lying = openDatabase(directory.name());
  RecordLog first, second;
  EXPECT_EQ(readRecord(lying, 0, first), S_OK);
  EXPECT_EQ(readOne(lying, 0, lying.catalogue->fields().at(1), second), S_OK);
  EXPECT_EQ(first.text() + second.text(), "B=2 B=3 ");
}

// Each as when it is read alone, whatever their order and distance; far more than is read at once.
TEST(DatabaseRecord, ReadsAFieldOfManyRecords) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile,
                  indexFile({fieldDefinition("A", 100, "String"), fieldDefinition("B", 4, "Long Integer")}));
  Bytes data = dataFile(Bytes());
  for (int i = 0; i < 20'000; ++i) data.text("record " + std::to_string(i), 78);
  directory.write(kDataFile, data.append(Bytes().text("end", 30)));
  const Database database = openDatabase(directory.name());
  std::mt19937 random(4711);
  for (const std::uint32_t most : {20'005u, 60u}) {
    std::vector<CompoundRecord> records(300);
    for (CompoundRecord& record : records) record.dataRecord = static_cast<LONG>(random() % most);
    for (const Field& field : database.catalogue->fields()) {
      std::vector<std::string> together(records.size());
      RecordLog log;
      std::size_t logged = 0;
      EXPECT_EQ(readField(database, records, field, log,
                          [&](std::size_t i) {
                            together[i] = log.text().substr(logged);
                            logged = log.text().size();
                          }),
                S_OK);
      for (std::size_t i = 0; i < records.size(); ++i) {
        RecordLog alone;
        readOne(database, records[i].dataRecord, field, alone);
        ASSERT_EQ(together[i], alone.text()) << records[i].dataRecord;
      }
    }
    records[7].dataRecord = -1;
    RecordLog log;
    EXPECT_EQ(readField(database, records, database.catalogue->fields().at(0), log, [](std::size_t) {}), E_FAIL);
  }
}

TEST(DatabaseRecord, NoticesARewrittenDataFile) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, indexFile({fieldDefinition("VP", 1, "Equation")}));
  const std::tuple<double, std::int64_t, std::string> files[] = {
      {1.0, 78, "VP=5(5.5 )T250..600 P1.5..900 X35^1.25 Y1^0.38 old "},
      {2.0, 78, "VP=5(5.5 )T250..600 P1.5..900 X2^1.25 Y1^0.38 "},
      {2.0, 100, "VP=5(5.5 )T250..600 P1.5..900 X2^1.25 Y1^0.38 "}};
  // Version and record length change while the file keeps its length, at once and when its time has settled.
  for (const auto pause : {0, 30}) {
    for (const auto& [version, recordLength, expected] : files) {
      Bytes file = header(version, recordLength, 0, 0).zerosTo(static_cast<std::size_t>(recordLength));
      directory.write(kDataFile, file.append(equation(5, {5.5}, COMxr)).zerosTo(300));
      for (int i = 0; i < 3; ++i) {
        RecordLog log;
        ASSERT_EQ(readRecord(openDatabase(directory.name()), 0, log), S_OK);
        EXPECT_EQ(log.text(), expected) << pause;
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
      }
    }
  }
}

}  // namespace
}  // namespace qs::database
