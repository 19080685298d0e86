#include "bank/merge.h"

#include <gmock/gmock.h>

namespace {

using namespace qs::bank;
using qs::Key;
using testing::ElementsAre;
using testing::Pair;

Source sourceOf(const char* title, std::vector<std::int32_t> numbers, std::map<std::string, std::string> identity) {
  Source source;
  source.origins["s"] = {.title = title, .authors = "", .licence = "", .changes = "", .year = {}};
  source.identityOrigins = std::move(identity);
  for (const auto number : numbers) {
    Compound& compound = source.compounds.emplace_back();
    compound.data.number = number;
    compound.data.name = title;
    compound.provenance[Key::TC].origin = "s";
    source.waivers.push_back({{title, number, "", "r"}});
  }
  return source;
}

// Three sources: compounds 1 and 2, 2 and 3, 3 and 4; the first and the last have the same origin.
TEST(Merge, TakesWhatIsKnownAlong) {
  for (const SameNumber rule : {SameNumber::Keep, SameNumber::Replace}) {
    const bool keeps = rule == SameNumber::Keep;
    const Source merged = merge({sourceOf("a", {1, 2}, {{"name", "s"}, {"cas", "s"}}),
                                 sourceOf("b", {2, 3}, {{"name", "s"}}), sourceOf("a", {3, 4}, {{"name", "s"}})},
                                rule);
    std::string compounds, waivers;
    for (const Compound& compound : merged.compounds)
      compounds += std::to_string(compound.data.number) + compound.data.name + ' ' +
                   merged.origins.at(compound.provenance.at(Key::TC).origin).title + ' ';
    for (const Waiver& waiver : merged.waivers) waivers += std::to_string(waiver.compound) + waiver.rule + ' ';
    EXPECT_EQ(compounds, keeps ? "1a a 2a a 3b b 4a a " : "1a a 2b b 3a a 4a a ");
    EXPECT_EQ(waivers, keeps ? "1a 2a 3b 4a " : "1a 2b 3a 4a ");
    EXPECT_EQ(merged.origins.size(), 2u);
    EXPECT_TRUE(merged.identityOrigins.empty());  // the origins of the names differ
  }
  EXPECT_THAT(merge({sourceOf("a", {1}, {{"name", "s"}, {"cas", "s"}}), sourceOf("a", {2}, {{"name", "s"}})},
                    SameNumber::Refuse)
                  .identityOrigins,
              ElementsAre(Pair("name", "s")));
}

}  // namespace
