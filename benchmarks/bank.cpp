// Work on data banks of many compounds.
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bank/checks.h"
#include "bank/chemsep_import.h"
#include "bank/csv_import.h"
#include "bank/csv_writer.h"
#include "bank/json_source.h"
#include "bank/json_writer.h"
#include "bank/report.h"
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
Source sourceOf(std::size_t compounds) {
  const Source bundled = readSource(test::kSourceFolder / "data/compounds.json");
  Source source = bundled;
  source.compounds.clear();
  source.waivers.clear();
  for (std::size_t i = 0; i < compounds; ++i) {
    source.compounds.push_back(bundled.compounds[i % bundled.compounds.size()]);
    source.compounds.back().data.number = static_cast<std::int32_t>(i + 1);
  }
  return source;
}

using Job = std::function<void()>;
using std::filesystem::path;

template <class Read>
Job importing(const path& file, const std::string& text, Read read) {
  test::writeFile(file, text);
  return [=] {
    std::vector<Finding> findings;
    if (writeSource(read(file, findings)).empty() || !findings.empty()) throw std::runtime_error("nothing imported");
  };
}

// What is timed; `prepare` makes what it works on, in a directory of its own.
struct Work {
  const char* name;
  const char* title;
  Job (*prepare)(std::size_t compounds, const path& directory);
};

constexpr Work kWorks[] = {
    {"import chemsep", "importing one of 10,000 from a library / one of 1,000",
     [](std::size_t compounds, const path& directory) {
       return importing(directory / "file", libraryOf(compounds),
                        [](const path& file, auto& findings) { return importChemsep(file, {}, findings).source; });
     }},
    {"import csv", "importing one of 10,000 from a sheet / one of 1,000",
     [](std::size_t compounds, const path& directory) {
       return importing(directory / "file", writeCsv(sourceOf(compounds)), importCsv);
     }},
    {"check bank", "checking one of 10,000 compounds / one of 1,000",
     [](std::size_t compounds, const path&) -> Job { return [source = sourceOf(compounds)] { check(source); }; }},
    {"build bank", "building one of 10,000 from a source / one of 1,000",
     [](std::size_t compounds, const path& directory) -> Job {
       test::writeFile(directory / "source.json", writeSource(sourceOf(compounds)));
       return [=] {
         const auto built = compoundsOf(readSource(directory / "source.json"));
         database::saveDatabase(database::encodeDatabase(built), directory / "database");
       };
     }},
    {"report bank", "reporting one of 10,000 compounds / one of 1,000",
     [](std::size_t compounds, const path& directory) -> Job {
       return [source = sourceOf(compounds), file = directory / "report"] {
         saveReport(source, {}, file, [](std::size_t) {});
       };
     }},
};

// Microseconds per compound.
double timeOf(const Job& job, std::size_t compounds, int times) {
  const double start = processorTime();
  for (int i = 0; i < times; ++i) job();
  return (processorTime() - start) * 1e6 / static_cast<double>(compounds) / times;
}

}  // namespace

std::vector<Comparison> compareBanks(const std::function<bool(const std::string&)>& wanted) {
  std::vector<Comparison> made;
  for (const Work& work : kWorks) {
    if (!wanted(work.name)) continue;
    const test::TemporaryDirectory directory;
    std::filesystem::create_directory(directory.path() / "few");
    std::filesystem::create_directory(directory.path() / "many");
    const Job few = work.prepare(kFew, directory.path() / "few"), many = work.prepare(kMany, directory.path() / "many");
    const Pair pair = inTurns(
        3, [&] { return timeOf(many, kMany, 1); }, [&] { return timeOf(few, kFew, 5); });
    made.push_back({work.title, pair, 1.2, "us"});
  }
  return made;
}

}  // namespace qs::bench
