// What `qsdb check` finds in faulty sources, and in the bundled data.
#include "bank/checks.h"

#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "bank/bounds.h"
#include "bank/examination.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tools/qsdb.h"

namespace qs::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::FieldsAre;
using testing::HasSubstr;

const std::filesystem::path kFolder = kSourceFolder / "tests/bank";

struct Outcome {
  int code;
  std::string out;
};
Outcome check(const std::filesystem::path& place, bool asJson) {
  std::ostringstream out, err;
  std::vector<std::string> arguments{"check", utf8(place)};
  if (asJson) arguments.push_back("--json");
  const int code = tools::runQsdb(arguments, out, err);
  EXPECT_EQ(err.str(), "");
  return {code, out.str()};
}

// Each fault is the rules that find it, then texts of the sample and what replaces them. The first rule reports the
// line of the last replacement.
TEST(Checks, FindEachFaultByItsRuleAndLine) {
  const TemporaryDirectory temporary;
  const auto file = temporary.path() / "source.json";
  const std::string sample = readFile(kFolder / "two_compounds.json");
  writeFile(file, sample);
  EXPECT_THAT(check(file, false), FieldsAre(0, HasSubstr("2 compounds, 0 findings, 0 waived\n")));

  std::set<std::string> found;
  for (const auto& fault :
       json::parse(readFile(kFolder / "faults.json")).get<std::vector<std::vector<std::string>>>()) {
    SCOPED_TRACE(fault.back());
    std::string text = sample;
    std::ptrdiff_t line = 0;
    for (std::size_t i = 1; i < fault.size(); i += 2) {
      const auto place = text.find(fault[i]);
      ASSERT_NE(place, std::string::npos);
      text.replace(place, fault[i].size(), fault[i + 1]);
      line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(place), '\n');
    }
    writeFile(file, text);
    const auto outcome = check(file, true);
    EXPECT_EQ(outcome.code, 1);

    std::istringstream words(fault[0]);
    const std::vector<std::string> expected{std::istream_iterator<std::string>(words), {}};
    std::set<std::string> rules;
    bool isInLine = false;
    for (const json& finding : json::parse(outcome.out)) {
      rules.insert(finding["rule"]);
      if (finding["rule"] == expected[0] && finding["line"] == line) isInLine = true;
    }
    EXPECT_EQ(rules, std::set<std::string>(expected.begin(), expected.end())) << outcome.out;
    EXPECT_TRUE(isInLine) << line << outcome.out;
    found.merge(rules);
  }
  for (const bank::Rule& rule : bank::rules())
    EXPECT_TRUE(rule.name == "not-kept" || found.contains(std::string(rule.name))) << rule.name;
}

// The sample with a text replaced, waived where there is a reason.
std::string faulty(const std::string& old, const std::string& text, const std::string& waiver = "") {
  std::string sample = readFile(kFolder / "two_compounds.json");
  sample.replace(sample.find(old), old.size(), text);
  return sample.replace(sample.find("[]"), 2, "[" + waiver + "]");
}

TEST(Checks, ListWhatIsWaivedAndDoNotCountIt) {
  const TemporaryDirectory temporary;
  const auto file = temporary.path() / "source.json";
  writeFile(file, faulty("353.24", "253.24",
                         R"({"rule": "order", "compound": 21, "field": "NBP", "reason": "it sublimes"})"));
  EXPECT_THAT(check(file, false), FieldsAre(0, AllOf(HasSubstr(": compound 21 (Benzene), NBP: MP, 278.68, is not below "
                                                               "NBP, 253.24 [order, waived: it sublimes]\n"),
                                                     HasSubstr(" 2 compounds, 0 findings, 1 waived\n"))));
  EXPECT_EQ(json::parse(check(file, true).out)[0]["waiver"], "it sublimes");
}

TEST(Checks, ExplainWhatAFactorExplains) {
  const TemporaryDirectory temporary;
  const auto file = temporary.path() / "source.json";
  const std::pair<std::string, std::string> rows[] = {
      {faulty("48.364744721", "55.272500"), "large by a factor of 1000?"},
      {faulty("\"value\": 0.276", "\"value\": 2.2947"), "the gas constant"},
      {faulty("30459", "30.459"), "small by a factor of 1000?"}};
  for (const auto& [text, explanation] : rows) {
    writeFile(file, text);
    EXPECT_THAT(check(file, false), FieldsAre(1, HasSubstr(explanation)));
  }
}

TEST(Checks, ExamineDatabases) {
  const TemporaryDirectory temporary;
  const auto source = temporary.path() / "source.json", database = temporary.path() / "database";
  writeFile(source, faulty("353.24", "253.24"));
  std::ostringstream out, err;
  ASSERT_EQ(tools::runQsdb({"build", utf8(source), utf8(database)}, out, err), 0) << err.str();
  const auto outcome = check(database, true);
  EXPECT_EQ(outcome.code, 1);
  const json findings = json::parse(outcome.out);
  ASSERT_EQ(findings.size(), 1u) << outcome.out;
  EXPECT_FALSE(findings[0].contains("line"));
  EXPECT_EQ(findings[0]["file"], utf8(database));
  EXPECT_EQ(findings[0]["compound"], "compound 21 (Benzene)");
  EXPECT_EQ(tools::runQsdb({"check", utf8(temporary.path() / "missing")}, out, err), 2);
}

TEST(Checks, FindNothingInTheBundledDataThatIsNotWaived) {
  const auto outcome = check(kSourceFolder / "data/compounds.json", false);
  EXPECT_EQ(outcome.code, 0) << outcome.out;
}

// docs/checks.md has a section for each rule, and rows "| `KEY`, `KEY` | lowest | highest | reason |".
TEST(Checks, AreDocumented) {
  std::istringstream document(readFile(kSourceFolder / "docs/checks.md"));
  std::set<std::string> sections;
  std::map<std::string, std::string> bounds;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("### `")) sections.insert(line.substr(5, line.size() - 6));
    if (!line.starts_with("| `")) continue;
    const auto keysEnd = line.find(" | ");
    const auto highest = line.find(" | ", keysEnd + 3), reason = line.find(" | ", highest + 3);
    ASSERT_NE(reason, std::string::npos) << line;
    for (std::size_t place = line.find('`'); place < keysEnd;) {
      const auto end = line.find('`', place + 1);
      bounds[line.substr(place + 1, end - place - 1)] = line.substr(keysEnd + 3, reason - keysEnd - 3);
      place = line.find('`', end + 1);
    }
  }
  for (const bank::Rule& rule : bank::rules()) EXPECT_TRUE(sections.contains(std::string(rule.name))) << rule.name;
  EXPECT_EQ(sections.size(), bank::rules().size());
  for (const Key key : kKeysInOrder) {
    const auto [lowest, highest] = bank::boundsOf(key);
    EXPECT_EQ(bounds[narrow(nameOf(key))], bank::numberText(lowest) + " | " + bank::numberText(highest))
        << narrow(nameOf(key));
  }
}

}  // namespace
}  // namespace qs::test
