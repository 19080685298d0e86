#include "tools/qsdb.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "persist/database_record.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/record_log.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Ne;
using testing::Not;

struct Outcome {
  int code;
  std::string out, err;
};

Outcome run(const std::vector<std::string>& arguments) {
  std::ostringstream out, err;
  const int code = qs::tools::runQsdb(arguments, out, err);
  return {code, out.str(), err.str()};
}

std::string utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

Outcome build(const std::filesystem::path& source, const std::filesystem::path& directory) {
  return run({"build", utf8(source), utf8(directory)});
}

TEST(BundledSource, UsesTheDocumentedUnits) {
  const json source = json::parse(qs::test::readFile(qs::test::kSourceFolder / "data" / "compounds.json"));
  const std::string document = qs::test::readFile(qs::test::kSourceFolder / "docs" / "units.md");
  for (const auto& [key, unit] : source["units"].items()) {
    const auto row = document.find("| `" + key + "` |");
    ASSERT_NE(row, std::string::npos) << key;
    const std::string line = document.substr(row, document.find('\n', row) - row);
    EXPECT_THAT(line, testing::EndsWith("| " + unit.get<std::string>() + " |"));
  }
}

// A source of one compound, one value and one correlation.
std::filesystem::path smallSource() { return qs::test::kSourceFolder / "tests/tools/small_source.json"; }

TEST(QsdbBuild, ReadsEveryMemberOfASource) {
  const qs::test::TemporaryDirectory temporary;
  const auto source = temporary.path() / u8"st\u00f6ff.json", directory = temporary.path() / "new" / u8"\u6c34";
  std::filesystem::copy_file(smallSource(), source);
  const auto outcome = build(source, directory);
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  const auto database = qs::database::openDatabase(directory.string<OLECHAR>());
  const auto& catalogue = *database.catalogue;
  EXPECT_EQ(catalogue.synonymText(catalogue.synonymsOf(5)[0]) + catalogue.synonymText(catalogue.synonymsOf(5)[1]),
            OLESTR("Vcinq"));
  qs::test::RecordLog log;
  ASSERT_EQ(readRecord(database, catalogue.dataRecordOf(5).value(), log), S_OK);
  EXPECT_EQ(log.text(),
            "PName=Five CName=pentanoid Formula=X5 CASN=5-5-5 DIPPRID=2147483647 DDBID=-32767 PPDSID=-32767 "
            "CMAID=-32767 PPkg=-32767 Family=10 NonCondensable=-32767 SubComp=-32767 UNIFAC=1*2 MW=1.5 PRPVOLT=-32767 "
            "SRKVC=-32767 VP=21(1 2 3 4 5 )T1..2 P3..4 X2^2 Y36^3 ");
}

TEST(QsdbBuild, RefusesFaultySourcesAndLeavesTheDatabaseAsItWas) {
  const struct {
    const char *replaced, *by, *place, *reason;
  } cases[] = {
      {"\"number\": 5,", "\"number\": 5", "source.json:10: ", "syntax"},
      {"1.5", "1e999", ":18:", "1e999"},
      {"\"name\": \"Five\",", "\"name\": \"Five\", \"name\": \"V\",", ":10:", "\"name\" stands twice"},
      {"\"name\": \"Five\",", "", "source.json: compound at position 1", "\"name\""},
      {"\"number\": 5", "\"number\": \"5\"", "source.json: compound at position 1, number", "integer"},
      {"\"number\": 5", "\"number\": 2147483648", "source.json: compound at position 1, number", "32-bit"},
      {"2147483647", "18446744073709551615", "compound 5 (Five), dippr_id", "32-bit"},
      {"Nitrile", "nitrile", "compound 5 (Five), family", "\"nitrile\""},
      {"[\"V\", \"cinq\"]", "[7]", "compound 5 (Five), synonyms", "text"},
      {"[\"V\", \"cinq\"]", "\"V\"", "compound 5 (Five), synonyms", "list"},
      {"{\"MW\": {", "{\"mw\": {", "source.json: compound 5 (Five)", "\"mw\""},
      {"{\"MW\": {", "{\"TC\": {", "compound 5 (Five), TC", "units"},
      {"\"unit\": \"kg/kmol\"", "\"unit\": \"g/kmol\"", "compound 5 (Five), MW", "\"g/kmol\""},
      {"\"source\": \"s\"}}", "\"source\": \"x\"}}", "compound 5 (Five), MW", "no source \"x\""},
      {"\"value\": 1.5", "\"value\": \"1.5\"", "compound 5 (Five), MW, value", "number"},
      {"ANTO1", "ANTO3", "compound 5 (Five), VP, form", "\"ANTO3\""},
      {"[1, 2, 3, 4, 5]", "[1, 2, 3, 4, null]", "compound 5 (Five), VP, coefficients", "number"},
      {"\"tmin\": 1,", "", "compound 5 (Five), VP", "\"tmin\""},
      {"COMxr", "COMxrx", "compound 5 (Five), VP, xshape", "\"COMxrx\""},
      {"\"pmin\"", "\"pmim\"", "compound 5 (Five), VP", "\"pmim\""},
      {"\"licence\": \"l\"", "\"license\": \"l\"", "source.json: sources, s", "\"licence\""},
  };
  const qs::test::TemporaryDirectory temporary;
  const auto source = temporary.path() / "source.json";
  const auto directory = temporary.path() / "database";
  const std::string small = qs::test::readFile(smallSource());
  ASSERT_EQ(build(smallSource(), directory).code, 0);
  const std::string index = qs::test::readFile(directory / "purecmp1.idx");
  for (const auto& faulty : cases) {
    std::string text = small;
    const auto place = text.find(faulty.replaced);
    ASSERT_NE(place, std::string::npos) << faulty.replaced;
    qs::test::writeFile(source, text.replace(place, std::string_view(faulty.replaced).size(), faulty.by));
    const auto outcome = build(source, directory);
    EXPECT_THAT(outcome, FieldsAre(1, "", HasSubstr(faulty.place))) << faulty.by;
    EXPECT_THAT(outcome.err, HasSubstr(faulty.reason)) << faulty.by;
    EXPECT_THAT(qs::test::namesIn(directory), ElementsAre("purecmp1.dat", "purecmp1.idx"));
    EXPECT_EQ(qs::test::readFile(directory / "purecmp1.idx"), index);
  }
}

TEST(QsdbBuild, NamesFilesThatItCannotReadOrWrite) {
  const qs::test::TemporaryDirectory temporary;
  const auto missing = build(temporary.path() / "missing.json", temporary.path() / "database");
  EXPECT_THAT(missing, FieldsAre(1, "", HasSubstr("missing.json")));
  qs::test::writeFile(temporary.path() / "file", "");
  const auto blocked = build(smallSource(), temporary.path() / "file" / "database");
  EXPECT_THAT(blocked, FieldsAre(1, "", HasSubstr("database")));
  EXPECT_THAT(qs::test::namesIn(temporary.path()), ElementsAre("file"));
}

TEST(Qsdb, TellsHowItIsUsed) {
  EXPECT_THAT(run({"--help"}), FieldsAre(0, HasSubstr("build"), ""));
  EXPECT_THAT(run({"--version"}), FieldsAre(0, HasSubstr("1.0"), ""));
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{}, {"biuld"}, {"build", "source"}, {"build", "a", "b", "c"}})
    EXPECT_THAT(run(wrong), FieldsAre(Ne(0), "", Not(IsEmpty())));
}

}  // namespace
