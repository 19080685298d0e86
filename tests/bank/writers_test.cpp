// Sources as text: JSON and sheets.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "bank/csv_columns.h"
#include "bank/csv_writer.h"
#include "bank/json_source.h"
#include "bank/json_writer.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using namespace qs::test;

TEST(JsonWriter, WritesWhatTheSourceHad) {
  for (const char* file : {"data/compounds.json", "tests/bank/full_source.json"}) {
    const std::string given = readFile(kSourceFolder / file), written = writeSource(readSource(kSourceFolder / file));
    EXPECT_EQ(nlohmann::json::parse(written), nlohmann::json::parse(given));
    const TemporaryDirectory temporary;
    writeFile(temporary.path() / "written.json", written);
    EXPECT_EQ(writeSource(readSource(temporary.path() / "written.json")), written);
  }
}

TEST(CsvWriter, WritesTheColumnsThatAreNeeded) {
  Source source = readSource(kSourceFolder / "tests/tools/sample_source.json");
  source.compounds[0].provenance[qs::Key::VP].note = "read \"by eye\", twice";
  EXPECT_EQ(writeCsv(source),
            "number,name,iupac_name,formula,cas,dippr_id,pp_attribute,family,non_condensable,synonyms,unifac,"
            "MW [kg/kmol],MW.source,ACEN [-],ACEN.source,"
            "LDN.form [kg/m3],LDN.A,LDN.B,LDN.Tmin [K],LDN.Tmax [K],LDN.source,"
            "VP.form [kPa],VP.A,VP.B,VP.C,VP.D,VP.E,VP.F,VP.Tmin [K],VP.Tmax [K],VP.Pmin [kPa],VP.Pmax [kPa],"
            "VP.Xshape,VP.Yshape,VP.Xpow,VP.Ypow,VP.source,VP.note\n"
            "300,Full,\"2,2'-Full\",C2H6,74-84-0,2,-7,Ketone,true,second name|" +
                std::string(74, 'x') +
                ",1:2|300:4,30.07,s,-0,s,EXPO2,11,12,90,300,s,VELDB5,1,2,3,4,5,6,100,200,0.5,9e+09,"
                "COM1mxr,COMlnx,2,0.5,s,\"read \"\"by eye\"\", twice\"\n"
                "7,Sparse,,,,,,,,first,,,,,,,,,,,,POLY2,21,22,23,,,,10,20,1e-05,1e+15,COMx,COMx,1,1,s,\n");
  source.compounds[0].data.synonyms[0] = "a|b";
  EXPECT_THROW(writeCsv(source), std::runtime_error);
}

TEST(CsvColumns, AreKnownByTheirHeaders) {
  for (const char* header : {"number", "iupac_name", "unifac", "TC", "TC [K]", "SP [(kJ/m3)^0.5]", "VP.form [kPa]",
                             "VP.A", "IGH.G", "VP.Tmin [K]", "VP.Xshape", "VP.note"}) {
    const auto column = columnOf(header);
    ASSERT_TRUE(column) << header;
    EXPECT_EQ(headerOf(*column), header);
  }
  for (const char* header : {"", "Number", "TCC", "TC [K", "TC.", "VP.a", "VP.H", "VP.tmin", "VP.AB", ".A"})
    EXPECT_FALSE(columnOf(header)) << header;
}

}  // namespace
