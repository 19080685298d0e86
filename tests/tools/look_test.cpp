// The commands that show a bank: find, show, table and report.
#include <gmock/gmock.h>

#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/qsdb.h"

namespace {

using namespace qs::test;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

const std::filesystem::path kSample = kSourceFolder / "tests/tools/sample_source.json";

TEST(QsdbShow, FindsCompoundsByNumberNameSynonymAndCas) {
  for (const char* name : {"300", "full", "FULL", "2,2'-full", "Second Name", "74-84-0"}) {
    const auto outcome = runQsdb({"show", utf8(kSample), name});
    EXPECT_EQ(outcome.code, 0) << name << outcome.err;
    EXPECT_THAT(outcome.out, AllOf(testing::StartsWith("300 Full\n"), HasSubstr("30.07  kg/kmol")));
  }
}

TEST(QsdbShow, ShowsAllThatIsKnownOfAValue) {
  const auto outcome = runQsdb({"show", utf8(kSample), "full", "--key", "VP,MW"});
  for (const char* part : {"300 Full, VP Vapour Pressure [kPa]", "Y = exp(A + B/(C+X) + D*lnX + E*X^F)",
                           "X = (1.0 - T / 1)^2; value = exp(Y^(1/0.5))", "A = 1, B = 2, C = 3, D = 4, E = 5, F = 6",
                           "100 to 200 K, 0.5 to 9e+09 kPa", "Title         t", "MW Molecular Weight [kg/kmol]"})
    EXPECT_THAT(outcome.out, HasSubstr(part));
  EXPECT_THAT(runQsdb({"show", utf8(kSourceFolder / "data/compounds.json"), "19", "--key", "IGCP"}).out,
              AllOf(HasSubstr("Follows from  IGH"), HasSubstr("50 to 1000 K"), HasSubstr("Source        chemsep")));
}

TEST(QsdbShow, ReadsDatabasesToo) {
  const TemporaryDirectory temporary;
  ASSERT_EQ(runQsdb({"build", utf8(kSample), utf8(temporary.path() / "database")}).code, 0);
  EXPECT_EQ(runQsdb({"table", utf8(temporary.path() / "database"), "--compound", "7,300", "--key", "VP,LDN,MW",
                     "--from", "10", "--to", "300", "--step", "7.5", "--csv"})
                .out,
            runQsdb({"table", utf8(kSample), "--compound", "7,300", "--key", "VP,LDN,MW", "--from", "10", "--to", "300",
                     "--step", "7.5", "--csv"})
                .out);
}

TEST(QsdbFind, ListsWhatHasTheText) {
  EXPECT_EQ(runQsdb({"find", utf8(kSample), "FIRST"}).out, "7  Sparse      first\n");
  EXPECT_THAT(runQsdb({"find", utf8(kSourceFolder / "data/compounds.json"), "c4h10"}).out,
              AllOf(HasSubstr("n-Butane"), HasSubstr("Isobutane")));
}

// What cannot be done, and a part of the reason.
TEST(QsdbLook, ReturnsTwoAndTheReason) {
  const TemporaryDirectory temporary;
  const std::string sample = utf8(kSample), twice = utf8(temporary.path() / "twice.json");
  std::string text = readFile(kSample);
  writeFile(temporary.path() / "twice.json", text.replace(text.find("\"first\""), 7, "\"second name\""));
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"biuld", sample, "database"}, "no command \"biuld\"; did you mean \"build\"?"},
      {{"find", sample, "nothing"}, "no compound has \"nothing\""},
      {{"find", "missing", "a"}, "missing"},
      {{"show", sample, "par"}, "no compound is called \"par\"; these are like it:\n7  Sparse"},
      {{"show", sample, ""}, "no compound is called \"\""},
      {{"show", twice, "second name"}, "several compounds are called \"second name\":\n300  Full"},
      {{"show", sample, "full", "--key", "vp"}, "no property key \"vp\"; did you mean \"VP\"?"},
      {{"show", sample, "sparse", "--key", "LDN"}, "7 Sparse, LDN Liquid Density: not known"},
      {{"table", sample, "--compound", "7", "--key", "VP", "--from", "1", "--to", "2", "--step", "0"}, "step"},
      {{"table", sample, "--compound", "7", "--key", "VP", "--from", "1", "--to", "2", "--step", "1", "--csv",
        "--json"},
       "excludes"},
      {{"report", sample}, "required"},
      {{"report", sample, "-o", utf8(temporary.path() / "missing" / "bank.html")}, "bank.html"},
  };
  for (const auto& [arguments, reason] : cases) {
    const auto outcome = runQsdb(arguments);
    EXPECT_EQ(outcome.code, 2) << arguments[2];
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr(reason));
  }
  EXPECT_THAT(namesIn(temporary.path()), testing::ElementsAre("twice.json"));
}

TEST(QsdbLook, WritesFiles) {
  const TemporaryDirectory temporary;
  const auto picture = temporary.path() / u8"\u6c34.svg", page = temporary.path() / "bank.html";
  EXPECT_EQ(runQsdb({"table", utf8(kSample), "--compound", "7", "--key", "VP", "--from", "10", "--to", "20", "--step",
                     "1", "--svg", utf8(picture)})
                .code,
            0);
  EXPECT_THAT(readFile(picture), HasSubstr(">Sparse</text>"));
  EXPECT_EQ(runQsdb({"report", utf8(kSample), "-o", utf8(page)}).out, utf8(page) + ": 2 compounds\n");
  EXPECT_THAT(readFile(page),
              AllOf(HasSubstr("2 compounds, 2 constants, 3 correlations"), HasSubstr("is not within 1 to 25000")));
}

}  // namespace
