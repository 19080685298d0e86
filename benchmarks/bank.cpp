// Work on data banks of many compounds.
#include <string>
#include <string_view>

#include "bank/chemsep_import.h"
#include "bank/csv_import.h"
#include "bank/csv_writer.h"
#include "bank/json_source.h"
#include "bank/json_writer.h"
#include "benchmarks/bench.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace qs::bench {
namespace {

using namespace bank;

constexpr std::size_t kFew = 1'000, kMany = 10'000;

// The compounds of the tests' library again and again.
std::string libraryOf(std::size_t compounds) {
  constexpr std::string_view kEnd = "</compounds>";
  const std::string text = test::readFile(test::kSourceFolder / "tests/bank/three_compounds.xml");
  const std::size_t first = text.find("<compound>"), end = text.find(kEnd);
  std::string library = text.substr(0, first);
  for (std::size_t i = 0; i < compounds; i += 3) library.append(text, first, end - first);
  return library.append(kEnd);
}

// The bundled compounds again and again.
std::string sheetOf(std::size_t compounds) {
  const Source bundled = readSource(test::kSourceFolder / "data/compounds.json");
  Source source;
  for (std::size_t i = 0; i < compounds; ++i) {
    source.compounds.push_back(bundled.compounds[i % bundled.compounds.size()]);
    source.compounds.back().data.number = static_cast<std::int32_t>(i + 1);
  }
  return writeCsv(source);
}

struct Import {
  const char* name;
  const char* title;
  std::string (*fileOf)(std::size_t compounds);
  Source (*read)(const std::filesystem::path& file, std::vector<Finding>& findings);
};

constexpr Import kImports[] = {
    {"import chemsep", "importing one of 10,000 from a library / one of 1,000", libraryOf,
     [](const std::filesystem::path& file, std::vector<Finding>& findings) {
       return importChemsep(file, {}, findings).source;
     }},
    {"import csv", "importing one of 10,000 from a sheet / one of 1,000", sheetOf, importCsv},
};

// Microseconds per compound.
double timeOf(const Import& import, const std::filesystem::path& file, std::size_t times) {
  std::size_t compounds = 0;
  const double start = processorTime();
  for (std::size_t i = 0; i < times; ++i) {
    std::vector<Finding> findings;
    const Source source = import.read(file, findings);
    compounds += source.compounds.size();
    if (!findings.empty() || writeSource(source).empty()) throw std::runtime_error(import.name);
  }
  return (processorTime() - start) * 1e6 / static_cast<double>(compounds);
}

}  // namespace

std::vector<Comparison> compareBanks(const std::function<bool(const std::string&)>& wanted) {
  std::vector<Comparison> made;
  for (const Import& import : kImports) {
    if (!wanted(import.name)) continue;
    const test::TemporaryDirectory directory;
    const auto many = directory.path() / "many", few = directory.path() / "few";
    test::writeFile(many, import.fileOf(kMany));
    test::writeFile(few, import.fileOf(kFew));
    const Pair pair = inTurns(
        3, [&] { return timeOf(import, many, 1); }, [&] { return timeOf(import, few, 5); });
    made.push_back({import.title, pair, 1.2, "us"});
  }
  return made;
}

}  // namespace qs::bench
