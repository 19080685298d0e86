#include "bank/csv_import.h"

#include <gmock/gmock.h>

#include "bank/csv_writer.h"
#include "bank/json_source.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using namespace qs::test;
using qs::Key;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Source importSheet(const std::string& sheet, std::vector<Finding>& findings) {
  const TemporaryDirectory temporary;
  writeFile(temporary.path() / "sheet.csv", sheet);
  return importCsv(temporary.path() / "sheet.csv", findings);
}

TEST(CsvImport, ReadsBackWhatIsExported) {
  const Source bundled = readSource(kSourceFolder / "data/compounds.json");
  std::vector<Finding> findings;
  const Source read = importSheet(writeCsv(bundled), findings);
  ASSERT_THAT(findings, IsEmpty());
  const auto wanted = qs::database::encodeDatabase(compoundsOf(bundled));
  const auto made = qs::database::encodeDatabase(compoundsOf(read));
  EXPECT_EQ(made.index, wanted.index);
  EXPECT_EQ(made.data, wanted.data);
  EXPECT_EQ(writeCsv(read), writeCsv(bundled));
  EXPECT_TRUE(read.origins.contains("chemsep"));
}

TEST(CsvImport, TakesWhatSpreadsheetsWrite) {
  std::vector<Finding> findings;
  const Source source = importSheet(
      "\xEF\xBB\xBFnumber,name,cas,non_condensable,family,synonyms,unifac,TC,PC [bar],MP [degC],VP.form "
      "[Pa],VP.A,VP.B,VP.C,"
      "VP.D,VP.E,VP.Tmin [degC],VP.Tmax,VP.note,\r\n"
      "7, Name ,\"7732-18-5\",TRUE,Alcohol,One | \"Two\" 3,,,,,,,,,,,,,,\r\n"
      ",,,,,,,,,,,,,,,,,,,\r\n\r\n"
      "8,\"A, \"\"B\"\"\",,false,,a|b,1:2 | 3:4,+6.5e2,2,10,DIPPR101,0,1,2,3,4,0,400,\"two\nlines\",\r\n"
      "9,Short",
      findings);
  std::vector<std::string> messages;
  for (const Finding& finding : findings) messages.push_back(textOf(finding));
  ASSERT_THAT(messages,
              ElementsAre(HasSubstr(
                  ":2: compound 7 (Name), synonyms: a quotation mark in a cell that does not start with one")));
  ASSERT_EQ(source.compounds.size(), 3u);
  EXPECT_EQ(source.compounds[0].data.name, "Name");
  EXPECT_EQ(source.compounds[0].data.nonCondensable, true);
  EXPECT_EQ(source.compounds[0].data.family, eAlcohol);
  const Compound& compound = source.compounds[1];
  EXPECT_EQ(compound.line, 5);
  EXPECT_EQ(compound.data.name, "A, \"B\"");
  EXPECT_THAT(compound.data.synonyms, ElementsAre("a", "b"));
  ASSERT_EQ(compound.data.unifac.size(), 2u);
  EXPECT_EQ(compound.data.unifac[1].subgroup * 10 + compound.data.unifac[1].count, 34);
  EXPECT_EQ(compound.data.constants, (std::map<Key, double>{{Key::TC, 650}, {Key::PC, 200}, {Key::MP, 283.15}}));
  const auto& correlation = compound.data.correlations.at(Key::VP);
  EXPECT_THAT(correlation.coefficients, ElementsAre(testing::DoubleNear(-6.907755278982137, 1e-15), 1, 2, 3, 4));
  EXPECT_EQ(std::pair(correlation.tmin, correlation.tmax), std::pair(273.15, 400.0));
  EXPECT_EQ(compound.provenance.at(Key::VP).note, "two\nlines");
  EXPECT_EQ(compound.provenance.at(Key::VP).origin, "sheet");
  EXPECT_EQ(source.compounds[2].line, 7);
}

// Each sheet has the columns and a row, and the faults that are found, which name the line and the column.
TEST(CsvImport, FindsAllFaultsWithLineAndColumn) {
  const struct {
    std::string header, row;
    std::vector<std::string> faults;
  } cases[] = {
      {"TCC,tc,TC [kPa],VP.fom,VP.H,TC.source [K],NBP,NBP [K],cass",
       "",
       {"1: TCC: no such column; did you mean \"TC\"?", "1: tc: no such column; did you mean \"TC\"?",
        "1: TC [kPa]: \"kPa\" cannot be converted to \"K\"", "1: VP.fom: no such column; did you mean \"form\"?",
        "1: VP.H: no such column", "1: TC.source [K]: the column has no unit", "1: NBP [K]: the column is there twice",
        "1: cass: no such column; did you mean \"cas\"?"}},
      {"TC,family,ddb_id,non_condensable,unifac,TC.kind,TC.quality",
       "\"1,5\",Alcohl,x,no,1:a|7,guess,god",
       {"ddb_id: \"x\" is not an integer", "family: no \"Alcohl\"; did you mean \"Alcohol\"?",
        "non_condensable: \"no\" is neither true nor false", "unifac: \"1:a\" is not a sub-group and a count",
        "unifac: \"7\" is not a sub-group and a count",
        "TC: \"1,5\" is not a finite number; its decimal sign is a point", "TC.kind: no \"guess\"",
        "TC.quality: no \"god\"; did you mean \"good\"?"}},
      {"TC,PC", "nan,1e999", {"TC: \"nan\" is not a finite number", "PC: \"1e999\" is not a finite number"}},
      {"VP.form,VP.A,VP.B,VP.F,VP.Tmin,VP.Xshape",
       "ANTO1,1,,2,x,COMy",
       {"VP.B: ANTO1 needs the coefficient B", "VP.form: ANTO1 needs the coefficient C", "needs the coefficient D",
        "needs the coefficient E", "VP.F: ANTO1 has no coefficient F", "VP.Tmin: \"x\" is not a finite number",
        "VP.form: an equation needs Tmax", "VP.Xshape: no \"COMy\"; did you mean \"COMx\"?"}},
      {"VP.form,VP.A,VP.Tmin", "DIPR101,1,2", {"VP.form: no \"DIPR101\"; did you mean \"DIPPR101\"?"}},
      {"VP.form,VP.A", ",1", {"VP.A: there is no form for the coefficient"}},
      {"VP.form,VP.A,VP.note", ",,n", {"VP.note: there is no value or form for this"}},
      {"VP,VP.form", "1,ANTO1", {"VP: there is an equation besides the value"}},
      {"TC,", "1,2,3", {": \"2\" is in a column without a header", ": \"3\" is in a column without a header"}},
      {"TC,cas,formula",
       "1,\"a\"b,\"c\n",
       {"cas: text after the closing quotation mark", "formula: the quotation mark is not closed"}},
      {"cas,formula,iupac_name",
       "\xFF,\xC3\xA9,\xED\xA0\x80",
       {"cas: the text is not UTF-8", "iupac_name: the text is not UTF-8"}},
  };
  for (const auto& [header, row, faults] : cases) {
    SCOPED_TRACE(header);
    std::vector<Finding> findings;
    importSheet("number,name," + header + "\n1,X," + row, findings);
    ASSERT_EQ(findings.size(), faults.size()) << textOf(findings.at(0)) << textOf(findings.back());
    for (std::size_t i = 0; i < faults.size(); ++i) {
      const std::string place = faults[i].starts_with("1: ") ? "" : "2: compound 1 (X)";
      EXPECT_THAT(textOf(findings[i]), HasSubstr("sheet.csv:" + place));
      EXPECT_THAT(textOf(findings[i]), HasSubstr(faults[i]));
    }
  }
  const std::pair<std::string, std::vector<std::string>> sheets[] = {
      {"", {"1: the sheet is empty"}},
      {"number;name;TC\n1;X;300,5", {"1: semicolons divide the columns"}},
      {"number\tname\n", {"1: tabs divide the columns"}},
      {"\xFF\xFEn", {"1: the text is UTF-16"}},
      {"cas\n1", {"1: no column \"number\"", "1: no column \"name\""}},
      {"number,name\n1,A\n1,B\n0,C\n1.5,D\n5,\n",
       {"3: compound 1 (B), number: line 2 has the same number", "4: compound 0 (C), number: \"0\"",
        "5: compound 0 (D), number: \"1.5\" is not a number from 1 on",
        "6: compound 5 (), name: a compound needs a name"}},
  };
  for (const auto& [sheet, faults] : sheets) {
    std::vector<Finding> findings;
    importSheet(sheet, findings);
    ASSERT_EQ(findings.size(), faults.size()) << sheet;
    for (std::size_t i = 0; i < faults.size(); ++i)
      EXPECT_THAT(textOf(findings[i]), HasSubstr("sheet.csv:" + faults[i]));
  }
}

TEST(CsvImport, TakesTheTemplate) {
  std::vector<Finding> findings;
  const Key chosen[] = {Key::TC, Key::IGH};
  EXPECT_THAT(importSheet(csvTemplate(chosen), findings).compounds, IsEmpty());
  importSheet(csvTemplate(usualKeys()), findings);
  EXPECT_THAT(findings, IsEmpty());
  EXPECT_THAT(csvTemplate(chosen), HasSubstr(",TC [K],TC.source,IGH.form [kJ/kmol],IGH.A,"));
  EXPECT_THAT(csvTemplate(chosen), HasSubstr(",IGH.G,IGH.Tmin [K],IGH.Tmax [K],IGH.source\n"));
}

}  // namespace
