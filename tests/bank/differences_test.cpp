#include "bank/differences.h"

#include <gmock/gmock.h>

#include "bank/json_source.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using namespace qs::test;
using qs::Key;

std::string textOf(const Source& before, const Source& after) {
  std::string text;
  for (const Difference& difference : differences(before, after)) text += qs::bank::textOf(difference) + '\n';
  return text;
}

TEST(Differences, SayWhatChanged) {
  const Source before = readSource(kSourceFolder / "tests/bank/full_source.json");
  EXPECT_EQ(textOf(before, before), "");
  Source after = before;
  after.origins["a"].year.reset();
  after.compounds[1].data.number = 3;
  Compound& one = after.compounds[0];
  one.data.cas.clear();
  one.data.synonyms.pop_back();
  one.data.constants[Key::TC] = 0.2;
  one.data.constants.erase(Key::ACEN);
  one.provenance.erase(Key::ACEN);
  one.data.correlations[Key::VP].coefficients[1] = 7;
  one.data.correlations[Key::VP].xShape = COMx;
  one.provenance[Key::TC].quality = eQualityDoubtful;
  const std::string values = R"(compound 1 (One), cas: 1-1-1 -> nothing
compound 1 (One), synonyms: x|y -> x
compound 1 (One), TC [K]: 0.1 -> 0.2
)",
                    others = R"(compound 1 (One), ACEN [-]: -0 -> nothing
)",
                    correlation = R"(compound 1 (One), VP.B: -2.5e+22 -> 7
compound 1 (One), VP.Xshape: COMlnxp -> COMx
- compound 2 (Two)
+ compound 3 (Two)
)";
  EXPECT_EQ(textOf(before, after), "source a: \u00e9; a; 1999; l; none -> \u00e9; a; l; none\n" + values +
                                       "compound 1 (One), TC.quality: good -> doubtful\n" + others +
                                       "compound 1 (One), ACEN.source: b -> nothing\n" + correlation);
  // Where one of them knows no origins, they are not compared.
  after.origins.clear();
  for (Compound& compound : after.compounds) compound.provenance.clear();
  EXPECT_EQ(textOf(before, after), values + others + correlation);
}

}  // namespace
