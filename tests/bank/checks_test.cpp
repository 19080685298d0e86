// What `qsdb check` finds in faulty sources, and in the bundled data.
#include "bank/checks.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "bank/bounds.h"
#include "bank/examination.h"
#include "bank/json_source.h"
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
                                                               "NBP, 253.24 [order, warning, waived: it sublimes]\n"),
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

TEST(BundledBank, HasNoFindingThatIsNotWaived) {
  const bank::Source bundled = bank::readSource(kSourceFolder / "data/compounds.json");
  const TemporaryDirectory database;
  database::saveDatabase(bank::encode(bundled), database.path());
  for (const auto& place : {bundled.file, database.path()}) {
    const auto outcome = check(place, false);
    EXPECT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr(" 0 findings, " + std::to_string(bundled.waivers.size()) + " waived\n"));
  }
}

// A change of one value is found in as many compounds as have what the rule needs.
TEST(BundledBank, IsAskedByEveryRuleOfValues) {
  const bank::Source bundled = bank::readSource(kSourceFolder / "data/compounds.json");
  const auto constant = [](Key key, double factor, double summand) {
    return [=](database::CompoundData& data) {
      if (const auto found = data.constants.find(key); found != data.constants.end())
        found->second = found->second * factor + summand;
    };
  };
  // The first coefficient; of VP it is in the exponent.
  const auto coefficient = [](Key key, double factor, double summand) {
    return [=](database::CompoundData& data) {
      double& first = data.correlations.at(key).coefficients[0];
      first = first * factor + summand;
    };
  };
  const struct {
    const char* rule;
    std::function<void(database::CompoundData&)> change;
    std::ptrdiff_t count;
  } rows[] = {
      {"molecular-weight", constant(Key::MW, 1.01, 0.0), 54},
      {"critical-compressibility", constant(Key::ZC, 1.05, 0.0), 54},
      {"order", constant(Key::NBP, 1.0, 1000.0), 53},
      {"formation", constant(Key::IGGF25, 1.0, 1500.0), 54},
      {"combustion", constant(Key::IGHC25, 1.0, 1000.0), 53},
      {"acentric-factor", constant(Key::ACEN, 1.0, -0.05), 54},
      {"boiling-point", coefficient(Key::VP, 1.0, 0.1), 53},
      {"critical-pressure", coefficient(Key::VP, 1.0, 0.1), 52},
      {"clapeyron", coefficient(Key::HVP, 2.0, 0.0), 54},
      {"trouton", coefficient(Key::HVP, 2.5, 0.0), 52},
      {"liquid-density", coefficient(Key::LDN, 2.0, 0.0), 54},
      {"standard-density", constant(Key::SLDN, 1.1, 0.0), 46},
      {"liquid-viscosity", coefficient(Key::LVS, 1.0, 7.0), 53},
      {"ideal-gas", coefficient(Key::IGH, 1.0, 10.0), 54},
      {"limits", constant(Key::TC, 0.4, 0.0), 54},
  };
  for (const auto& [rule, change, count] : rows) {
    bank::Source changed = bundled;
    for (bank::Compound& compound : changed.compounds) change(compound.data);
    std::set<std::string> compounds;
    for (const bank::Finding& finding : bank::check(changed))
      if (finding.rule == rule) compounds.insert(finding.compound);
    EXPECT_EQ(std::ssize(compounds), count) << rule;
  }
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
  std::ostringstream out, err;
  EXPECT_EQ(tools::runQsdb({"check", "--rules"}, out, err), 0) << err.str();
  EXPECT_EQ(std::ranges::count(out.str(), '\n'), std::ssize(bank::rules()));
  for (const Key key : kKeysInOrder) {
    const auto [lowest, highest] = bank::boundsOf(key);
    EXPECT_EQ(bounds[narrow(nameOf(key))], bank::numberText(lowest) + " | " + bank::numberText(highest))
        << narrow(nameOf(key));
  }
}

}  // namespace
}  // namespace qs::test
