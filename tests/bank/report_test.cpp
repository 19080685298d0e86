#include "bank/report.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "bank/json_source.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using namespace qs::test;
using qs::Key;
using testing::HasSubstr;
using testing::Not;

class Report : public testing::Test {
 protected:
  std::string save(const Source& source, const std::vector<Finding>& findings = {}) {
    std::size_t done = 0;
    page_ =
        saveReport(source, findings, folder_.path() / "bank.html", [&](std::size_t compounds) { done = compounds; });
    EXPECT_EQ(done, source.compounds.size());
    return readFile(page_);
  }

  const TemporaryDirectory folder_;
  std::filesystem::path page_;
};

std::size_t countOf(std::string_view part, std::string_view text) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(Report, HasAPictureForEachCorrelationOfTheBundledBank) {
  const std::filesystem::path bundled = kSourceFolder / "data" / "compounds.json";
  const std::string page = save(readSource(bundled));
  EXPECT_EQ(countOf("<svg ", page), countOf("\"form\":", readFile(bundled)));
  EXPECT_EQ(countOf("<section ", page), 54u);
  EXPECT_LT(page.size(), 1'500'000u);
  EXPECT_EQ(countOf("href=", page), countOf("href=\"#", page));
  for (const char* fetching : {"src=", "url(", "@import", "<link"}) EXPECT_THAT(page, Not(HasSubstr(fetching)));
  EXPECT_THAT(namesIn(folder_.path()), testing::ElementsAre("bank.html"));
}

TEST_F(Report, ShowsTextOfOthersAsText) {
  Source source;
  source.file = "<b>";
  source.origins["<s>"].title = "<i>";
  Compound compound;
  compound.data.number = 3;
  compound.data.name = "<script>\"&";
  compound.data.synonyms = {"\" onclick=\""};
  compound.data.constants[Key::TC] = 500;
  compound.data.correlations[Key::VP] = {PropCurvePOLY2, {1, 2, 3}, 300, 400};
  Provenance provenance;
  provenance.origin = "<s>";
  provenance.kind = eKindFitted;
  provenance.quality = eQualityDoubtful;
  provenance.note = "<note>";
  compound.provenance = {{Key::TC, provenance}, {Key::VP, provenance}};
  source.compounds = {compound};
  const std::string page =
      save(source,
           {{.rule = "<r>", .compound = "compound 3 (<script>\"&)", .field = "VP", .message = "<m>", .waiver = "<w>"},
            {.rule = "<r>", .compound = "compound at position 9", .message = "<all>"}});
  EXPECT_EQ(countOf("<script>", page), 1u);
  for (const char* markup : {"<b>", "<s>", "<i>", "<note>", "<r>", "<m>", "<w>", "<all>", "\" onclick"})
    EXPECT_THAT(page, Not(HasSubstr(markup)));
  for (const char* part : {"<tr class=\"q\"><td>TC</td>", "doubtful, fitted", "class=\"d\"", "&lt;note&gt;",
                           "waived: &lt;w&gt;", "compound at position 9 </td><td>&lt;all&gt;",
                           "<td class=\"q\">•</td><td class=\"q\">~</td>", "Y = A + B*X + C*X^2", "A = 1, B = 2, C = 3",
                           "300 to 400 K", "<td>&lt;r&gt;</td><td class=\"n\">1</td><td class=\"n\">1</td>"})
    EXPECT_THAT(page, HasSubstr(part));
}

TEST_F(Report, OfManyCompoundsIsAFolder) {
  Source source;
  source.compounds.resize(kMostOnOnePage + 1);
  for (std::size_t i = 0; i < source.compounds.size(); ++i)
    source.compounds[i].data.number = static_cast<int>(i / 2) + 1;
  for (int times = 0; times < 2; ++times) {
    const std::string index = save(source);
    EXPECT_THAT(index, HasSubstr("<a href=\"7.html\">"));
    EXPECT_THAT(index, HasSubstr("<a href=\"7-14.html\">"));
    EXPECT_EQ(page_, folder_.path() / "bank" / "index.html");
    EXPECT_THAT(namesIn(folder_.path()), testing::ElementsAre("bank"));
    EXPECT_THAT(namesIn(folder_.path() / "bank"), testing::SizeIs(kMostOnOnePage + 3));
  }
}

TEST_F(Report, StaysAsItWasWhenAnotherFails) {
  Source source;
  for (const std::size_t count : {kMostOnOnePage, kMostOnOnePage + 1}) {
    source.compounds.resize(count);
    const std::string page = save(source);
    const auto names = namesIn(folder_.path());
    source.description = "another";
    EXPECT_THROW(
        saveReport(source, {}, folder_.path() / "bank.html", [](std::size_t) { throw std::runtime_error(""); }),
        std::runtime_error);
    EXPECT_EQ(readFile(page_), page);
    EXPECT_EQ(namesIn(folder_.path()), names);
  }
}

TEST_F(Report, ReplacesNoFolderOfOthers) {
  Source source;
  source.compounds.resize(kMostOnOnePage + 1);
  for (const char* name : {"bank", "bank.new", "bank.old"}) {
    const auto folder = folder_.path() / name;
    std::filesystem::create_directory(folder);
    writeFile(folder / "index.html", "mine");
    EXPECT_THROW(save(source), std::runtime_error) << name;
    EXPECT_EQ(readFile(folder / "index.html"), "mine");
    std::filesystem::remove_all(folder);
  }
}

}  // namespace
