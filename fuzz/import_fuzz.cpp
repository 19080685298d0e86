// Arbitrary sheets and libraries, to the importers. The first byte chooses: a library where it is 'L', else a sheet.
// What is imported without a finding must come back from the text of its source, and a sheet from its own export.
#include <algorithm>
#include <exception>

#include "bank/chemsep_import.h"
#include "bank/csv_import.h"
#include "bank/csv_writer.h"
#include "bank/json_source.h"
#include "bank/json_writer.h"
#include "fuzz/fuzz_target.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace qs {
namespace {

using namespace bank;

const std::filesystem::path& fileWith(std::string_view content) {
  static const test::TemporaryDirectory directory;
  static const std::filesystem::path path = directory.path() / "input";
  test::writeFile(path, content);
  return path;
}

void importLibrary(std::string_view text) {
  std::vector<Finding> findings;
  const auto made = importChemsep(fileWith(text), {}, findings);
  if (!findings.empty()) return;
  const std::string source = writeSource(made.source);
  require(writeSource(readSource(fileWith(source))) == source);
}

void importSheet(std::string_view text) {
  std::vector<Finding> findings;
  const Source made = importCsv(fileWith(text), findings);
  if (!findings.empty()) return;
  const std::string source = writeSource(made), sheet = writeCsv(made);
  require(writeSource(readSource(fileWith(source))) == source);
  if (made.compounds.empty()) return;
  const Source again = importCsv(fileWith(sheet), findings);
  require(findings.empty() && writeCsv(again) == sheet);
}

}  // namespace

std::vector<std::string> fuzzSeeds() {
  const std::string library =
      "L<?xml version=\"1.0\"?><compounds library=\"ChemSep 2020\"><compound><LibraryIndex value=\"2\"/><CompoundID "
      "value=\"A\"/><CAS value=\"7732-18-5\"/><UnifacVLE><group id=\"1\" value=\"2\"/></UnifacVLE><MolecularWeight "
      "units=\"kg/kmol\" value=\"18\"/><CriticalTemperature units=\"K\" value=\"647\"/><AbsEntropy units=\"J/kmol/K\" "
      "value=\"188724\"/>";
  const auto equation = [](const char* element, const char* unit, const char* number, const char* coefficients) {
    return std::string("<") + element + " units=\"" + unit + "\"><eqno value=\"" + number + "\"/>" + coefficients +
           "<Tmin value=\"280\"/><Tmax value=\"500\"/></" + element + ">";
  };
  const std::string end = "</compound></compounds>";
  const char* const sheet =
      "Snumber,name,family,synonyms,unifac,TC [degC],TC.source,VP.form [bar],VP.A,VP.B,VP.C,VP.D,VP.E,VP.Tmin,VP.Tmax\n"
      "1,A,Alcohol,B|C,1:2|3:4,20,s,DIPPR101,1,2,3,4,5,200,300\r\n2,\"B, \"\"C\"\"\",,,,,,,,,,,,,\n";
  const char* const otherSheet =
      "Snumber,name,LDN.form,LDN.A,LDN.B,LDN.C,LDN.D,LDN.Tmin,LDN.Tmax,LDN.kind,LDN.quality,LDN.note,LDN.Yshape\n"
      "7,X,VELDB7,1,2,3,4,5,6,fitted,good,\"two\nlines\",COMlnx\n";
  return {
      library + equation("VaporPressure", "Pa", "101", "<A value=\"74\"/><B value=\"-7295\"/><C value=\"-7.4\"/>") +
          equation("LiquidDensity", "kmol/m3", "105", "<A value=\"5\"/><B value=\".2\"/><C value=\"647\"/>") + end,
      library + equation("SurfaceTension", "N/m", "116", "<B value=\".01\"/><D value=\".1\"/>") +
          equation("LiquidThermalConductivity", "W/m/K", "16", "<A value=\"-1\"/><C value=\".4\"/>") + end,
      library + equation("RPPHeatCapacityCp", "J/kmol/K", "4", "<A value=\"33444\"/><B value=\"-5.8\"/>") + end,
      sheet,
      otherSheet,
  };
}

}  // namespace qs

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  try {
    (input[0] == 'L' ? qs::importLibrary : qs::importSheet)(input.substr(1));
  } catch (const std::runtime_error&) {  // a text that is no library, or whose source cannot be read back as a sheet
  }
  return 0;
}
