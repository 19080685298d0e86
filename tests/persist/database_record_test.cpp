#include "persist/database_record.h"

#include <gmock/gmock.h>

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

// What is delivered of record 0 of a data file in memory.
std::string delivered(const std::vector<Bytes>& fields, std::span<const std::byte> file, HRESULT expected = S_OK) {
  const Catalogue catalogue(indexFile(fields).get());
  RecordLog log;
  EXPECT_EQ(readRecord(catalogue, file, 0, log), expected);
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
  const struct {
    std::int32_t recordLength, record;
    HRESULT result;
    std::string delivered;
  } cases[] = {{78, 0, S_OK, "TC=0.5 "}, {78, 2, S_OK, "TC=2.5 "}, {156, 0, S_OK, "TC=1.5 "},
               {39, 3, S_OK, "TC=1.5 "}, {78, 3, S_OK, ""},        {78, kMost, S_OK, ""},
               {kMost, kMost, S_OK, ""}, {78, -1, E_FAIL, ""},     {78, kLeast, E_FAIL, ""},
               {0, 0, E_FAIL, ""},       {-78, -3, E_FAIL, ""},    {kLeast, kMost, E_FAIL, ""}};
  const Catalogue catalogue(indexFile({fieldDefinition("TC", 8, "Double")}).get());
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.recordLength << ", " << c.record);
    Bytes file = header(2.0, c.recordLength, 0, 0).zerosTo(78);
    for (const double value : {0.5, 1.5, 2.5}) file.append(Bytes().real(value).zerosTo(78));
    RecordLog log;
    EXPECT_EQ(readRecord(catalogue, file.get(), c.record, log), c.result);
    EXPECT_EQ(log.text(), c.delivered);
  }
}

TEST(DatabaseRecord, LyingSizes) {
  // Eight bytes of record are left for the field X between two numbers.
  const struct {
    std::string_view kind;
    std::int32_t size;
    HRESULT result;
    std::string delivered;
  } cases[] = {{"String", 8, S_OK, "X=abcd     Y=5 "},
               {"String", 0, S_OK, "X= Y=1684234849 "},
               {"String", kMost, S_OK, "X=abcd    \x05 "},
               {"String", -1, E_FAIL, ""},
               {"Group", 2, S_OK, "X=25185*25699 8224*8224 Y=5 "},
               {"Group", 0, S_OK, "X=Y=1684234849 "},
               {"Group", kMost, S_OK, "X=25185*25699 8224*8224 5*0 "},
               {"Group", kLeast, E_FAIL, ""},
               {"Equation", kMost, S_OK, ""},
               {"Equation", 0, S_OK, ""},
               {"Equation", -7, E_FAIL, ""},
               {"Unknown", 8, S_OK, "Y=5 "},
               {"Unknown", kMost, S_OK, ""},
               {"Unknown", -8, E_FAIL, ""},
               {"Long Integer", 0, S_OK, "X=1684234849 Y=538976288 "},
               {"Short Integer", kLeast, S_OK, "X=25185 Y=538993763 "}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.kind << ", " << c.size);
    const std::vector<Bytes> fields = {fieldDefinition("TC", 8, "Double"), fieldDefinition("X", c.size, c.kind),
                                       fieldDefinition("Y", 4, "Long Integer")};
    const Bytes file = dataFile(Bytes().real(1.0).text("abcd", 8).int32(5));
    EXPECT_EQ(delivered(fields, file.get(), c.result), "TC=1 " + c.delivered);
  }
}

TEST(DatabaseRecord, TextEndsAtNulOrAtItsSize) {
  const std::string longest(1023, 'x');
  const struct {
    std::string text;
    HRESULT result;
    std::string delivered;
  } cases[] = {{"1,4-dioxane   ", S_OK, "X=1,4-dioxane    "},
               {" leading and  inner ", S_OK, "X= leading and  inner  "},
               {std::string("acetone  \0garbage", 17), S_OK, "X=acetone   "},
               {std::string(12, ' '), S_OK, "X=" + std::string(13, ' ')},
               {std::string(12, '\0'), S_OK, "X= "},
               {longest + '\0' + longest, S_OK, "X=" + longest + ' '},
               {longest + ' ', E_FAIL, ""},
               {std::string(50'000, 'x'), E_FAIL, ""}};
  for (const auto& c : cases) {
    const Bytes field = fieldDefinition("X", static_cast<std::int64_t>(c.text.size()), "String");
    EXPECT_EQ(delivered({field}, dataFile(Bytes().text(c.text, c.text.size())).get(), c.result), c.delivered);
  }
}

TEST(DatabaseRecord, UnsetShapeAndCoefficients) {
  const std::vector<Bytes> fields = {fieldDefinition("VP", 4, "Equation"), fieldDefinition("LDN", 0, "Equation")};
  const Bytes record = equation(-32767, {1.0, -32767.0, -32766.0, -32767.0}).append(equation(-1, {}));
  EXPECT_EQ(delivered(fields, dataFile(record).get()),
            "VP=1000(1 0 -32766 0 )T250..600 P1.5..900 X1^1.25 Y1^0.38 "
            "LDN=-1()T250..600 P1.5..900 X1^1.25 Y1^0.38 ");
}

TEST(DatabaseRecord, ShapesOfXAndYInOldFiles) {
  const struct {
    double version;
    std::string_view key;
    std::int32_t xShape, yShape;
    std::string delivered;
  } cases[] = {{1.0, "HVP", COMxr, COMx, "X2^1.25 Y1^0.38 old "},
               {1.0, "ST", COMxr, COMx, "X2^1.25 Y1^0.38 old "},
               {1.0, "VP", COMxr, COMx, "X35^1.25 Y1^0.38 old "},
               {1.0, "STX", COMxr, COMx, "X35^1.25 Y1^0.38 old "},
               {1.0, "st", COMxr, COMx, "X35^1.25 Y1^0.38 old "},
               {1.0, "HVP", COMx, COMlnxxo, "X1^1.25 Y36^0.38 old "},
               {1.0, "HVP", COMxr, COMlnxxo, "X2^1.25 Y27^0.38 old "},
               {1.0, "VP", COMxr, COMlnxxo, "X35^1.25 Y27^0.38 old "},
               {1.0, "VP", COMlnxxo, COMxr, "X27^1.25 Y2^0.38 old "},
               {1.0, "VP", -5, 9999, "X-5^1.25 Y9999^0.38 old "},
               {2.0, "VP", COMxr, COMlnxxo, "X2^1.25 Y27^0.38 "},
               {1.0000000000000002, "VP", COMxr, COMx, "X2^1.25 Y1^0.38 "}};
  for (const auto& c : cases) {
    const Bytes record = equation(5, {1.0}, c.xShape, c.yShape);
    EXPECT_THAT(delivered({fieldDefinition(c.key, 1, "Equation")}, dataFile(record, c.version).get()),
                testing::EndsWith(c.delivered))
        << c.key << c.version;
  }
}

TEST(DatabaseRecord, ReadsFromTheDirectoryWholeOrByField) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, indexFile(allFields()));
  RecordLog whole, byField, none;
  EXPECT_EQ(readRecord(openDatabase(directory.name()), 1, whole), E_FAIL) << "no data file";

  directory.write(kDataFile, dataFile(Bytes().zerosTo(78).append(allContents())));
  const Database database = openDatabase(directory.name());
  EXPECT_EQ(readRecord(database, 1, whole), S_OK);
  for (const Field& field : database.catalogue->fields()) EXPECT_EQ(readField(database, 1, field, byField), S_OK);
  EXPECT_EQ(whole.text(), expectedOf(allContents().size()));
  EXPECT_EQ(byField.text(), whole.text());

  EXPECT_EQ(readRecord(database, -1, none), E_FAIL);
  const Field negative{0, 0, wide("X"), -1, 0, FieldKind::String};
  const Field farAway{0, 0, wide("X"), 8, ~std::uint64_t{0} - 3, FieldKind::Double};
  EXPECT_EQ(readField(database, 1, negative, none), E_FAIL);
  EXPECT_EQ(readField(database, 1, farAway, none), S_OK);
  EXPECT_EQ(none.text(), "");

  // A field alone is found by the declared sizes of those before it.
  directory.write(kIndexFile, indexFile({fieldDefinition("A", 3, "Byte"), fieldDefinition("B", 2, "Short Integer")}));
  directory.write(kDataFile, dataFile(Bytes().integer(1, 1).int16(2).int16(3)));
  const Database lying = openDatabase(directory.name());
  RecordLog first, second;
  EXPECT_EQ(readRecord(lying, 0, first), S_OK);
  EXPECT_EQ(readField(lying, 0, lying.catalogue->fields().at(1), second), S_OK);
  EXPECT_EQ(first.text() + second.text(), "B=2 B=3 ");
}

TEST(DatabaseRecord, NoticesARewrittenDataFile) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, indexFile({fieldDefinition("VP", 1, "Equation")}));
  const struct {
    double version;
    std::size_t recordLength;
    double coefficient;
    std::string delivered;
  } files[] = {{1.0, 78, 5.5, "VP=5(5.5 )T250..600 P1.5..900 X35^1.25 Y1^0.38 old "},
               {2.0, 78, 6.5, "VP=5(6.5 )T250..600 P1.5..900 X2^1.25 Y1^0.38 "},
               {2.0, 100, 7.5, "VP=5(7.5 )T250..600 P1.5..900 X2^1.25 Y1^0.38 "}};
  // Version and record length change while the file keeps its length, at once and when its time has settled.
  for (const auto pause : {0, 30}) {
    for (const auto& file : files) {
      Bytes bytes = header(file.version, static_cast<std::int64_t>(file.recordLength), 0, 0).zerosTo(file.recordLength);
      directory.write(kDataFile, bytes.append(equation(5, {file.coefficient}, COMxr)).zerosTo(300));
      for (int i = 0; i < 3; ++i) {
        RecordLog log;
        ASSERT_EQ(readRecord(openDatabase(directory.name()), 0, log), S_OK);
        EXPECT_EQ(log.text(), file.delivered) << pause;
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
      }
    }
  }
}

}  // namespace
}  // namespace qs::database
