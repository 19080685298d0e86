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
"identity_sources": {"number": "s", "name": "r", "cass": "s"}, "units": {"MW": "kg/kmol", "TCC": "K", "TC": "K", "PC": "barr"},
"waivers": [{"rule": "r", "compound": 1, "field": "TC", "reason": "known"}, {"rule": "r", "reason": "", "for": 1}],
"compounds": [
{"number": 1, "name": "A", "formula": "C", "cas": "1", "cas": "2",
 "constants": {
  "TC": {"value": 3, "unit": "K", "source": "s", "kind": "measured", "quality": "good", "uncertainty": "1 %", "note": "n"}, "PC": {"value": 1},
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
unit:2: units: PC: "barr" cannot be converted to "kPa"; did you mean "bar"?
name:2: units: no property key "TCC"; did you mean "TC"?
shape:3: waivers: unknown member "for"
shape:5: member "cas" stands twice
unit:8: compound 1 (A), MW: the unit is "kg/mol", not "kg/kmol" as in units
name:8: compound 1 (A), MW: no source "S"; did you mean "s"?
name:8: compound 1 (A), MW: kind: no kind "guessed"
name:8: compound 1 (A), MW: quality: no quality "god"; did you mean "good"?
shape:8: compound 1 (A), MW: value: not a number
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
            std::tuple("s", eKindMeasured, eQualityGood, "1 %", "n", 7));
  ASSERT_EQ(source.waivers.size(), 1u);
  EXPECT_EQ(std::tuple(source.waivers[0].compound, source.waivers[0].field, source.waivers[0].reason),
            std::tuple(1, "TC", "known"));
  EXPECT_EQ(source.compounds[1].data.cas, "3");
}

// Values of a list, and limits; what cannot be converted is refused.
TEST(JsonSource, ConvertsUnits) {
  const TemporaryDirectory temporary;
  const auto file = temporary.path() / "s.json";
  writeFile(file, R"({"description": "", "sources": {}, "identity_sources": {},
"units": {"TC": "degC", "PC": "bar", "VP": "Pa", "LDN": "kmol/m3", "LCP": "degC", "NBP": "degC", "ST": "mN/m"},
"compounds": [{"number": 1, "name": "A",
 "constants": {"TC": {"value": 25, "unit": "degC"}, "PC": {"value": 220.64}, "LDN": {"value": 55}},
 "correlations": {
  "VP": {"form": "POLY2", "coefficients": [1000, 2000, 3000], "tmin": 0, "tmax": 212, "pmax": 1, "tunit": "degF",
         "punit": "bar"},
  "ST": {"form": "EXPO2", "coefficients": [1, 2], "tmin": 1, "tmax": 2, "unit": "mN/m"},
  "NBP": {"form": "POLY2", "coefficients": [1, 2, 3], "tmin": 1, "tmax": 2, "tunit": "kPa"}}}]})");
  std::vector<Finding> findings;
  const auto compound = readSource(file, findings).compounds.at(0).data;
  std::string texts;
  for (const Finding& finding : findings)
    texts += finding.rule + ' ' + std::to_string(finding.line) + ' ' + finding.field + ": " + finding.message + '\n';
  EXPECT_EQ(texts, R"x(unit 2 units: LCP: "degC" cannot be converted to "kJ/(kmol K)"
unit 2 units: LDN: "kmol/m3" cannot be converted to "kg/m3": that takes the molecular weight
unit 8 ST: "mN/m" cannot be converted to "N/m" here: no coefficient of the form EXPO2 takes a factor
unit 9 NBP: "kPa" cannot be converted to "K"
)x");
  EXPECT_THAT(compound.constants, ElementsAre(std::pair(qs::Key::TC, 298.15), std::pair(qs::Key::PC, 22064.0)));
  ASSERT_EQ(compound.correlations.size(), 1u);
  const auto& pressure = compound.correlations.at(qs::Key::VP);
  EXPECT_THAT(pressure.coefficients, ElementsAre(1, 2, 3));
  EXPECT_NEAR(pressure.tmin, 255.3722222222, 1e-9);
  EXPECT_NEAR(pressure.tmax, 373.15, 1e-9);
  EXPECT_EQ(pressure.pmin, 1e-5);
  EXPECT_EQ(pressure.pmax, 100);
}

}  // namespace
