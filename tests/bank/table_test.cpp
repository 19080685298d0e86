#include "bank/table.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "bank/json_source.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using qs::Key;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(Table, TakesTheLastTemperatureWhereStepsLeadThere) {
  EXPECT_THAT(temperaturesBetween(0.1, 0.3, 0.1), testing::SizeIs(3));
  EXPECT_THAT(temperaturesBetween(300, 350, 20), ElementsAre(300, 320, 340));
  EXPECT_THAT(temperaturesBetween(300, 300, 20), ElementsAre(300));
  for (const auto& wrong :
       std::vector<std::vector<double>>{{2, 1, 1}, {1, 2, 0}, {1, 2, -1}, {1, 2, 1e-9}, {1, INFINITY, 1}})
    EXPECT_THROW(temperaturesBetween(wrong[0], wrong[1], wrong[2]), std::invalid_argument) << wrong[2];
}

// Vapour pressures of 21 + 22 T + 23 T^2 between 10 and 20 K and of a form with transformations that has no number at
// 150 K; and a constant.
Table sampleTable() {
  static const Source source = readSource(qs::test::kSourceFolder / "tests/tools/sample_source.json");
  const Compound* const compounds[] = {&source.compounds[1], &source.compounds[0]};
  const Key keys[] = {Key::VP, Key::MW};
  return makeTable(compounds, keys, {5, 10, 12.5, 150, 201}, 0.25);
}

TEST(Table, MarksInTextWhatIsNotThere) {
  EXPECT_EQ(tableText(sampleTable()),
            "       Sparse   Sparse  Full     Full\n"
            "   T       VP       MW    VP       MW\n"
            "   K      kPa  kg/kmol   kPa  kg/kmol\n"
            "   5        <        -     <    30.07\n"
            "  10     2541        -     <    30.07\n"
            "12.5  3889.75        -     <    30.07\n"
            " 150        >        -     ?    30.07\n"
            " 201        >        -     >    30.07\n"
            "<  below the temperature range\n"
            ">  above the temperature range\n"
            "-  not known\n"
            "?  the equation has no finite value\n");
}

TEST(Table, LeavesCellsOfCsvEmpty) {
  EXPECT_EQ(tableCsv(sampleTable()),
            "T [K],Sparse VP [kPa],Sparse MW [kg/kmol],Full VP [kPa],Full MW [kg/kmol]\n"
            "5,,,,30.07\n10,2541,,,30.07\n12.5,3889.75,,,30.07\n150,,,,30.07\n201,,,,30.07\n");
  Compound odd;
  odd.data.name = "a,\"b\"";
  const Compound* const compounds[] = {&odd};
  const Key keys[] = {Key::VP};
  EXPECT_EQ(tableCsv(makeTable(compounds, keys, {1}, 101.325)), "T [K],\"a,\"\"b\"\" VP [kPa]\"\n1,\n");
}

TEST(Table, HasStatusesInJson) {
  const std::string text = tableJson(sampleTable());
  EXPECT_THAT(text, HasSubstr("\"temperatures\": [5, 10, 12.5, 150, 201]"));
  EXPECT_THAT(text, HasSubstr("{\"compound\": 7, \"name\": \"Sparse\", \"key\": \"VP\", \"unit\": \"kPa\",\n"
                              "     \"values\": [null, 2541, 3889.75, null, null],\n"
                              "     \"statuses\": [66, 1, 1, 68, 68]}"));
}

TEST(Table, DrawsAChartForEachKey) {
  const std::string text = tableSvg(sampleTable());
  EXPECT_THAT(text, testing::StartsWith("<svg xmlns="));
  EXPECT_THAT(text, HasSubstr(">Vapour Pressure, kPa</text>"));
  EXPECT_THAT(text, HasSubstr(">Molecular Weight, kg/kmol</text>"));
  EXPECT_THAT(text, HasSubstr(">Full</text>"));
}

}  // namespace
