#include "persist/database_writer.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <stdexcept>

#include "tests/support/database_builder.h"
#include "tests/support/database_decoder.h"
#include "tests/support/files.h"

namespace {

using namespace qs;
using namespace qs::database;
using qs::test::DatabaseDecoder;
using qs::test::DecodedEquation;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

constexpr double kEmpty = -32767.0;

// Two compounds that bring every kind of field; the second, with the smaller number, leaves nearly all out.
std::vector<CompoundData> sample() {
  CompoundData full;
  full.number = 300;
  full.name = "Full";
  full.iupacName = "2,2'-Full";
  full.formula = "C2H6";
  full.cas = "74-84-0";
  full.family = eKetone;
  full.nonCondensable = true;
  full.dipprId = 2;
  full.ppAttribute = -7;
  full.unifac = {{1, 2}, {300, 4}};
  full.synonyms = {"second name", std::string(74, 'x')};
  full.constants = {{Key::MW, 30.07}, {Key::ACEN, -0.0}};
  full.correlations[Key::VP] = {PropCurveVELDB5, {1, 2, 3, 4, 5, 6}, 100, 200, 0.5, 9e9, COM1mxr, COMlnx, 2.0, 0.5};
  full.correlations[Key::LDN] = {PropCurveEXPO2, {11, 12}, 90, 300};

  CompoundData sparse;
  sparse.number = 7;
  sparse.name = "Sparse";
  sparse.synonyms = {"first"};
  sparse.correlations[Key::VP] = {PropCurvePOLY2, {21, 22, 23}, 10, 20};
  return {full, sparse};
}

Correlation enthalpy(tagEquationShapeEnum form = PropCurveVELDB3,
                     std::vector<double> coefficients = {1, 2, 3, 4, 5, 6, 7}) {
  return {form, std::move(coefficients), 50, 1000};
}

// A database, encoded and decoded again.
struct Encoded {
  explicit Encoded(const std::vector<CompoundData>& compounds) : files(encodeDatabase(compounds)) {}
  DatabaseFiles files;
  DatabaseDecoder database{files.index, files.data};
};

TEST(DatabaseWriter, LaysBothFilesOut) {
  const auto [files, database] = Encoded(sample());
  EXPECT_THAT(database.table,
              ElementsAre("PName|String|50", "CName|String|100", "Formula|String|30", "CASN|String|20",
                          "DIPPRID|Long Integer|4", "DDBID|Long Integer|4", "PPDSID|Long Integer|4",
                          "CMAID|Long Integer|4", "PPkg|Long Integer|4", "Family|Short Integer|2",
                          "NonCondensable|Short Integer|2", "SubComp|Short Integer|2", "UNIFAC|Group|2", "MW|Double|8",
                          "ACEN|Double|8", "PRPVOLT|Double|8", "SRKVC|Double|8", "LDN|Equation|2", "VP|Equation|6"));
  for (const auto* file : {&files.index, &files.data}) {
    EXPECT_EQ(DatabaseDecoder::at<double>(*file, 0), 2.0);
    EXPECT_EQ(DatabaseDecoder::at<std::int32_t>(*file, 18), 78);
  }
  EXPECT_THAT(database.names, ElementsAre("Sparse|", "Full|74-84-0")) << "ordered by number";
  EXPECT_THAT(database.synonyms,
              ElementsAre(Pair(7, "first"), Pair(300, "second name"), Pair(300, std::string(74, 'x'))));
  // 200 of text, 20 and 6 of numbers, 8 of groups, 32 of constants, 76 and 108 of equations: 450 bytes in 6 records.
  EXPECT_EQ(database.recordOffset(7), 78u);
  EXPECT_EQ(database.recordOffset(300), 7u * 78);
  EXPECT_EQ(files.index.size(), (1u + 19 + 2 + 3) * 78);
  EXPECT_EQ(files.data.size(), 13u * 78);
}

TEST(DatabaseWriter, EncodesWhatACompoundHasAndMarksWhatItLacks) {
  const auto [files, database] = Encoded(sample());
  struct Text {
    const char *field, *full;
  };
  for (const Text& row : {Text{"CName", "2,2'-Full"}, Text{"Formula", "C2H6"}, Text{"CASN", "74-84-0"}}) {
    EXPECT_EQ(database.text(300, row.field), row.full);
    EXPECT_EQ(database.text(7, row.field), "");
  }
  struct Number {
    const char* field;
    int full;
  };
  for (const Number& row : {Number{"DIPPRID", 2}, Number{"DDBID", -32767}, Number{"PPkg", -7}}) {
    EXPECT_EQ(database.number<std::int32_t>(300, row.field), row.full) << row.field;
    EXPECT_EQ(database.number<std::int32_t>(7, row.field), -32767) << row.field;
  }
  for (const Number& row : {Number{"Family", 5}, Number{"NonCondensable", 1}, Number{"SubComp", -32767}}) {
    EXPECT_EQ(database.number<std::int16_t>(300, row.field), row.full) << row.field;
    EXPECT_EQ(database.number<std::int16_t>(7, row.field), -32767) << row.field;
  }
  const int groups[] = {1, 2, 300, 4};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(database.number<std::int16_t>(300, "UNIFAC", i), groups[i]);
    EXPECT_EQ(database.number<std::int16_t>(7, "UNIFAC", i), 0);
  }
  EXPECT_EQ(database.number<double>(300, "MW"), 30.07);
  EXPECT_TRUE(std::signbit(database.number<double>(300, "ACEN")));
  for (const char* field : {"MW", "ACEN", "PRPVOLT", "SRKVC"}) EXPECT_EQ(database.number<double>(7, field), kEmpty);

  // The largest number of coefficients makes the field; the full form, one shorter than the field, and none.
  const std::vector<double> all{1, 2, 3, 4, 5, 6}, fewer{21, 22, 23, kEmpty, kEmpty, kEmpty}, none(2, kEmpty);
  const std::vector<int> reserved(3, 0);
  EXPECT_EQ(database.equation(300, "VP"), (DecodedEquation{4, all, 100, 200, 0.5, 9e9, 3, 7, 2.0, 0.5, reserved}));
  EXPECT_EQ(database.equation(7, "VP"), (DecodedEquation{19, fewer, 10, 20, 1e-5, 1e15, 1, 1, 1.0, 1.0, reserved}));
  EXPECT_EQ(database.equation(7, "LDN"),
            (DecodedEquation{-32767, none, kEmpty, kEmpty, kEmpty, kEmpty, -32767, -32767, kEmpty, kEmpty, reserved}));
}

// Readers derive both from IGH, which a field of their own would undo for compounds that leave it empty.
TEST(DatabaseWriter, WritesDerivedIdealGasCorrelationsOnlyBesideOthers) {
  std::vector<CompoundData> compounds(3);
  for (std::size_t i = 0; i < 3; ++i) {
    compounds[i].number = static_cast<std::int32_t>(i) + 1;
    compounds[i].name = "X";
  }
  compounds[0].correlations[Key::IGH] = compounds[1].correlations[Key::IGH] = enthalpy();
  const auto [files, alone] = Encoded(compounds);
  EXPECT_THAT(alone.equation(1, "IGH").coefficients, ElementsAre(1, 2, 3, 4, 5, 6, 7));
  EXPECT_FALSE(alone.has("IGCP"));
  EXPECT_FALSE(alone.has("IGS"));

  compounds[0].correlations[Key::IGCP] = {PropCurvePOLY2, {31, 32, 33}, 60, 70};
  compounds[2].correlations[Key::IGS] = {PropCurvePOLY2, {41, 42, 43}, 60, 70};
  const auto [moreFiles, database] = Encoded(compounds);
  const int shapes[][2] = {{19, 10}, {9, 10}, {-32767, 19}};  // IGCP and IGS of each compound
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(database.equation(i + 1, "IGCP").shape, shapes[i][0]) << i;
    EXPECT_EQ(database.equation(i + 1, "IGS").shape, shapes[i][1]) << i;
  }
  const auto heatCapacity = database.equation(2, "IGCP");
  const auto entropy = database.equation(2, "IGS");
  EXPECT_THAT(std::span(heatCapacity.coefficients).first(6), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(entropy.coefficients, ElementsAre(1, 2, 3, 4, 5, 6, 7));
  EXPECT_EQ(entropy.tmin, 50);
}

TEST(DatabaseWriter, RefusesWhatTheFilesCannotHold) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  struct Case {
    std::function<void(CompoundData&)> spoil;
    const char* field;
    const char* why;
  };
  const Case cases[] = {
      {[](auto& c) { c.number = 0; }, "number", "less than 1"},
      {[](auto& c) { c.number = 7; }, "number", "two compounds"},
      {[](auto& c) { c.name = ""; }, "PName", "empty"},
      {[](auto& c) { c.name = std::string(51, 'n'); }, "PName", "longer than 50"},
      {[](auto& c) { c.cas = std::string(21, 'n'); }, "CASN", "longer than 20"},
      {[](auto& c) { c.iupacName = "\xce\xb1-Pinene"; }, "CName", "ASCII"},
      {[](auto& c) { c.cas = std::string("1\0", 2); }, "CASN", "ASCII"},
      {[](auto& c) { c.name = "Water "; }, "PName", "blank"},
      {[](auto& c) { c.cmaId = -32767; }, "CMAID", "not set"},
      {[](auto& c) { c.family = static_cast<tagCompoundFamilyEnum>(14); }, "Family", "no such"},
      {[](auto& c) { c.unifac[0].subgroup = 0; }, "UNIFAC", "32767"},
      {[](auto& c) { c.unifac[1].count = 32768; }, "UNIFAC", "32767"},
      {[](auto& c) { c.synonyms.assign(65, "s"); }, "synonyms", "more than 64"},
      {[](auto& c) { c.synonyms = {std::string(75, 's')}; }, "synonyms", "longer than 74"},
      {[](auto& c) { c.synonyms = {""}; }, "synonyms", "empty"},
      {[](auto& c) { c.synonyms = {"\x7f"}; }, "synonyms", "ASCII"},
      {[](auto& c) { c.constants[Key::TC] = kEmpty; }, "TC", "not set"},
      {[=](auto& c) { c.constants[Key::TC] = -kInfinity; }, "TC", "finite"},
      {[](auto& c) { c.constants[Key::TC] = std::nan(""); }, "TC", "finite"},
      {[](auto& c) { c.constants[Key::VP] = 1.0; }, "VP", "single values"},
      {[](auto& c) { c.correlations[Key::SRKVC] = c.correlations[Key::LDN]; }, "SRKVC", "single values"},
      {[](auto& c) { c.correlations[Key::VP].form = static_cast<tagEquationShapeEnum>(38); }, "VP", "form"},
      {[](auto& c) { c.correlations[Key::VP].coefficients.push_back(1); }, "VP", "7 coefficients instead of 6"},
      {[](auto& c) { c.correlations[Key::LDN].coefficients.pop_back(); }, "LDN", "1 coefficients instead of 2"},
      {[](auto& c) { c.correlations[Key::VP].coefficients[2] = kEmpty; }, "VP", "not set"},
      {[=](auto& c) { c.correlations[Key::VP].coefficients[5] = kInfinity; }, "VP", "finite"},
      {[](auto& c) { c.correlations[Key::VP].tmin = 200.5; }, "VP", "tmin"},
      {[](auto& c) { c.correlations[Key::VP].pmin = 1e16; }, "VP", "pmin"},
      {[=](auto& c) { c.correlations[Key::VP].tmax = kInfinity; }, "VP", "finite"},
      {[](auto& c) { c.correlations[Key::VP].yPower = kEmpty; }, "VP", "not set"},
      {[](auto& c) { c.correlations[Key::VP].xShape = eNoShapeDefined; }, "VP", "transformation"},
      {[](auto& c) { c.correlations[Key::VP].yShape = static_cast<tagXYShapeEnum>(0); }, "VP", "transformation"},
      {[](auto& c) {
         c.correlations[Key::IGH] = enthalpy(PropCurveVELDB3, {1, 2, 3, 4, 5, 6});
       },
       "IGH", "instead of 7"},
      {[](auto& c) { c.correlations[Key::IGH] = enthalpy(PropCurveVELDB1); }, "IGH", "VELDB3"},
      {[](auto& c) { c.correlations[Key::IGH] = enthalpy(), c.constants[Key::IGCP] = 30; }, "IGCP", "derive"},
  };
  for (const Case& refused : cases) {
    auto compounds = sample();
    refused.spoil(compounds.front());
    try {
      encodeDatabase(compounds);
      ADD_FAILURE() << refused.field << " passed: " << refused.why;
    } catch (const std::invalid_argument& error) {
      EXPECT_THAT(error.what(), StartsWith("compound " + std::to_string(compounds[0].number) + " ("));
      EXPECT_THAT(error.what(), HasSubstr(std::string("), ") + refused.field + ": "));
      EXPECT_THAT(error.what(), HasSubstr(refused.why));
    }
  }
}

TEST(DatabaseWriter, AcceptsTheLargestOfEverything) {
  auto compounds = sample();
  compounds[0].number = std::numeric_limits<std::int32_t>::max();
  compounds[0].name = std::string(50, 'n');
  compounds[0].cas = std::string(20, '~');
  compounds[0].synonyms.assign(64, std::string(74, 's'));
  compounds[0].unifac.assign(100, {32767, 32767});
  const auto files = encodeDatabase(compounds);
  const DatabaseDecoder database(files.index, files.data);
  EXPECT_EQ(database.text(std::numeric_limits<std::int32_t>::max(), "PName"), std::string(50, 'n'));
  EXPECT_EQ(database.synonyms.size(), 65u);
  EXPECT_EQ(database.number<std::int16_t>(compounds[0].number, "UNIFAC", 199), 32767);
}

DatabaseFiles filesOf(const char* index, const char* data) {
  const auto bytes = [](std::string_view text) {
    const auto view = std::as_bytes(std::span(text));
    return std::vector<std::byte>(view.begin(), view.end());
  };
  return {bytes(index), bytes(data)};
}

TEST(SaveDatabase, MakesTheDirectoryAndReplacesFiles) {
  const test::TemporaryDirectory temporary;
  const auto directory = temporary.path() / u8"st\u00f6ff" / u8"\u6c34";
  saveDatabase(filesOf("old index, longer", "old data"), directory);
  saveDatabase(filesOf("index", "data"), directory);
  EXPECT_EQ(test::readFile(directory / "purecmp1.idx"), "index");
  EXPECT_EQ(test::readFile(directory / "purecmp1.dat"), "data");
  EXPECT_THAT(test::namesIn(directory), ElementsAre("purecmp1.dat", "purecmp1.idx"));
}

TEST(SaveDatabase, PutsEverythingBackWhenAFileCannotBeReplaced) {
  for (const char* blocked : {"purecmp1.idx", "purecmp1.dat"}) {
    const std::string other = blocked == std::string("purecmp1.idx") ? "purecmp1.dat" : "purecmp1.idx";
    const test::TemporaryDirectory temporary;
    std::filesystem::create_directories(temporary.path() / blocked / "inner");
    test::writeFile(temporary.path() / other, "as it was");
    EXPECT_THROW(saveDatabase(filesOf("index", "data"), temporary.path()), std::runtime_error);
    EXPECT_EQ(test::readFile(temporary.path() / other), "as it was");
    EXPECT_THAT(test::namesIn(temporary.path()), ElementsAre("purecmp1.dat", "purecmp1.idx"));
    std::filesystem::remove(temporary.path() / other);
    EXPECT_THROW(saveDatabase(filesOf("index", "data"), temporary.path()), std::runtime_error);
    EXPECT_THAT(test::namesIn(temporary.path()), ElementsAre(blocked));
  }
}

TEST(SaveDatabase, RefusesWhatCannotBeADirectory) {
  const test::TemporaryDirectory temporary;
  const auto file = temporary.path() / "file";
  test::writeFile(file, "text");
  for (const auto& place : {file, file / "below"}) {
    EXPECT_THROW(saveDatabase(filesOf("index", "data"), place), std::runtime_error);
  }
  EXPECT_EQ(test::readFile(file), "text");
}

}  // namespace
