#include "persist/database_record.h"

#include <gmock/gmock.h>

#include <map>
#include <thread>

#include "com/error.h"
#include "com/interfaces.h"
#include "tests/support/database_builder.h"

namespace qs::database {
namespace {

using namespace qs::test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int32_t kMost = 0x7FFFFFFF;
constexpr std::int32_t kLeast = -kMost - 1;

// Keeps what is delivered: the names in their order, the values by name.
struct Recorder : RecordSink {
  std::vector<std::string> names;
  std::map<std::string, std::int64_t> integers;
  std::map<std::string, double> numbers;
  std::map<std::string, WideString> texts;
  std::map<std::string, std::vector<GroupCount>> groupLists;
  std::map<std::string, EquationField> equations;
  std::map<std::string, std::vector<double>> coefficients;

  std::string note(const Field& field) {
    std::string name = narrow(field.name);
    names.push_back(name);
    return name;
  }
  void shortInteger(const Field& field, std::int16_t value) override { integers[note(field)] = value; }
  void longInteger(const Field& field, std::int32_t value) override { integers[note(field)] = value; }
  void number(const Field& field, double value) override { numbers[note(field)] = value; }
  void text(const Field& field, WideView value) override { texts[note(field)] = value; }
  void groups(const Field& field, std::span<const GroupCount> values) override {
    groupLists[note(field)].assign(values.begin(), values.end());
  }
  void equation(const Field& field, const EquationField& value) override {
    const std::string name = note(field);
    equations[name] = value;
    coefficients[name].assign(value.coefficients.begin(), value.coefficients.end());
  }
};

Bytes equation(std::int64_t shape, std::initializer_list<double> coefficients, std::int64_t xShape = 1,
               std::int64_t yShape = 1) {
  Bytes bytes = Bytes().int16(shape).reals(coefficients).reals({250.0, 600.0, 1.5, 900.0});
  return bytes.int16(xShape).int16(yShape).reals({1.25, 0.38}).int16(7).int16(8).int16(9);
}

// A data file whose records are `records`, each padded to `recordLength`.
Bytes dataFile(const std::vector<Bytes>& records, double version = 2.0, std::size_t recordLength = 78) {
  Bytes file = header(version, static_cast<std::int64_t>(recordLength), 0, 0).zerosTo(recordLength);
  for (const Bytes& record : records) file.append(record);
  return file;
}

const std::vector<Bytes>& allKinds() {
  static const std::vector<Bytes> fields = {
      fieldDefinition("Flag", 1, "Byte"),          fieldDefinition("Family", 2, "Short Integer"),
      fieldDefinition("DDBID", 4, "Long Integer"), fieldDefinition("TC", 8, "Double"),
      fieldDefinition("PName", 10, "String"),      fieldDefinition("UNIFAC", 3, "Group"),
      fieldDefinition("Spare", 5, "Padding"),      fieldDefinition("VP", 2, "Equation"),
      fieldDefinition("MW", 8, "Double"),
  };
  return fields;
}

Bytes allKindsRecord() {
  Bytes record;
  record.integer(1, 1).int16(-2).int32(-70000).real(647.096).text("Water", 10);
  record.int16(16).int16(1).int16(-1).int16(-32768).int16(300).int16(2);
  return record.text("?????", 5).append(equation(20, {73.649, -7258.2})).real(18.01528);
}
constexpr std::size_t kAllKindsBytes = 1 + 2 + 4 + 8 + 10 + 12 + 5 + 76 + 8;

TEST(DatabaseRecord, DeliversEveryKind) {
  const Catalogue catalogue(indexFile(allKinds()).get());
  ASSERT_EQ(allKindsRecord().size(), kAllKindsBytes);
  Recorder sink;
  ASSERT_EQ(readRecord(catalogue, dataFile({allKindsRecord()}).get(), 0, sink), S_OK);

  EXPECT_THAT(sink.names, ElementsAre("Family", "DDBID", "TC", "PName", "UNIFAC", "VP", "MW"));
  EXPECT_EQ(sink.integers["Family"], -2);
  EXPECT_EQ(sink.integers["DDBID"], -70000);
  EXPECT_EQ(sink.numbers["TC"], 647.096);
  EXPECT_EQ(sink.texts["PName"], wide("Water"));
  EXPECT_THAT(sink.groupLists["UNIFAC"], ElementsAre(GroupCount{16, 1}, GroupCount{-1, -32768}, GroupCount{300, 2}));
  EXPECT_EQ(sink.numbers["MW"], 18.01528);
  const EquationField& vp = sink.equations["VP"];
  EXPECT_EQ(vp.shape, 20);
  EXPECT_THAT(sink.coefficients["VP"], ElementsAre(73.649, -7258.2));
  EXPECT_THAT((std::array{vp.tMin, vp.tMax, vp.pMin, vp.pMax}), ElementsAre(250.0, 600.0, 1.5, 900.0));
  EXPECT_THAT((std::array{vp.xShape, vp.yShape}), ElementsAre(1, 1));
  EXPECT_THAT((std::array{vp.xPower, vp.yPower}), ElementsAre(1.25, 0.38));
}

TEST(DatabaseRecord, TruncatedAtEveryOffset) {
  const Catalogue catalogue(indexFile(allKinds()).get());
  const Bytes file = dataFile({allKindsRecord()});
  for (std::size_t size = 0; size <= file.size(); ++size) {
    SCOPED_TRACE(size);
    const std::size_t held = size > 78 ? size - 78 : 0;
    // Each field with the bytes of the record that it needs to be delivered.
    std::vector<std::string> expected;
    for (const auto& [name, needed] : std::initializer_list<std::pair<std::string, std::size_t>>{
             {"Family", 3}, {"DDBID", 7}, {"TC", 15}, {"PName", 16}, {"UNIFAC", 29}, {"VP", 118}, {"MW", 126}}) {
      if (held >= needed) expected.push_back(name);
    }
    Recorder sink;
    EXPECT_EQ(readRecord(catalogue, file.first(size), 0, sink), S_OK);
    EXPECT_EQ(sink.names, expected);
    if (held >= 16) {
      EXPECT_EQ(sink.texts["PName"], wide(std::string_view("Water").substr(0, held - 15)));
    }
    if (held >= 29) {
      EXPECT_EQ(sink.groupLists["UNIFAC"].size(), std::min<std::size_t>(3, (held - 25) / 4));
    }
  }
}

TEST(DatabaseRecord, RecordsArePositionedByTheDataFilesRecordLength) {
  struct Case {
    std::int32_t recordLength, record;
    HRESULT result;
    bool delivered;
  };
  // Records 0 to 2 of 78 bytes hold 0.5, 1.5 and 2.5.
  const Case cases[] = {{78, 0, S_OK, true},         {78, 2, S_OK, true},
                        {78, 3, S_OK, false},        {78, kMost, S_OK, false},
                        {156, 0, S_OK, true},        {39, 3, S_OK, true},
                        {78, -1, E_FAIL, false},     {78, kLeast, E_FAIL, false},
                        {0, 0, E_FAIL, false},       {-78, 0, E_FAIL, false},
                        {-78, -3, E_FAIL, false},    {kLeast, kMost, E_FAIL, false},
                        {kMost, kMost, S_OK, false}, {kLeast, kLeast, E_FAIL, false}};
  const Catalogue catalogue(indexFile({fieldDefinition("TC", 8, "Double")}).get());
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.recordLength << ", " << c.record);
    Bytes file = header(2.0, c.recordLength, 0, 0).zerosTo(78);
    for (const double value : {0.5, 1.5, 2.5}) file.append(Bytes().real(value).zerosTo(78));
    Recorder sink;
    EXPECT_EQ(readRecord(catalogue, file.get(), c.record, sink), c.result);
    ASSERT_EQ(!sink.numbers.empty(), c.delivered);
    if (c.delivered) {
      EXPECT_EQ(sink.numbers["TC"], (c.record + 1) * c.recordLength / 78 - 0.5);
    }
  }
}

TEST(DatabaseRecord, LyingSizes) {
  struct Case {
    std::string_view kind;
    std::int32_t size;
    HRESULT result;
    bool delivered;  // the field itself
    bool goesOn;     // the field after it
  };
  // Eight bytes of record are left for the field; another number follows.
  const Case cases[] = {{"String", 8, S_OK, true, true},         {"String", 0, S_OK, true, true},
                        {"String", kMost, S_OK, true, false},    {"String", -1, E_FAIL, false, false},
                        {"Group", 2, S_OK, true, true},          {"Group", 0, S_OK, true, true},
                        {"Group", kMost, S_OK, true, false},     {"Group", kLeast, E_FAIL, false, false},
                        {"Equation", kMost, S_OK, false, false}, {"Equation", 0, S_OK, false, false},
                        {"Equation", -7, E_FAIL, false, false},  {"Unknown", 8, S_OK, false, true},
                        {"Unknown", kMost, S_OK, false, false},  {"Unknown", -8, E_FAIL, false, false},
                        {"Byte", -8, S_OK, false, true},         {"Double", kLeast, S_OK, true, true},
                        {"Double", kMost, S_OK, true, true},     {"Long Integer", 0, S_OK, true, true},
                        {"Short Integer", 4, S_OK, true, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.kind << ", " << c.size);
    const Catalogue catalogue(indexFile({fieldDefinition("TC", 8, "Double"), fieldDefinition("X", c.size, c.kind),
                                         fieldDefinition("DDBID", 4, "Long Integer")})
                                  .get());
    Recorder sink;
    EXPECT_EQ(readRecord(catalogue, dataFile({Bytes().real(1.0).text("abcd", 8).int32(5)}).get(), 0, sink), c.result);
    std::vector<std::string> expected = {"TC"};
    if (c.delivered) expected.push_back("X");
    if (c.goesOn) expected.push_back("DDBID");
    EXPECT_EQ(sink.names, expected);
  }
}

TEST(DatabaseRecord, TextEndsAtNulOrBeforeTrailingBlanks) {
  struct Case {
    std::string text;
    HRESULT result;
    std::string expected;
  };
  const std::string longest(1023, 'x');
  const Case cases[] = {{"1,4-dioxane   ", S_OK, "1,4-dioxane"},
                        {" leading and  inner ", S_OK, " leading and  inner"},
                        {std::string("acetone\0garbage", 15), S_OK, "acetone"},
                        {std::string("acetone  \0garbage", 17), S_OK, "acetone"},
                        {std::string(12, ' '), S_OK, ""},
                        {std::string(12, '\0'), S_OK, ""},
                        {longest, S_OK, longest},
                        {longest + '\0' + longest, S_OK, longest},
                        {longest + 'x', E_FAIL, ""},
                        {std::string("a").append(1023, ' '), E_FAIL, ""},
                        {std::string(50'000, 'x'), E_FAIL, ""}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 20));
    const Catalogue catalogue(
        indexFile({fieldDefinition("PName", static_cast<std::int64_t>(c.text.size()), "String")}).get());
    Recorder sink;
    const Bytes record = Bytes().text(c.text, c.text.size());
    EXPECT_EQ(readRecord(catalogue, dataFile({record}).get(), 0, sink), c.result);
    EXPECT_EQ(sink.texts.size(), SUCCEEDED(c.result) ? 1u : 0u);
    EXPECT_EQ(sink.texts["PName"], wide(c.expected));
  }
}

TEST(DatabaseRecord, UnsetShapeAndCoefficients) {
  const Catalogue catalogue(
      indexFile({fieldDefinition("VP", 4, "Equation"), fieldDefinition("LDN", 0, "Equation")}).get());
  Recorder sink;
  const Bytes record = equation(-32767, {1.0, -32767.0, -32766.0, -32767.0}).append(equation(-1, {}));
  ASSERT_EQ(readRecord(catalogue, dataFile({record}).get(), 0, sink), S_OK);
  EXPECT_EQ(sink.equations["VP"].shape, PropCurveVoid);
  EXPECT_THAT(sink.coefficients["VP"], ElementsAre(1.0, 0.0, -32766.0, 0.0));
  EXPECT_EQ(sink.equations["VP"].tMax, 600.0);
  EXPECT_EQ(sink.equations["LDN"].shape, -1);
  EXPECT_THAT(sink.coefficients["LDN"], IsEmpty());
}

TEST(DatabaseRecord, ShapesOfXAndYInOldFiles) {
  struct Case {
    double version;
    std::string_view key;
    std::int32_t xShape, yShape;
    std::int32_t newXShape, newYShape;
  };
  const Case cases[] = {{1.0, "HVP", COMxr, COMx, COMxr, COMx},
                        {1.0, "ST", COMxr, COMx, COMxr, COMx},
                        {1.0, "VP", COMxr, COMx, COMxp, COMx},
                        {1.0, "STX", COMxr, COMx, COMxp, COMx},
                        {1.0, "st", COMxr, COMx, COMxp, COMx},
                        {1.0, "", COMxr, COMx, COMxp, COMx},
                        {1.0, "VP", COMx, COMlnxxo, COMx, COMlnxp},
                        {1.0, "HVP", COMx, COMlnxxo, COMx, COMlnxp},
                        {1.0, "HVP", COMxr, COMlnxxo, COMxr, COMlnxxo},
                        {1.0, "VP", COMxr, COMlnxxo, COMxp, COMlnxxo},
                        {1.0, "VP", COMlnxxo, COMxr, COMlnxxo, COMxr},
                        {1.0, "VP", -5, 9999, -5, 9999},
                        {2.0, "VP", COMxr, COMlnxxo, COMxr, COMlnxxo},
                        {0.0, "VP", COMx, COMlnxxo, COMx, COMlnxxo},
                        {1.0000000000000002, "VP", COMxr, COMx, COMxr, COMx}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.version << " " << c.key << " " << c.xShape << " " << c.yShape);
    const Catalogue catalogue(indexFile({fieldDefinition(c.key, 1, "Equation")}).get());
    Recorder sink;
    ASSERT_EQ(readRecord(catalogue, dataFile({equation(5, {1.0}, c.xShape, c.yShape)}, c.version).get(), 0, sink),
              S_OK);
    const EquationField& field = sink.equations[std::string(c.key)];
    EXPECT_EQ(field.xShape, c.newXShape);
    EXPECT_EQ(field.yShape, c.newYShape);
    EXPECT_EQ(field.fromOldShapes, c.version == 1.0);
  }
}

TEST(DatabaseRecord, ReadsFromTheDirectory) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, indexFile(allKinds(), {indexRecord(19, 1)}));
  const auto catalogue = openCatalogue(directory.name());
  const LONG record = catalogue->dataRecordOf(19).value();
  Recorder sink;
  EXPECT_EQ(readRecord(*catalogue, record, sink), E_FAIL) << "no data file";

  directory.write(kDataFile, dataFile({Bytes().zerosTo(78), allKindsRecord()}));
  EXPECT_EQ(readRecord(*catalogue, record, sink), S_OK);
  EXPECT_EQ(sink.names.size(), 7u);
  EXPECT_EQ(sink.numbers["MW"], 18.01528);
  EXPECT_EQ(readRecord(*catalogue, -1, sink), E_FAIL);

  // Every field alone is the same as in the whole record.
  for (const Field& field : catalogue->fields()) {
    SCOPED_TRACE(narrow(field.name));
    Recorder alone;
    EXPECT_EQ(readField(*catalogue, record, field, alone), S_OK);
    const bool silent = field.kind == FieldKind::Byte || field.kind == FieldKind::Other;
    EXPECT_EQ(alone.names.size(), silent ? 0u : 1u);
    for (const auto& [name, value] : alone.integers) EXPECT_EQ(value, sink.integers[name]);
    for (const auto& [name, value] : alone.numbers) EXPECT_EQ(value, sink.numbers[name]);
    for (const auto& [name, value] : alone.texts) EXPECT_EQ(value, sink.texts[name]);
    for (const auto& [name, value] : alone.coefficients) EXPECT_EQ(value, sink.coefficients[name]);
  }
  const Field negative{0, 0, wide("X"), -1, 0, FieldKind::String};
  const Field farAway{0, 0, wide("X"), 8, ~std::uint64_t{0} - 3, FieldKind::Double};
  Recorder none;
  EXPECT_EQ(readField(*catalogue, record, negative, none), E_FAIL);
  EXPECT_EQ(readField(*catalogue, record, farAway, none), S_OK);
  EXPECT_THAT(none.names, IsEmpty());
}

TEST(DatabaseRecord, OneFieldIsFoundByTheDeclaredSizesOfThoseBefore) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, indexFile({fieldDefinition("A", 3, "Byte"), fieldDefinition("B", 2, "Short Integer")}));
  directory.write(kDataFile, dataFile({Bytes().integer(1, 1).int16(0x0203).int16(0x0405)}));
  const auto catalogue = openCatalogue(directory.name());
  Recorder whole, alone;
  EXPECT_EQ(readRecord(*catalogue, 0, whole), S_OK);
  EXPECT_EQ(readField(*catalogue, 0, catalogue->fields().at(1), alone), S_OK);
  EXPECT_EQ(whole.integers["B"], 0x0203);
  EXPECT_EQ(alone.integers["B"], 0x0405);
}

TEST(DatabaseRecord, NoticesARewrittenDataFile) {
  const TemporaryDirectory directory;
  directory.write(kIndexFile, indexFile({fieldDefinition("VP", 1, "Equation")}));
  const auto catalogue = openCatalogue(directory.name());
  const auto fileWith = [](double version, std::size_t recordLength, double coefficient) {
    Bytes file = header(version, static_cast<std::int64_t>(recordLength), 0, 0).zerosTo(recordLength);
    return file.append(equation(5, {coefficient}, COMxr)).zerosTo(300);
  };
  struct Case {
    double version;
    std::size_t recordLength;
  };
  // Version and record length change while the file keeps its length, at once and when its time has settled.
  for (const auto pause : {0, 30}) {
    for (const Case& c : {Case{1.0, 78}, Case{2.0, 78}, Case{2.0, 100}, Case{1.0, 90}}) {
      SCOPED_TRACE(testing::Message() << pause << ", " << c.version << ", " << c.recordLength);
      const double coefficient = c.version + static_cast<double>(c.recordLength);
      directory.write(kDataFile, fileWith(c.version, c.recordLength, coefficient));
      for (int i = 0; i < 3; ++i) {
        Recorder sink;
        ASSERT_EQ(readRecord(*catalogue, 0, sink), S_OK);
        EXPECT_THAT(sink.coefficients["VP"], ElementsAre(coefficient));
        EXPECT_EQ(sink.equations["VP"].xShape, c.version == 1.0 ? COMxp : COMxr);
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
      }
    }
  }
  directory.remove(kDataFile);
  Recorder sink;
  EXPECT_EQ(readRecord(*catalogue, 0, sink), E_FAIL);
}

}  // namespace
}  // namespace qs::database
