#include "persist/database_writer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <stdexcept>

#include "bank/json_source.h"
#include "props/forms.h"
#include "tests/support/files.h"
#include "tests/support/numbers.h"
#include "tests/support/record_log.h"

namespace {

using namespace qs;
using namespace qs::database;
using testing::HasSubstr;
using testing::StartsWith;
using testing::ThrowsMessage;

// Two compounds that bring every kind of field; the second, with the smaller number, omits nearly all.
std::vector<CompoundData> sample() {
  return bank::compoundsOf(bank::readSource(test::kSourceFolder / "tests/tools/sample_source.json"));
}

// What readers find: the fields, and each compound with its synonyms and its record.
std::string contentsOf(const std::vector<CompoundData>& compounds) {
  const DatabaseFiles files = encodeDatabase(compounds);
  const Catalogue catalogue(files.index);
  std::string text;
  for (const Field& field : catalogue.fields())
    text += narrow(field.name) + ' ' + std::to_string(static_cast<int>(field.kind)) + ' ' + std::to_string(field.size) +
            "; ";
  for (std::size_t i = 0; i < catalogue.indexRecordCount(); ++i) {
    const IndexRecord record = catalogue.indexRecord(i);
    text += '\n' + std::to_string(record.compound) + ' ' + narrow(record.name) + ' ' + narrow(record.identifier) + ' ';
    for (const Synonym& synonym : catalogue.synonymsOf(record.compound))
      text += narrow(catalogue.synonymText(synonym)) + ' ';
    test::RecordLog log;
    EXPECT_EQ(readRecord(catalogue, files.data, record.dataRecord, log), S_OK);
    text += log.text();
  }
  return text;
}

std::optional<std::uint64_t> buildOf(const std::vector<CompoundData>& compounds) {
  const DatabaseFiles files = encodeDatabase(compounds);
  EXPECT_EQ(readHeader(files.index).build, readHeader(files.data).build);
  return readHeader(files.index).build;
}

TEST(DatabaseWriter, ReadersFindAllThatACompoundHas) {
  EXPECT_EQ(
      contentsOf(sample()),
      "PName 5 50; CName 5 100; Formula 5 30; CASN 5 20; DIPPRID 3 4; DDBID 3 4; PPDSID 3 4; CMAID 3 4; PPkg 3 4; "
      "Family 2 2; NonCondensable 2 2; SubComp 2 2; UNIFAC 6 2; MW 4 8; ACEN 4 8; PRPVOLT 4 8; SRKVC 4 8; LDN 7 2; "
      "VP 7 6; \n"
      "7 Sparse  first PName=Sparse CName= Formula= CASN= DIPPRID=-32767 DDBID=-32767 PPDSID=-32767 CMAID=-32767 "
      "PPkg=-32767 Family=-32767 NonCondensable=-32767 SubComp=-32767 UNIFAC=0*0 0*0 MW=-32767 ACEN=-32767 "
      "PRPVOLT=-32767 SRKVC=-32767 LDN=1000(0 0 )T-32767..-32767 P-32767..-32767 X-32767^-32767 Y-32767^-32767 "
      "VP=19(21 22 23 0 0 0 )T10..20 P1e-05..1e+15 X1^1 Y1^1 \n"
      "300 Full 74-84-0 second name " +
          std::string(74, 'x') +
          " PName=Full CName=2,2'-Full Formula=C2H6 CASN=74-84-0 DIPPRID=2 DDBID=-32767 PPDSID=-32767 CMAID=-32767 "
          "PPkg=-7 Family=5 NonCondensable=1 SubComp=-32767 UNIFAC=1*2 300*4 MW=30.07 ACEN=-0 PRPVOLT=-32767 "
          "SRKVC=-32767 LDN=25(11 12 )T90..300 P1e-05..1e+15 X1^1 Y1^1 "
          "VP=4(1 2 3 4 5 6 )T100..200 P0.5..9e+09 X3^2 Y7^0.5 ");
}

// The identifier is a checksum of both files: with it every byte of them is as it was.
TEST(DatabaseWriter, TheBuildIdentifierFollowsFromTheCompounds) {
  auto compounds = sample();
  const auto first = buildOf(compounds);
  EXPECT_EQ(first, 0x868FB37440BB13D0u);
  std::ranges::reverse(compounds);
  EXPECT_EQ(buildOf(compounds), first) << "the same in another order";
  compounds[0].correlations[Key::VP].tmax += 1;  // in the data file alone
  const auto second = buildOf(compounds);
  EXPECT_NE(second, first);
  compounds[0].synonyms = {"other"};  // in the index file alone
  EXPECT_NE(buildOf(compounds), second);
}

// Readers derive both from IGH, which a field of their own would undo for compounds that leave it empty.
TEST(DatabaseWriter, WritesDerivedIdealGasCorrelationsOnlyBesideOthers) {
  std::vector<CompoundData> compounds(3);
  for (std::int32_t number = 0; CompoundData & each : compounds) each.number = ++number, each.name = "X";
  compounds[0].correlations[Key::IGH] =
      compounds[1].correlations[Key::IGH] = {PropCurveVELDB3, {1, 2, 3, 4, 5, 6, 7}, 50, 1000};
  const std::string unset = "T-32767..-32767 P-32767..-32767 X-32767^-32767 Y-32767^-32767 ";
  const std::string range = "T50..1000 P1e-05..1e+15 X1^1 Y1^1 ", own = "T60..70 P1e-05..1e+15 X1^1 Y1^1 ";
  const std::string ofIgh = "IGH=2(1 2 3 4 5 6 7 )" + range;
  EXPECT_THAT(contentsOf(compounds), HasSubstr(ofIgh + "\n2 X"));

  compounds[0].correlations[Key::IGH].xShape = compounds[0].correlations[Key::IGH].yShape = COMlnx;
  compounds[0].correlations[Key::IGCP] = {PropCurvePOLY2, {31, 32, 33}, 60, 70};
  compounds[2].correlations[Key::IGS] = {PropCurvePOLY2, {41, 42, 43}, 60, 70};
  const std::string all = contentsOf(compounds);
  EXPECT_THAT(all, HasSubstr("IGS=10(1 2 3 4 5 6 7 )" + range + "IGCP=19(31 32 33 0 0 0 0 )" + own + "\n2 X"));
  EXPECT_THAT(all, HasSubstr(ofIgh + "IGS=10(1 2 3 4 5 6 7 )" + range + "IGCP=9(1 2 3 4 5 6 0 )" + range + "\n3 X"));
  EXPECT_THAT(all, HasSubstr("IGH=1000(0 0 0 0 0 0 0 )" + unset + "IGS=19(41 42 43 0 0 0 0 )" + own +
                             "IGCP=1000(0 0 0 0 0 0 0 )" + unset));
}

// What a source can hold of it, tests/tools/faulty_sources.json has.
TEST(DatabaseWriter, RefusesWhatTheFilesCannotHold) {
  const std::pair<std::function<void(CompoundData&, Correlation&)>, const char*> cases[] = {
      {[](auto& c, auto&) { c.family = static_cast<tagCompoundFamilyEnum>(14); }, "Family: no such"},
      {[](auto& c, auto&) { c.constants[Key::TC] = -kInfinity; }, "TC: not a finite"},
      {[](auto&, auto& vp) { vp.form = static_cast<tagEquationShapeEnum>(kFormCount); }, "VP: no such form"},
      {[](auto&, auto& vp) { vp.coefficients[5] = kInfinity; }, "VP: not a finite"},
      {[](auto&, auto& vp) { vp.xShape = eNoShapeDefined; }, "VP: no such transformation"},
      {[](auto&, auto& vp) { vp.yShape = static_cast<tagXYShapeEnum>(0); }, "VP: no such transformation"},
  };
  for (const auto& [spoil, why] : cases) {
    auto compounds = sample();
    spoil(compounds[0], compounds[0].correlations[Key::VP]);
    EXPECT_THAT([&] { encodeDatabase(compounds); },
                ThrowsMessage<std::invalid_argument>(StartsWith(std::string("compound 300 (Full), ") + why)));
  }
}

TEST(DatabaseWriter, AcceptsTheLargestOfEverything) {
  auto compounds = sample();
  compounds[0].number = std::numeric_limits<std::int32_t>::max();
  compounds[0].name = std::string(50, 'n');
  compounds[0].synonyms.assign(64, std::string(74, 's'));
  compounds[0].unifac.assign(100, {32767, 32767});
  EXPECT_NO_THROW(encodeDatabase(compounds));
}

}  // namespace
