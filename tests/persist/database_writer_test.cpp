#include "persist/database_writer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <set>
#include <stdexcept>

#include "props/forms.h"
#include "tests/support/database_builder.h"
#include "tests/support/record_log.h"

namespace {

using namespace qs;
using namespace qs::database;
using qs::test::Bytes;
using testing::HasSubstr;
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

// With the build identifier that a file has.
Bytes headerOf(int fields, int compounds, std::span<const std::byte> file) {
  Bytes header = Bytes().real(2.0);
  for (const std::byte byte : file.subspan(8, 8)) header.integer(std::to_integer<int>(byte), 1);
  return header.zerosTo(18).int32(78).int32(fields).int32(compounds).text("QSB1", 4).zerosTo(78);
}

TEST(DatabaseWriter, LaysBothFilesOut) {
  const struct {
    const char *name, *kind;
    int size;
  } fields[] = {{"PName", "String", 50},
                {"CName", "String", 100},
                {"Formula", "String", 30},
                {"CASN", "String", 20},
                {"DIPPRID", "Long Integer", 4},
                {"DDBID", "Long Integer", 4},
                {"PPDSID", "Long Integer", 4},
                {"CMAID", "Long Integer", 4},
                {"PPkg", "Long Integer", 4},
                {"Family", "Short Integer", 2},
                {"NonCondensable", "Short Integer", 2},
                {"SubComp", "Short Integer", 2},
                {"UNIFAC", "Group", 2},
                {"MW", "Double", 8},
                {"ACEN", "Double", 8},
                {"PRPVOLT", "Double", 8},
                {"SRKVC", "Double", 8},
                {"LDN", "Equation", 2},
                {"VP", "Equation", 6}};
  const DatabaseFiles files = encodeDatabase(sample());
  Bytes index = headerOf(19, 2, files.index);
  int number = 0;
  for (const auto& field : fields) index.int32(++number).int32(field.size).text(field.name, 50).text(field.kind, 20);
  // Ordered by number. A record has 200 bytes of text, 20 and 6 of numbers, 8 of groups, 32 of constants, 76 and 108 of
  // equations: 450, which take 6 records of 78.
  index.append(test::indexRecord(7, 0, "Sparse")).append(test::indexRecord(300, 6, "Full", "74-84-0"));
  index.int32(7)
      .text("first", 74, '\0')
      .int32(300)
      .text("second name", 74, '\0')
      .int32(300)
      .text(std::string(74, 'x'), 74);

  Bytes data = headerOf(19, 2, files.index);
  data.text("Sparse", 200, '\0');
  for (int i = 0; i < 5; ++i) data.int32(-32767);
  for (int i = 0; i < 3; ++i) data.int16(-32767);
  data.int32(0).int32(0).reals({kEmpty, kEmpty, kEmpty, kEmpty});
  data.int16(-32767).reals({kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty}).int16(-32767).int16(-32767);
  data.reals({kEmpty, kEmpty}).int16(0).int16(0).int16(0);
  data.int16(19).reals({21, 22, 23, kEmpty, kEmpty, kEmpty, 10, 20, 1e-5, 1e15}).int16(1).int16(1).reals({1, 1});
  data.zerosTo(7 * 78);
  data.text("Full", 50, '\0').text("2,2'-Full", 100, '\0').text("C2H6", 30, '\0').text("74-84-0", 20, '\0');
  data.int32(2).int32(-32767).int32(-32767).int32(-32767).int32(-7).int16(5).int16(1).int16(-32767);
  data.int16(1).int16(2).int16(300).int16(4).reals({30.07, -0.0, kEmpty, kEmpty});
  data.int16(25).reals({11, 12, 90, 300, 1e-5, 1e15}).int16(1).int16(1).reals({1, 1}).int16(0).int16(0).int16(0);
  data.int16(4).reals({1, 2, 3, 4, 5, 6, 100, 200, 0.5, 9e9}).int16(3).int16(7).reals({2.0, 0.5});
  data.zerosTo(13 * 78);

  EXPECT_EQ(files.index, index.get());
  EXPECT_EQ(files.data, data.get());
}

TEST(DatabaseWriter, TheBuildIdentifierFollowsFromTheCompounds) {
  const auto buildOf = [](const std::vector<CompoundData>& compounds) {
    return readHeader(encodeDatabase(compounds).index).build;
  };
  auto compounds = sample();
  std::set<std::optional<std::uint64_t>> builds = {std::nullopt, buildOf(compounds)};
  std::ranges::reverse(compounds);
  EXPECT_TRUE(builds.contains(buildOf(compounds))) << "the same in another order";
  compounds[0].correlations[Key::VP].tmax += 1;  // in the data file alone
  EXPECT_TRUE(builds.insert(buildOf(compounds)).second);
  compounds[0].synonyms = {"other"};  // in the index file alone
  EXPECT_TRUE(builds.insert(buildOf(compounds)).second);
}

// Readers derive both from IGH, which a field of their own would undo for compounds that leave it empty.
TEST(DatabaseWriter, WritesDerivedIdealGasCorrelationsOnlyBesideOthers) {
  std::vector<CompoundData> compounds(3);
  for (std::size_t i = 0; i < 3; ++i) {
    compounds[i].number = static_cast<std::int32_t>(i) + 1;
    compounds[i].name = "X";
  }
  compounds[0].correlations[Key::IGH] = compounds[1].correlations[Key::IGH] = enthalpy();
  // The equations of a compound.
  const auto equationsOf = [&](LONG compound) {
    const DatabaseFiles files = encodeDatabase(compounds);
    const Catalogue catalogue(files.index);
    test::RecordLog log;
    EXPECT_EQ(readRecord(catalogue, files.data, *catalogue.dataRecordOf(compound), log), S_OK);
    return log.text().substr(log.text().find("IGH"));
  };
  const std::string unset = "T-32767..-32767 P-32767..-32767 X-32767^-32767 Y-32767^-32767 ";
  const std::string range = "T50..1000 P1e-05..1e+15 X1^1 Y1^1 ", own = "T60..70 P1e-05..1e+15 X1^1 Y1^1 ";
  EXPECT_EQ(equationsOf(1), "IGH=2(1 2 3 4 5 6 7 )" + range);

  compounds[0].correlations[Key::IGCP] = {PropCurvePOLY2, {31, 32, 33}, 60, 70};
  compounds[2].correlations[Key::IGS] = {PropCurvePOLY2, {41, 42, 43}, 60, 70};
  EXPECT_EQ(equationsOf(1),
            "IGH=2(1 2 3 4 5 6 7 )" + range + "IGS=10(1 2 3 4 5 6 7 )" + range + "IGCP=19(31 32 33 0 0 0 0 )" + own);
  EXPECT_EQ(equationsOf(2),
            "IGH=2(1 2 3 4 5 6 7 )" + range + "IGS=10(1 2 3 4 5 6 7 )" + range + "IGCP=9(1 2 3 4 5 6 0 )" + range);
  EXPECT_EQ(equationsOf(3), "IGH=1000(0 0 0 0 0 0 0 )" + unset + "IGS=19(41 42 43 0 0 0 0 )" + own +
                                "IGCP=1000(0 0 0 0 0 0 0 )" + unset);
}

TEST(DatabaseWriter, RefusesWhatTheFilesCannotHold) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const struct {
    std::function<void(CompoundData&)> spoil;
    const char* field;
    const char* why;
  } cases[] = {
      {[](auto& c) { c.number = 0; }, "number", "less than 1"},
      {[](auto& c) { c.number = 7; }, "number", "two compounds"},
      {[](auto& c) { c.name = ""; }, "PName", "empty"},
      {[](auto& c) { c.name = std::string(51, 'n'); }, "PName", "longer than 50"},
      {[](auto& c) { c.iupacName = "\xce\xb1-Pinene"; }, "CName", "ASCII"},
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
      {[](auto& c) { c.constants[Key::VP] = 1.0; }, "VP", "single values"},
      {[](auto& c) { c.correlations[Key::SRKVC] = c.correlations[Key::LDN]; }, "SRKVC", "single values"},
      {[](auto& c) { c.correlations[Key::VP].form = static_cast<tagEquationShapeEnum>(kFormCount); }, "VP", "form"},
      {[](auto& c) { c.correlations[Key::VP].coefficients.push_back(1); }, "VP", "7 coefficients instead of 6"},
      {[](auto& c) { c.correlations[Key::VP].coefficients[2] = kEmpty; }, "VP", "not set"},
      {[=](auto& c) { c.correlations[Key::VP].coefficients[5] = kInfinity; }, "VP", "finite"},
      {[](auto& c) { c.correlations[Key::VP].tmin = 200.5; }, "VP", "tmin"},
      {[](auto& c) { c.correlations[Key::VP].pmin = 1e16; }, "VP", "pmin"},
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
  for (const auto& refused : cases) {
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
  EXPECT_NO_THROW(encodeDatabase(compounds));
}

}  // namespace
