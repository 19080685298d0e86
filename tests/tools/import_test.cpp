// `qsdb import` as a user calls it.
#include <gmock/gmock.h>

#include <sstream>

#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tools/qsdb.h"

namespace {

using namespace qs::test;
using testing::FieldsAre;
using testing::HasSubstr;

struct Outcome {
  int code;
  std::string out, err;
};

Outcome run(const std::vector<std::string>& arguments) {
  std::ostringstream out, err;
  const int code = qs::tools::runQsdb(arguments, out, err);
  return {code, out.str(), err.str()};
}

TEST(QsdbImport, WritesASourceThatCanBeBuilt) {
  const TemporaryDirectory temporary;
  const std::string source = utf8(temporary.path() / "source.json");
  EXPECT_THAT(run({"import", "chemsep", utf8(kSourceFolder / "tests/bank/three_compounds.xml"), "-o", source}),
              FieldsAre(0,
                        source + ": 3 compounds, 100 values\nLeft out:\n"
                                 "  HeatOfCombustion: of a liquid or solid; the key is for the ideal gas; in compound "
                                 "1002 (Benzene)\n"
                                 "  LibraryIndex: the compounds are numbered anew; in 3 compounds, first in compound "
                                 "1000 (Water)\n"
                                 "  Smiles: no key or member for it; in compound 1002 (Benzene)\n",
                        ""));
  EXPECT_THAT(run({"build", source, utf8(temporary.path() / "database")}), FieldsAre(0, HasSubstr("3 compounds"), ""));
}

TEST(QsdbImport, WritesNothingWhenThereAreFaults) {
  const TemporaryDirectory temporary;
  const auto library = temporary.path() / "library.xml", source = temporary.path() / "source.json";
  writeFile(library, "<compounds>\n<compound><CompoundID value='A'/>\n<CAS/></compound>\n<compound/></compounds>");
  writeFile(source, "before");
  const auto outcome = run({"import", "chemsep", utf8(library), "-o", utf8(source)});
  EXPECT_THAT(outcome, FieldsAre(2, "", HasSubstr("library.xml:3: compound 1000 (A), CAS: no attribute \"value\"\n")));
  EXPECT_THAT(outcome.err, HasSubstr("library.xml:4: compound 1001 (), CompoundID: "));
  EXPECT_EQ(readFile(source), "before");
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"import", "chemsep", "missing.xml", "-o", "s"},
           {"import"},
           {"import", "chemsep", "a.xml"},
           {"import", "chemsep", "a.xml", "-o", "s", "--first-number", "0"},
           {"import", "chemsep", "a.xml", "-o", "s", "--first-number", "5", "--library-numbers"}})
    EXPECT_THAT(run(arguments), FieldsAre(testing::Ne(0), "", testing::Ne("")));
}

}  // namespace
