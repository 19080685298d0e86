#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "persist/shared_catalogues.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/qsdb.h"

namespace {

using namespace qs::test;
using nlohmann::json;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Ne;
using testing::Not;

Outcome build(const std::filesystem::path& source, const std::filesystem::path& directory) {
  return runQsdb({"build", "--force", utf8(source), utf8(directory)});
}

TEST(BundledSource, UsesTheDocumentedUnits) {
  const json source = json::parse(readFile(kSourceFolder / "data" / "compounds.json"));
  const std::string document = readFile(kSourceFolder / "docs" / "units.md");
  for (const auto& [key, unit] : source["units"].items()) {
    const auto row = document.find("| `" + key + "` |");
    ASSERT_NE(row, std::string::npos) << key;
    const std::string line = document.substr(row, document.find('\n', row) - row);
    EXPECT_THAT(line, testing::HasSubstr("| " + unit.get<std::string>() + " | `e"));
  }
}

std::filesystem::path sampleSource() { return kSourceFolder / "tests/tools/sample_source.json"; }

TEST(QsdbBuild, TakesNamesOutsideAscii) {
  const TemporaryDirectory temporary;
  const auto source = temporary.path() / u8"st\u00f6ff.json", directory = temporary.path() / "new" / u8"\u6c34";
  std::filesystem::copy_file(sampleSource(), source);
  const auto outcome = build(source, directory);
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_EQ(qs::database::openCatalogue(directory.string<OLECHAR>())->indexRecordCount(), 2u);
}

// Each fault is a text of the sample, what replaces it, and parts of the message.
TEST(QsdbBuild, RefusesFaultySourcesAndLeavesTheDatabaseAsItWas) {
  const TemporaryDirectory temporary;
  const auto source = temporary.path() / "source.json", directory = temporary.path() / "database";
  ASSERT_EQ(build(sampleSource(), directory).code, 0);
  const std::string index = readFile(directory / "purecmp1.idx");
  const json faults = json::parse(readFile(kSourceFolder / "tests/tools/faulty_sources.json"));
  ASSERT_EQ(faults.size(), 45u);
  for (const auto& fault : faults.get<std::vector<std::vector<std::string>>>()) {
    std::string text = readFile(sampleSource());
    writeFile(source, text.replace(text.find(fault[0]), fault[0].size(), fault[1]));
    const auto outcome = build(source, directory);
    for (std::size_t part = 2; part < fault.size(); ++part)
      EXPECT_THAT(outcome, FieldsAre(1, "", HasSubstr(fault[part]))) << fault[1];
    EXPECT_THAT(namesIn(directory), ElementsAre("purecmp1.dat", "purecmp1.idx", "purecmp1.src"));
    EXPECT_EQ(readFile(directory / "purecmp1.idx"), index);
  }
}

TEST(QsdbBuild, NamesFilesThatItCannotReadOrWrite) {
  const TemporaryDirectory temporary;
  const auto missing = build(temporary.path() / "missing.json", temporary.path() / "database");
  EXPECT_THAT(missing, FieldsAre(1, "", HasSubstr("missing.json")));
  writeFile(temporary.path() / "file", "");
  const auto blocked = build(sampleSource(), temporary.path() / "file" / "database");
  EXPECT_THAT(blocked, FieldsAre(1, "", HasSubstr("database")));
  EXPECT_THAT(namesIn(temporary.path()), ElementsAre("file"));
}

// A database, and what a killed build leaves of one.
TEST(QsdbBuild, ReplacesADatabaseOnlyWhenItIsTold) {
  for (const char* left : {"purecmp1.idx", "purecmp1.dat", "purecmp1.idx.old", "purecmp1.dat.old"}) {
    const TemporaryDirectory temporary;
    writeFile(temporary.path() / left, "");
    EXPECT_THAT(runQsdb({"build", utf8(sampleSource()), utf8(temporary.path())}),
                FieldsAre(1, "", HasSubstr("--force")));
    EXPECT_THAT(namesIn(temporary.path()), ElementsAre(left));
    EXPECT_EQ(build(sampleSource(), temporary.path()).code, 0);
    EXPECT_THAT(namesIn(temporary.path()), ElementsAre("purecmp1.dat", "purecmp1.idx", "purecmp1.src"));
  }
  const TemporaryDirectory killed;
  writeFile(killed.path() / "purecmp1.dat.new", "");
  EXPECT_EQ(runQsdb({"build", utf8(sampleSource()), utf8(killed.path())}).code, 0);
}

TEST(QsdbBuild, MergesSources) {
  const TemporaryDirectory temporary;
  const auto other = temporary.path() / "other.json", directory = temporary.path() / "database";
  writeFile(other, R"({"description": "", "sources": {}, "identity_sources": {}, "units": {}, "compounds": [
    {"number": 300, "name": "Other"}, {"number": 8, "name": "New"}]})");
  const auto refused = runQsdb({"build", utf8(sampleSource()), utf8(other), utf8(directory)});
  EXPECT_THAT(
      refused,
      FieldsAre(1, "", HasSubstr("other.json:2: compound 300 (Other) has the number of compound 300 (Full) at ")));
  EXPECT_THAT(refused.err, HasSubstr("sample_source.json:9;"));
  for (const auto& [option, name] : {std::pair("--keep", "Full"), std::pair("--replace", "Other")}) {
    ASSERT_EQ(runQsdb({"build", utf8(sampleSource()), utf8(other), utf8(directory), option, "--force"}).code, 0);
    const auto catalogue = qs::database::openCatalogue(directory.string<OLECHAR>());
    ASSERT_EQ(catalogue->indexRecordCount(), 3u);
    EXPECT_EQ(catalogue->indexRecord(2).name, wide(name));
  }
  const auto again = temporary.path() / "again";
  ASSERT_EQ(runQsdb({"build", utf8(directory), utf8(other), "--replace", utf8(again)}).code, 0);
  EXPECT_EQ(readFile(again / "purecmp1.dat"), readFile(directory / "purecmp1.dat"));
}

TEST(QsdbExport, GivesASourceThatBuildsTheSameBytes) {
  const TemporaryDirectory temporary;
  const auto database = temporary.path() / "database", again = temporary.path() / "again";
  const auto file = temporary.path() / "exported.json", sheet = temporary.path() / "sheet.csv";
  const auto source = kSourceFolder / "tests/bank/full_source.json";
  ASSERT_EQ(build(source, database).code, 0);
  EXPECT_THAT(runQsdb({"export", utf8(database), "-o", utf8(file)}), FieldsAre(0, "", ""));
  ASSERT_EQ(build(file, again).code, 0);
  for (const std::string& name : namesIn(database)) EXPECT_EQ(readFile(again / name), readFile(database / name));
  for (const auto& place : {file, source})
    EXPECT_THAT(runQsdb({"export", utf8(place)}), FieldsAre(0, readFile(file), ""));
  EXPECT_THAT(runQsdb({"export", "--csv", utf8(database), "-o", utf8(sheet)}), FieldsAre(0, "", ""));
  EXPECT_THAT(readFile(sheet), testing::StartsWith("number,name,"));

  // What another writer's database has and a source cannot hold is listed.
  const TemporaryDirectory foreign;
  foreign.write(
      "purecmp1.idx",
      indexFile({fieldDefinition("PName", 6, "String"), fieldDefinition("Colour", 8, "Double")}, {indexRecord(1, 0)}));
  foreign.write("purecmp1.dat", header(2.0, 78, 0, 0).zerosTo(78).text("other", 6, '\0').real(1).zerosTo(156));
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"export", utf8(foreign.path()), "-o", utf8(file)},
                                             {"build", utf8(foreign.path()), "--force", utf8(again)},
                                             {"diff", utf8(foreign.path()), utf8(again)}})
    EXPECT_THAT(runQsdb(arguments), FieldsAre(0, testing::_, HasSubstr("Colour: a source cannot hold")));

  EXPECT_THAT(runQsdb({"export", utf8(temporary.path() / "none")}), FieldsAre(Ne(0), "", HasSubstr("No such file")));
  EXPECT_THAT(runQsdb({"export", utf8(database), "-o", utf8(file / "x")}),
              FieldsAre(Ne(0), "", HasSubstr("exported.json")));
  EXPECT_THAT(runQsdb({"export", utf8(temporary.path())}),
              FieldsAre(Ne(0), "", HasSubstr("purecmp1.idx: No such file")));
}

TEST(QsdbDiff, ComparesSourcesAndDatabases) {
  const TemporaryDirectory temporary;
  const auto database = temporary.path() / "database", changed = temporary.path() / "changed.json";
  ASSERT_EQ(build(sampleSource(), database).code, 0);
  EXPECT_THAT(runQsdb({"diff", utf8(sampleSource()), utf8(database)}), FieldsAre(0, "", ""));
  std::string text = readFile(sampleSource());
  writeFile(changed, text.replace(text.find("30.07"), 5, "30.08"));
  EXPECT_THAT(runQsdb({"diff", utf8(database), utf8(changed)}),
              FieldsAre(1, "compound 300 (Full), MW [kg/kmol]: 30.07 -> 30.08\n", ""));
  EXPECT_THAT(runQsdb({"diff", utf8(database), utf8(temporary.path() / "none")}),
              FieldsAre(2, "", HasSubstr("none: ")));
}

TEST(Qsdb, TellsHowItIsUsed) {
  EXPECT_THAT(runQsdb({"--help"}), FieldsAre(0, HasSubstr("build"), ""));
  EXPECT_THAT(runQsdb({"--version"}), FieldsAre(0, HasSubstr("qsdb 1.1"), ""));
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{}, {"biuld"}, {"build", "source"}, {"build", "a", "b", "c"}})
    EXPECT_THAT(runQsdb(wrong), FieldsAre(Ne(0), "", Not(IsEmpty())));
}

}  // namespace
