#include "persist/provenance_file.h"

#include <gmock/gmock.h>

#include <climits>

#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace qs::database {
namespace {

constexpr std::uint64_t kBuild = 0x0123456789abcdef;

Annotations sample() {
  Annotations sample;
  sample.description = "about \u00e4ll";
  sample.origins = {{"a", {"title of a", "", "free", "none", 1999}}, {"b", {"b", "", "free", "", {}}}, {"", {}}};
  sample.identityOrigins = {{"cas", "b"}};
  sample.waivers = {{"bounds", 7, "TC", "known"}, {"same-cas", 0, "", "accepted"}};
  for (LONG compound = 40; compound > 0; compound -= 3)
    for (const char* field : {"VP", "TC", "IGCP", "IGC"})
      sample.values.push_back({compound,
                               field,
                               {compound % 2 ? "a" : "b", eKindFitted, eQualityDoubtful, "1 %",
                                field + std::string(compound == 7 ? 300 : 2, 'x')}});
  sample.values.push_back({-5, "MW", {"", {}, eQualityGood, "", ""}});
  return sample;
}

class ProvenanceFileTest : public testing::Test {
 protected:
  std::optional<ProvenanceFile> open(std::span<const std::byte> content, std::uint64_t build = kBuild) {
    test::writeFile(directory.path() / "purecmp1.src", {reinterpret_cast<const char*>(content.data()), content.size()});
    return ProvenanceFile::open(directory.name(), build);
  }

  const test::TemporaryDirectory directory;
};

TEST_F(ProvenanceFileTest, ReturnsWhatWasWritten) {
  const Annotations given = sample();
  auto file = open(encodeProvenance(given, kBuild));
  ASSERT_TRUE(file);
  for (const bool inMemory : {false, true}) {
    Provenance found;
    Origin origin;
    for (const auto& [compound, field, provenance] : given.values) {
      ASSERT_EQ(file->find(compound, field, found, origin), S_OK) << compound << field;
      EXPECT_EQ(found, provenance);
      EXPECT_EQ(origin, given.origins.at(provenance.origin));
    }
    constexpr std::pair<LONG, const char*> kNotThere[] = {{7, "V"},   {7, "VPX"}, {7, ""},        {8, "VP"},
                                                          {41, "VP"}, {-6, "MW"}, {INT_MIN, "MW"}};
    for (const auto& [compound, field] : kNotThere)
      EXPECT_EQ(file->find(compound, field, found, origin), S_FALSE) << compound << field;
    if (inMemory) break;
    const Annotations all = file->readAll();
    EXPECT_EQ(all.description, given.description);
    EXPECT_EQ(all.origins, given.origins);
    EXPECT_EQ(encodeProvenance(all, kBuild), encodeProvenance(given, kBuild));
  }

  Annotations reversed = given;
  std::ranges::reverse(reversed.values);
  EXPECT_EQ(encodeProvenance(reversed, kBuild), encodeProvenance(given, kBuild));
}

TEST_F(ProvenanceFileTest, RefusesWhatItCannotHold) {
  const auto expectRefusal = [](const char* message, auto change) {
    Annotations annotations = sample();
    change(annotations);
    EXPECT_THAT([&] { encodeProvenance(annotations, kBuild); },
                testing::ThrowsMessage<std::invalid_argument>(testing::HasSubstr(message)));
  };
  expectRefusal("\"cut\": a text with a NUL", [](Annotations& of) { of.description = std::string("cut\0off", 7); });
  expectRefusal("\"z\"", [](Annotations& of) { of.values[0].provenance.origin = "z"; });
  expectRefusal("\"z\"", [](Annotations& of) { of.identityOrigins["cas"] = "z"; });
  expectRefusal("unknown year", [](Annotations& of) { of.origins["a"].year = -32767; });
}

// What is no whole file of the build and the layout is the same as none.
TEST_F(ProvenanceFileTest, DoesNotReadFilesOfOthers) {
  EXPECT_FALSE(ProvenanceFile::open(directory.name(), kBuild));
  std::vector<std::byte> bytes = encodeProvenance(sample(), kBuild);
  for (std::size_t length = 0; length < bytes.size(); length += length < 50 ? 1 : 17)
    EXPECT_FALSE(open(std::span(bytes).first(length))) << length;
  EXPECT_FALSE(open(bytes, kBuild + 1));
  bytes.push_back({});
  EXPECT_FALSE(open(bytes));
  bytes.pop_back();
  // The mark, the layout, the build, and lengths and counts that the file is not long enough for.
  for (const std::size_t offset : {0u, 3u, 4u, 8u, 15u, 16u, 24u, 28u, 32u, 36u, 39u}) {
    auto changed = bytes;
    changed[offset] ^= std::byte{0x80};
    EXPECT_FALSE(open(changed)) << offset;
  }
  ASSERT_TRUE(open(bytes));
}

// Whatever the bytes after the header are, both readings end with some result.
TEST_F(ProvenanceFileTest, TrustsNoByte) {
  const std::vector<std::byte> bytes = encodeProvenance(sample(), kBuild);
  for (const unsigned value : {0x00u, 0x01u, 0x7fu, 0xffu}) {
    for (std::size_t offset = 40; offset < bytes.size(); offset += 4) {
      auto changed = bytes;
      std::fill_n(changed.begin() + static_cast<std::ptrdiff_t>(offset),
                  std::min<std::size_t>(4, bytes.size() - offset), static_cast<std::byte>(value));
      auto file = open(changed);
      ASSERT_TRUE(file);
      Provenance provenance;
      Origin origin;
      EXPECT_THAT(file->find(7, "TC", provenance, origin), testing::AnyOf(S_OK, S_FALSE));
      EXPECT_EQ(file->readAll().values.size(), sample().values.size());
      EXPECT_THAT(file->find(7, "TC", provenance, origin), testing::AnyOf(S_OK, S_FALSE));
      EXPECT_LE(provenance.kind, eKindDecided);
      EXPECT_LE(provenance.quality, eQualityDoubtful);
      EXPECT_LE(provenance.note.size(), bytes.size());
    }
  }
}

}  // namespace
}  // namespace qs::database
