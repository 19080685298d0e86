#include "bank/chemsep_import.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>
#include <sstream>

#include "bank/json_source.h"
#include "bank/properties.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/formula.h"

namespace {

using namespace qs::bank;
using namespace qs::test;
using qs::Key;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

double valueAt(const qs::database::CompoundData& compound, Key key, double T) {
  const auto property = qs::bank::propertyOf(compound, key);
  LONG dependencies = 0;
  double value = std::nan("");
  if (property) property->GetValue(T, 101.325, eNoExtrapolation, &dependencies, &value);
  return value;
}

ChemsepImport import(const std::string& text, std::vector<Finding>& findings, const ChemsepOptions& options = {}) {
  const TemporaryDirectory temporary;
  writeFile(temporary.path() / "library.xml", text);
  return importChemsep(temporary.path() / "library.xml", options, findings);
}

constexpr double kCritical = 600.0, kEntropy = 200.0;

std::string libraryOf(const std::string& elements) {
  return "<compounds library='A library, version 3000, 1999'>\n<compound>\n<CompoundID value='X'/>\n"
         "<MolecularWeight units='kg/kmol' value='50'/><CriticalTemperature units='K' value='+6.0e2'/>\n"
         "<AbsEntropy units='J/kmol/K' value='200000'/>\n" +
         elements + "\n</compound>\n</compounds>";
}

struct EquationCase {
  std::string element;
  int number;
  std::vector<double> coefficients;
  double tmin, tmax;
  std::string formula;  // in T, R = T/Tc and t = 1 - T/Tc
  std::string key;
  double factor;
  double tolerance;  // of the values; that of a refit is what its note says, and at most this
};

EquationCase caseOf(const std::string& row) {
  EquationCase read{};
  std::istringstream text(row);
  text >> read.element >> read.number >> read.key >> read.factor >> read.tolerance >> read.tmin >> read.tmax >>
      read.formula;
  for (double coefficient; text >> coefficient;) read.coefficients.push_back(coefficient);
  return read;
}

std::string elementOf(const EquationCase& row) {
  static const std::map<std::string, std::string> kUnits = {
      {"VP", "Pa"},       {"LDN", "kmol/m3"}, {"SDN", "kmol/m3"},  {"HVP", "J/kmol"}, {"LCP", "J/kmol/K"},
      {"LTC", "W/m/K"},   {"VTC", "W/m/K"},   {"LVS", "Pa s"},     {"VVS", "Pa s"},   {"SOLCP", "J/kmol/K"},
      {"SVR", "m3/kmol"}, {"ST", "N/m"},      {"IGCP", "J/kmol/K"}};
  std::ostringstream text;
  text.precision(17);
  text << '<' << row.element << " units='" << kUnits.at(row.key) << "'><eqno value='" << row.number << "'/>";
  for (std::size_t i = 0; i < row.coefficients.size(); ++i)
    text << '<' << "ABCDE"[i] << " value='" << row.coefficients[i] << "'/>";
  text << "<Tmin value='" << row.tmin << "'/><Tmax value='" << row.tmax << "'/></" << row.element << '>';
  return text.str();
}

// Element, equation, key, factor to its unit, tolerance, limits, formula and coefficients, some of which do not belong
// to the formula.
constexpr const char* kEquationCases[] = {
    "SolidHeatCapacityCp 1 SOLCP 1e-3 1e-12 20 200 A 31000 7",
    "SolidDensity 2 SDN 50 1e-12 100 200 A+B*T 21 -0.004 7",
    "SurfaceTension 3 ST 1 1e-12 200 400 A+B*T+C*T^2 .07 -1e-4 -2e-8 7",
    "LiquidHeatCapacityCp 4 LCP 1e-3 1e-12 200 500 A+B*T+C*T^2+D*T^3 9e4 70 .3 2e-4 7",
    "VaporViscosity 5 VVS 1 1e-12 200 900 A+B*T+C*T^2+D*T^3+E*T^4 1e-6 2e-8 3e-12 1e-15 1e-18",
    "SolidHeatCapacityCp 100 SOLCP 1e-3 1e-12 20 200 A+B*T+C*T^2+D*T^3+E*T^4 900 80 .4 -6e-4 7e-7",
    "AntoineVaporPressure 10 VP 1e-3 1e-12 280 440 exp(A-B/(C+T)) 23.2 3816 -46",
    "LiquidViscosityRPS 12 LVS 1 1e-12 250 400 exp(A+B*T) -4 -.01 7",
    "LiquidViscosity 13 LVS 1 1e-12 250 400 exp(A+B*T+C*T^2) -1 -.03 3e-5",
    "LiquidHeatCapacityCp 16 LCP 1e-3 1e-3 273 530 A+exp(B/T+C+D*T+E*T^2) 7e4 -35.6 11.3 -.0164 2.59e-5",
    "LiquidViscosity 16 LVS 1 1e-3 250 420 A+exp(B/T+C+D*T+E*T^2) 1e-5 1500 -12 1e-3 -2e-6",
    "SurfaceTension 16 ST 1 5e-3 270 540 A+exp(B/T+C+D*T+E*T^2) -.002 -90 -2.2 -2.5e-3 -1.5e-6",
    "VaporPressure 101 VP 1e-3 1e-12 270 600 exp(A+B/T+C*ln(T)+D*T^E) 74.6 -7295 -7.44 4.29e-6 2",
    "SolidHeatCapacityCp 102 SOLCP 1e-3 1e-12 20 200 A*T^B/(1+C/T+D/T^2) 4e3 .6 30 50",
    "SecondVirialCoefficient 104 SVR 1 1e-12 300 900 A+B/T+(C+(10^10*D+10^12*E/T)/T^5)*10^6/T^3 .02 -23 -18 -2747 499",
    "LiquidDensity 105 LDN 50 1e-12 200 600 A/B^(1+(1-T/C)^D) 1.9 .24 600 .22",
    "HeatOfVaporization 106 HVP 1e-3 1e-12 270 600 A*(t)^(B+C*R+D*R^2+E*R^3) 6e7 .9 -1.1 .7 -.03",
    "SurfaceTension 116 ST 1 2e-2 250 590 A+B*t^0.35+C*t^(2/3)+D*t+E*t^(4/3) 0 .002 .01 .06 -.02",
    "VaporThermalConductivity 120 VTC 1 1e-3 300 900 A-B/(T+C) .1 50 300",
    "LiquidThermalConductivity 121 LTC 1 1e-12 250 500 A+B/T+C*ln(T)+D*T^E 1 -10 -.1 -1e-4 1.2",
    "VaporPressure 200 VP 1e-3 1e-2 270 600 E*exp((A*t+B*t^1.5+C*t^2.5+D*t^5)/(1-t)) -7.8 1.5 -2.8 -1.2 22e6",
    "RPPHeatCapacityCp 100 IGCP 1e-3 1e-12 50 1000 A+B*T+C*T^2+D*T^3+E*T^4 33444 -5.8 .025 -1.4e-5 2.8e-9",
    "IdealGasHeatCapacityCp 16 IGCP 1e-3 1e-2 300 1000 A+exp(B/T+C+D*T+E*T^2) 33000 -600 10.3 1e-5 1e-8",
};

TEST(ChemsepImport, KeepsTheCurveOfEachEquation) {
  for (const char* line : kEquationCases) {
    SCOPED_TRACE(line);
    const EquationCase row = caseOf(line);
    std::vector<Finding> findings;
    const auto made = import(libraryOf(elementOf(row)), findings);
    ASSERT_THAT(findings, IsEmpty());
    const Compound& compound = made.source.compounds.at(0);
    const Key key = qs::findKey(qs::widen(row.key)).value(), stored = key == Key::IGCP ? Key::IGH : key;
    ASSERT_EQ(compound.data.correlations.count(stored), 1u) << made.leftOut.at(0).reason;
    const auto& correlation = compound.data.correlations.at(stored);
    const Provenance& provenance = compound.provenance.at(stored);

    double largest = 0.0;
    for (int i = 0; i <= 500; ++i) {
      const double T = i == 500 ? row.tmax : row.tmin + (row.tmax - row.tmin) * i / 500;
      Formula::Variables variables = {{'T', T}, {'R', T / kCritical}, {'t', 1 - T / kCritical}};
      for (std::size_t letter = 0; letter < 5; ++letter)
        variables["ABCDE"[letter]] = letter < row.coefficients.size() ? row.coefficients[letter] : 0.0;
      const auto expected = static_cast<double>(Formula::valueOf(row.formula, variables) * row.factor);
      const double value = valueAt(compound.data, key, T);
      if (value != expected) largest = std::max(largest, std::fabs(value / expected - 1));
      ASSERT_TRUE(std::isfinite(value)) << T;
    }
    EXPECT_LE(largest, row.tolerance);
    EXPECT_EQ(std::pair(correlation.tmin, correlation.tmax), std::pair(row.tmin, row.tmax));
    if (row.tolerance > 1e-12) {
      EXPECT_EQ(provenance.kind, eKindFitted);
      const std::string mark = "largest deviation ";
      const double stated = std::stod(provenance.note.substr(provenance.note.find(mark) + mark.size())) / 100;
      EXPECT_NEAR(largest, stated, 0.05 * stated);
    }
    if (stored == Key::IGH) {
      EXPECT_NEAR(valueAt(compound.data, Key::IGH, 298.15), 0.0, 1e-8);
      EXPECT_NEAR(valueAt(compound.data, Key::IGS, 298.15), kEntropy, 1e-10);
    }
  }
}

// The same compounds as the bundled ones, in the units of a library.
TEST(ChemsepImport, ReadsCompoundsWithTheirOrigin) {
  const auto bundled = readSource(kSourceFolder / "data/compounds.json");
  std::vector<Finding> findings;
  const auto made = importChemsep(kSourceFolder / "tests/bank/three_compounds.xml", {.libraryNumbers = true}, findings);
  EXPECT_THAT(findings, IsEmpty());
  ASSERT_EQ(made.source.compounds.size(), 3u);
  std::size_t values = 0;
  for (const Compound& compound : made.source.compounds) {
    const auto expected = std::ranges::find(bundled.compounds, compound.data.number,
                                            [](const Compound& other) { return other.data.number; });
    ASSERT_NE(expected, bundled.compounds.end());
    EXPECT_EQ(std::tie(compound.data.name, compound.data.formula, compound.data.cas),
              std::tie(expected->data.name, expected->data.formula, expected->data.cas));
    EXPECT_EQ(compound.data.unifac.size(), expected->data.unifac.size());
    for (const auto& [key, value] : compound.data.constants) {
      EXPECT_NEAR(value, expected->data.constants.at(key), 3e-7 * std::fabs(value)) << static_cast<int>(key);
      EXPECT_EQ(compound.provenance.at(key).origin, "library");
      ++values;
    }
    for (const auto& [key, correlation] : compound.data.correlations) {
      const bool refitted = compound.provenance.at(key).kind == eKindFitted;
      for (const double part : {0.0, 0.3, 0.6, 0.9}) {
        const double T = correlation.tmin + part * (correlation.tmax - correlation.tmin);
        const double wanted = valueAt(expected->data, key, T);
        EXPECT_NEAR(valueAt(compound.data, key, T), wanted, (refitted ? 3e-3 : 1e-7) * std::fabs(wanted))
            << static_cast<int>(key) << " at " << T;
      }
      ++values;
    }
  }
  EXPECT_EQ(values, 100u);
  const Origin& origin = made.source.origins.at("library");
  EXPECT_EQ(origin.licence, "Artistic License 2.0");
  EXPECT_THAT(origin.title, HasSubstr("8.32"));
  EXPECT_THAT(made.source.identityOrigins.at("number"), "library");
}

TEST(ChemsepImport, ListsWhatItLeavesOut) {
  std::vector<Finding> findings;
  std::string library = libraryOf(R"(
<Smiles value='C'/><Novel value='1'/><CriticalPressure units='bar' value='40'/><CriticalPressure units='Pa' value='1'/><CriticalVolume units='kg' value='1'/>
<NormalBoilingPointTemperature units='K' value='300'/><HeatOfCombustion units='J/kmol' value='-1'/>
<VaporPressure units='Pa'><eqno value='118'/><A value='1'/><Tmin value='1'/><Tmax value='2'/></VaporPressure>
<AntoineVaporPressure units='Pa'><eqno value='10'/><A value='20'/><Tmin value='300'/><Tmax value='400'/><F value='1'/></AntoineVaporPressure>
<SurfaceTension units='N/m'><eqno value='16'/><A value='-1'/><Tmin value='300'/><Tmax value='400'/></SurfaceTension>
<LiquidViscosity units='Pa s'><eqno value='16'/><B value='9'/><D value='-0.3'/><E value='5e-4'/><Tmin value='10'/><Tmax value='500'/></LiquidViscosity>
<HeatOfVaporization units='J/kmol'><eqno value='106'/><A value='1e7'/><B value='1'/><Tmin value='500'/><Tmax value='700'/></HeatOfVaporization>
<SolidDensity units='kmol/m3'><eqno value='1'/><A value='9'/><Tmin value='170'/><Tmax value='0'/></SolidDensity>)");
  library.insert(library.find("</compounds>"),
                 "<compound><CompoundID value='Y'/><Novel/><LiquidDensity units='kmol/m3'>"
                 "<eqno value='1'/><Tmin value='1'/><Tmax value='2'/></LiquidDensity><SurfaceTension units='N/m'>"
                 "<eqno value='106'/><Tmin value='1'/><Tmax value='2'/></SurfaceTension></compound>");
  const auto made = import(library, findings, {.firstNumber = 7});
  EXPECT_THAT(findings, IsEmpty());
  std::vector<std::string> lines;
  for (const LeftOut& left : made.leftOut)
    lines.push_back(left.element + ": " + left.reason + ": " + std::to_string(left.times) + ", " + left.first);
  EXPECT_THAT(lines,
              ElementsAre("AbsEntropy: there is no ideal-gas heat capacity: 1, compound 7 (X)",
                          "AntoineVaporPressure, F: not known: 1, compound 7 (X)",
                          "CriticalPressure: given again; the first one counts: 1, compound 7 (X)",
                          "CriticalVolume: \"kg\" cannot be converted to \"m3/kmol\": 1, compound 7 (X)",
                          "HeatOfCombustion: of a liquid or solid; the key is for the ideal gas: 1, compound 7 (X)",
                          "LiquidDensity: there is no molecular weight for the conversion: 1, compound 8 (Y)",
                          "LiquidViscosity: equation 16 has no form of its own, and every refit deviates by more "
                          "than 2 %: 1, compound 7 (X)",
                          "Novel: not known: 2, compound 7 (X)", "Smiles: no key or member for it: 1, compound 7 (X)",
                          "SolidDensity: Tmin is above Tmax: 1, compound 7 (X)",
                          "SurfaceTension: equation 106 needs the critical temperature: 1, compound 8 (Y)",
                          "SurfaceTension: equation 16 is not positive in its whole range, and has no form of its "
                          "own: 1, compound 7 (X)",
                          "VaporPressure: equation 118 is not known: 1, compound 7 (X)"));
  const Compound& first = made.source.compounds.at(0);
  EXPECT_EQ(first.data.constants.at(Key::PC), 4000);
  EXPECT_THAT(first.provenance.at(Key::VP).note, HasSubstr("from AntoineVaporPressure"));
  EXPECT_EQ(first.data.correlations.at(Key::HVP).tmax, kCritical);
  EXPECT_THAT(first.provenance.at(Key::HVP).note, HasSubstr("Tmax cut from 700 K"));
  EXPECT_EQ(made.source.origins.at("library").year, 1999);
  EXPECT_THAT(made.source.origins.at("library").licence, HasSubstr("not stated"));
}

// Each fault is in the element of the library's sixth line.
TEST(ChemsepImport, NamesEachFaultWithItsPlace) {
  const auto vapour = [](const std::string& content) {
    return "<VaporPressure units='Pa'>" + content + "</VaporPressure>";
  };
  const std::pair<std::string, std::string> cases[] = {
      {"<CriticalVolume units='m3/kmol' value='NaN'/>", "CriticalVolume: \"NaN\" is not a finite number"},
      {"<CriticalVolume units='m3/kmol' value='1e999'/>", "CriticalVolume: \"1e999\" is not a finite number"},
      {"<CriticalVolume units='m3/kmol' value='1,5'/>", "CriticalVolume: \"1,5\" is not a finite number"},
      {"<CriticalVolume units='m3/kmol'/>", "CriticalVolume: no attribute \"value\""},
      {"<CriticalVolume value='1'/>", "CriticalVolume: no attribute \"units\""},
      {"<UnifacVLE><group id='0' value='1'/></UnifacVLE>",
       "UnifacVLE: a sub-group or a count is not within 1 to 32767"},
      {"<UnifacVLE><group id='x'/></UnifacVLE>", "UnifacVLE: \"x\" is not an integer"},
      {vapour("<Tmin value='1'/><Tmax value='2'/>"), "VaporPressure: there is no element \"eqno\""},
      {vapour("<eqno value='1.5'/><Tmin value='1'/><Tmax value='2'/>"),
       "VaporPressure, eqno: \"1.5\" is not an integer"},
      {vapour("<eqno value='1'/><A value=''/><Tmin value='1'/><Tmax value='2'/>"),
       "VaporPressure, A: \"\" is not a finite number"},
      {vapour("<eqno value='1'/><Tmin value='1'/>"), "VaporPressure: there is no element \"Tmax\""},
  };
  for (const auto& [element, message] : cases) {
    std::vector<Finding> findings;
    import(libraryOf(element), findings);
    std::vector<std::string> messages;
    for (const Finding& finding : findings) messages.push_back(textOf(finding));
    EXPECT_THAT(messages, Contains(HasSubstr("library.xml:6: compound 1000 (X), " + message)));
  }
  std::vector<Finding> findings;
  import(
      "<compounds><note/><compound>\n<CompoundID/></compound><compound><LibraryIndex "
      "value='0'/></compound></compounds>",
      findings, {.libraryNumbers = true});
  std::vector<std::string> places;
  for (const Finding& finding : findings) places.push_back(std::to_string(finding.line) + finding.field);
  EXPECT_THAT(places, ElementsAre("1note", "1LibraryIndex", "2CompoundID", "2LibraryIndex", "2CompoundID"));
}

TEST(ChemsepImport, RefusesWhatIsNoLibrary) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<a>";
  const std::pair<std::string, std::string> cases[] = {
      {"", "library.xml:1: not well-formed XML"},
      {"<html/>", "library.xml:1: html: the file is not a list of compounds"},
      {libraryOf("<CAS value='1' value='2'/>"), "compound X, compound: not well-formed XML"},
      {libraryOf("<CAS value='&bomb;'/>"), "compound X, compound: not well-formed XML"},
      {"<!DOCTYPE c [<!ENTITY a 'aaaa'>]>\n" + libraryOf("<CAS value='&a;'/>"), "with a document type"},
      {libraryOf(deep), "library.xml:6: compound X, a: nested too deeply"},
      {libraryOf("").substr(0, libraryOf("").find("<CriticalT")), "compound X, compound: not well-formed XML"},
  };
  for (const auto& row : cases) {
    std::vector<Finding> findings;
    EXPECT_THAT([&] { import(row.first, findings); }, testing::ThrowsMessage<std::runtime_error>(HasSubstr(row.second)))
        << row.first.substr(0, 300);
  }
  EXPECT_THAT(([] {
                std::vector<Finding> findings;
                importChemsep("missing.xml", {}, findings);
              }),
              testing::ThrowsMessage<std::runtime_error>(HasSubstr("missing.xml: cannot be opened: ")));
}

}  // namespace
