#include "tools/qsdb.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "persist/database_writer.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
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
constexpr const char* kSmallSource = R"({
  "description": "a small one",
  "sources": {"s": {"title": "t", "authors": "a", "licence": "l"}},
  "identity_sources": {"number": "s", "name": "s", "iupac_name": "s", "formula": "s", "cas": "s", "family": "s",
    "dippr_id": "s", "synonyms": "s", "unifac": "s"},
  "units": {"MW": "kg/kmol", "VP": "kPa"},
  "compounds": [
    {
      "number": 5,
      "name": "Five",
      "iupac_name": "pentanoid",
      "formula": "X5",
      "cas": "5-5-5",
      "family": "Nitrile",
      "dippr_id": 2147483647,
      "synonyms": ["V", "cinq"],
      "unifac": [{"subgroup": 1, "count": 2}],
      "constants": {"MW": {"value": 1.5, "unit": "kg/kmol", "source": "s"}},
      "correlations": {"VP": {"form": "ANTO1", "coefficients": [1, 2, 3, 4, 5], "tmin": 1, "tmax": 2, "pmin": 3,
        "pmax": 4, "xshape": "COMxr", "yshape": "COMlnxp", "xpow": 2, "ypow": 3, "unit": "kPa", "source": "s"}}
    }
  ]
})";

TEST(QsdbBuild, ReadsEveryMemberOfASource) {
  const qs::test::TemporaryDirectory temporary;
  const auto source = temporary.path() / u8"st\u00f6ff.json";
  qs::test::writeFile(source, kSmallSource);
  const auto outcome = build(source, temporary.path() / "new" / u8"\u6c34");
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  qs::database::CompoundData five;
  five.number = 5;
  five.name = "Five";
  five.iupacName = "pentanoid";
  five.formula = "X5";
  five.cas = "5-5-5";
  five.family = eNitrile;
  five.dipprId = 2147483647;
  five.synonyms = {"V", "cinq"};
  five.unifac = {{1, 2}};
  five.constants = {{qs::Key::MW, 1.5}};
  five.correlations[qs::Key::VP] = {PropCurveANTO1, {1, 2, 3, 4, 5}, 1, 2, 3, 4, COMxr, COMlnxp, 2, 3};
  const auto files = qs::database::encodeDatabase({&five, 1});
  const auto isFile = [&](const char* name, const std::vector<std::byte>& content) {
    const std::string bytes = qs::test::readFile(temporary.path() / "new" / u8"\u6c34" / name);
    return std::ranges::equal(std::as_bytes(std::span(bytes)), content);
  };
  EXPECT_TRUE(isFile("purecmp1.idx", files.index));
  EXPECT_TRUE(isFile("purecmp1.dat", files.data));
}

TEST(QsdbBuild, RefusesFaultySourcesAndLeavesTheDatabaseAsItWas) {
  const struct {
    const char *replaced, *by;
    std::vector<const char*> message;
  } cases[] = {
      {"\"number\": 5,", "\"number\": 5", {"source.json:10: ", "syntax"}},
      {"1.5", "1e999", {":18:", "1e999"}},
      {"\"name\": \"Five\",", "\"name\": \"Five\", \"name\": \"V\",", {":10:", "\"name\" stands twice"}},
      {"\"name\": \"Five\",", "", {"source.json: compound at position 1", "\"name\""}},
      {"\"number\": 5", "\"number\": \"5\"", {"source.json: compound at position 1, number", "integer"}},
      {"\"number\": 5", "\"number\": 2147483648", {"source.json: compound at position 1, number", "32-bit"}},
      {"2147483647", "18446744073709551615", {"source.json: compound 5 (Five), dippr_id", "32-bit"}},
      {"Nitrile", "nitrile", {"source.json: compound 5 (Five), family", "\"nitrile\""}},
      {"[\"V\", \"cinq\"]", "[7]", {"source.json: compound 5 (Five), synonyms", "text"}},
      {"[\"V\", \"cinq\"]", "\"V\"", {"source.json: compound 5 (Five), synonyms", "list"}},
      {"{\"MW\": {", "{\"mw\": {", {"source.json: compound 5 (Five)", "\"mw\""}},
      {"{\"MW\": {", "{\"TC\": {", {"source.json: compound 5 (Five), TC", "units"}},
      {"\"unit\": \"kg/kmol\"", "\"unit\": \"g/kmol\"", {"source.json: compound 5 (Five), MW", "\"g/kmol\""}},
      {"\"source\": \"s\"}}", "\"source\": \"x\"}}", {"source.json: compound 5 (Five), MW", "no source \"x\""}},
      {"\"value\": 1.5", "\"value\": \"1.5\"", {"source.json: compound 5 (Five), MW, value", "number"}},
      {"ANTO1", "ANTO3", {"source.json: compound 5 (Five), VP, form", "\"ANTO3\""}},
      {"[1, 2, 3, 4, 5]", "[1, 2, 3, 4, null]", {"source.json: compound 5 (Five), VP, coefficients", "number"}},
      {"\"tmin\": 1,", "", {"source.json: compound 5 (Five), VP", "\"tmin\""}},
      {"COMxr", "COMxrx", {"source.json: compound 5 (Five), VP, xshape", "\"COMxrx\""}},
      {"\"pmin\"", "\"pmim\"", {"source.json: compound 5 (Five), VP", "\"pmim\""}},
      {"\"licence\": \"l\"", "\"license\": \"l\"", {"source.json: sources, s", "\"licence\""}},
  };
  const qs::test::TemporaryDirectory temporary;
  const auto source = temporary.path() / "source.json";
  const auto directory = temporary.path() / "database";
  qs::test::writeFile(source, kSmallSource);
  ASSERT_EQ(build(source, directory).code, 0);
  const std::string index = qs::test::readFile(directory / "purecmp1.idx");
  for (const auto& faulty : cases) {
    std::string text = kSmallSource;
    const auto place = text.find(faulty.replaced);
    ASSERT_NE(place, std::string::npos) << faulty.replaced;
    qs::test::writeFile(source, text.replace(place, std::string_view(faulty.replaced).size(), faulty.by));
    const auto outcome = build(source, directory);
    EXPECT_EQ(outcome.code, 1) << faulty.by;
    for (const char* part : faulty.message) EXPECT_THAT(outcome.err, HasSubstr(part)) << faulty.by;
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(qs::test::namesIn(directory), ElementsAre("purecmp1.dat", "purecmp1.idx"));
    EXPECT_EQ(qs::test::readFile(directory / "purecmp1.idx"), index);
  }
}

TEST(QsdbBuild, NamesFilesThatItCannotReadOrWrite) {
  const qs::test::TemporaryDirectory temporary;
  const auto missing = build(temporary.path() / "missing.json", temporary.path() / "database");
  EXPECT_EQ(missing.code, 1);
  EXPECT_THAT(missing.err, HasSubstr("missing.json"));
  const auto source = temporary.path() / "source.json";
  qs::test::writeFile(source, kSmallSource);
  const auto blocked = build(source, source / "database");
  EXPECT_EQ(blocked.code, 1);
  EXPECT_THAT(blocked.err, HasSubstr("database"));
  EXPECT_THAT(qs::test::namesIn(temporary.path()), ElementsAre("source.json"));
}

TEST(Qsdb, TellsHowItIsUsed) {
  const auto help = run({"--help"});
  EXPECT_EQ(help.code, 0);
  EXPECT_THAT(help.out, HasSubstr("build"));
  const auto version = run({"--version"});
  EXPECT_EQ(version.code, 0);
  EXPECT_THAT(version.out, HasSubstr("1.0"));
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{}, {"biuld"}, {"build"}, {"build", "source"}, {"build", "a", "b", "c"}}) {
    const auto outcome = run(wrong);
    EXPECT_NE(outcome.code, 0);
    EXPECT_THAT(outcome.err, Not(IsEmpty()));
  }
}

}  // namespace
