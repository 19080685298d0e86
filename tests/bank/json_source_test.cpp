#include "bank/json_source.h"

#include <gmock/gmock.h>

#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using namespace qs::test;
using testing::ElementsAre;

// Each fault beside others: all are found, each once, and what has none is read.
TEST(JsonSource, ReportsAllFaultsInOneReading) {
  const TemporaryDirectory temporary;
  const auto file = temporary.path() / "s.json";
  writeFile(file, R"({"description": 1, "sources": {"s": {"title": "t", "authors": "a", "licence": "l", "year": "x"}},
"identity_sources": {"number": "s", "name": "r", "cass": "s"}, "units": {"MW": "kg/kmol", "TCC": "K", "TC": "K"},
"waivers": [{"rule": "r", "compound": 1, "field": "TC", "reason": "known"}, {"rule": "r", "reason": "", "for": 1}],
"compounds": [
{"number": 1, "name": "A", "formula": "C", "cas": "1", "cas": "2",
 "constants": {
  "TC": {"value": 3, "unit": "K", "source": "s", "kind": "measured", "quality": "good", "uncertainty": "1 %", "note": "n"},
  "MW": {"value": "16", "unit": "kg/mol", "source": "S", "kind": "guessed", "quality": "god"}},
 "correlations": {"VP": {"form": "VELDB", "coefficients": [1,
 2,
 "x"], "tmin": 1}}},
 7, {"number": 2}, {"number": 3, "name": "C", "cas": "3"}], "compound": []})");
  std::vector<Finding> findings;
  const Source source = readSource(file, findings);
  std::string texts;
  for (const Finding& finding : findings) {
    const std::string text = textOf(finding), place = qs::test::utf8(file);
    EXPECT_EQ(text.substr(0, place.size()), place);
    texts += finding.rule + text.substr(place.size()) + '\n';
  }
  EXPECT_EQ(texts, R"(shape:1: description: not a text
shape:1: sources: s: year: not an integer
name:2: identity_sources: no member "cass"; did you mean "cas"?
name:2: identity_sources: name: no source "r"
name:2: units: no property key "TCC"; did you mean "TC"?
shape:3: waivers: unknown member "for"
shape:5: member "cas" stands twice
unit:8: compound 1 (A), MW: the unit is "kg/mol", not "kg/kmol"
name:8: compound 1 (A), MW: no source "S"; did you mean "s"?
name:8: compound 1 (A), MW: kind: no kind "guessed"
name:8: compound 1 (A), MW: quality: no quality "god"; did you mean "good"?
shape:8: compound 1 (A), MW: value: not a number
shape:9: compound 1 (A), VP: no member "unit"
unit:9: compound 1 (A), VP: the key is not in units
name:9: compound 1 (A), VP: form: no form "VELDB"; did you mean "VELDB1"?
shape:9: compound 1 (A), VP: no member "tmax"
shape:11: compound 1 (A), VP: coefficients: not a number
shape:12: compound at position 2: not an object
shape:12: compound at position 3: no member "name"
shape:12: unknown member "compound"; did you mean "compounds"?
)");
  ASSERT_EQ(source.compounds.size(), 2u);
  EXPECT_THAT(source.compounds[0].data.constants, ElementsAre(std::pair(qs::Key::TC, 3.0)));
  EXPECT_TRUE(source.compounds[0].data.correlations.empty());
  const Provenance& known = source.compounds[0].provenance.at(qs::Key::TC);
  EXPECT_EQ(std::tuple(known.origin, known.kind, known.quality, known.uncertainty, known.note, known.line),
            std::tuple("s", ValueKind::Measured, Quality::Good, "1 %", "n", 7));
  ASSERT_EQ(source.waivers.size(), 1u);
  EXPECT_EQ(std::tuple(source.waivers[0].compound, source.waivers[0].field, source.waivers[0].reason),
            std::tuple(1, "TC", "known"));
  EXPECT_EQ(source.compounds[1].data.cas, "3");
}

}  // namespace
