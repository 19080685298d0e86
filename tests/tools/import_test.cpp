// `qsdb import` as a user calls it.
#include <gmock/gmock.h>

#include <sstream>

#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/qsdb.h"

namespace {

using namespace qs::test;
using testing::FieldsAre;
using testing::HasSubstr;

// From a library to a database, and from what is exported of that to the same bytes.
TEST(QsdbImport, GoesTheWholeWay) {
  const TemporaryDirectory temporary;
  const auto in = [&](const char* name) { return utf8(temporary.path() / name); };
  const std::string library = utf8(kSourceFolder / "tests/bank/three_compounds.xml"), source = in("source.json");
  EXPECT_THAT(
      runQsdb({"import", "chemsep", library, "-o", source, "--library-numbers"}),
      FieldsAre(0,
                source +
                    ": 3 compounds, 100 values\nLeft out:\n  HeatOfCombustion: of a liquid or solid; the key is for "
                    "the ideal gas; in compound 21 (Benzene)\n  Smiles: no key or member for it; in compound 21 "
                    "(Benzene)\n",
                ""));

  // The equation of water's density is zero at the critical temperature, and the check says so.
  const auto checked = runQsdb({"check", source});
  EXPECT_EQ(checked.code, 1);
  EXPECT_THAT(checked.out, HasSubstr("compound 19 (Water), LDN: 0 instead of 321.989"));
  std::istringstream lines(checked.out);
  for (std::string line; std::getline(lines, line);)
    EXPECT_THAT(line, testing::AnyOf(HasSubstr("compound 19 (Water), LDN: "), HasSubstr(": 3 compounds, 3 findings")));

  EXPECT_THAT(runQsdb({"build", source, in("database")}), FieldsAre(0, HasSubstr("3 compounds"), ""));
  const auto shown = runQsdb({"show", in("database"), "7732-18-5", "--key", "VP"});
  EXPECT_THAT(shown.out, HasSubstr("A = 67.647264721"));
  EXPECT_THAT(shown.out, HasSubstr("263.15 to 647.14 K"));
  EXPECT_THAT(runQsdb({"show", source, "water", "--key", "LTC"}).out,
              HasSubstr("refitted from A + exp(B/T + C + D T + E T^2); largest deviation 0.00485 %"));

  EXPECT_EQ(runQsdb({"export", in("database"), "--json", "-o", in("again.json")}).code, 0);
  EXPECT_EQ(runQsdb({"build", in("again.json"), in("again")}).code, 0);
  for (const std::string& file : namesIn(temporary.path() / "database"))
    EXPECT_EQ(readFile(temporary.path() / "again" / file), readFile(temporary.path() / "database" / file)) << file;

  EXPECT_EQ(runQsdb({"export", in("database"), "--csv", "-o", in("sheet.csv")}).code, 0);
  EXPECT_EQ(runQsdb({"import", "csv", in("sheet.csv"), "-o", in("sheet.json")}).code, 0);
  EXPECT_EQ(runQsdb({"build", in("sheet.json"), in("sheet")}).code, 0);
  for (const char* file : {"purecmp1.idx", "purecmp1.dat"})  // a sheet has no place for what an origin is
    EXPECT_EQ(readFile(temporary.path() / "sheet" / file), readFile(temporary.path() / "database" / file)) << file;
}

TEST(QsdbImport, WritesNothingWhenThereAreFaults) {
  const TemporaryDirectory temporary;
  const auto library = temporary.path() / "library.xml", source = temporary.path() / "source.json";
  writeFile(library, "<compounds>\n<compound><CompoundID value='A'/>\n<CAS/></compound>\n<compound/></compounds>");
  writeFile(source, "before");
  const auto outcome = runQsdb({"import", "chemsep", utf8(library), "-o", utf8(source)});
  EXPECT_THAT(outcome, FieldsAre(2, "", HasSubstr("library.xml:3: compound 1000 (A), CAS: no attribute \"value\"\n")));
  EXPECT_THAT(outcome.err, HasSubstr("library.xml:4: compound 1001 (), CompoundID: "));
  EXPECT_EQ(readFile(source), "before");
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"import", "chemsep", "missing.xml", "-o", "s"},
           {"import"},
           {"import", "chemsep", "a.xml"},
           {"import", "chemsep", "a.xml", "-o", "s", "--first-number", "0"},
           {"import", "chemsep", "a.xml", "-o", "s", "--first-number", "5", "--library-numbers"}})
    EXPECT_THAT(runQsdb(arguments), FieldsAre(testing::Ne(0), "", testing::Ne("")));
}

}  // namespace
