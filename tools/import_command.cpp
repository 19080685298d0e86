#include "tools/import_command.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "bank/chemsep_import.h"
#include "bank/csv_import.h"
#include "bank/json_writer.h"
#include "bank/text_file.h"

namespace qs::tools {
namespace {

struct ImportOptions {
  std::string file, source;
  bank::ChemsepOptions chemsep;
};

constexpr int kRefused = 2;

// Writes the source, unless there are findings, which are all reported.
void finish(const bank::Source& source, const std::vector<bank::Finding>& findings, const ImportOptions& options,
            std::ostream& out, std::ostream& err) {
  for (const bank::Finding& finding : findings) err << textOf(finding) << '\n';
  if (!findings.empty()) {
    err << "qsdb: " << options.source << " is not written; faults: " << findings.size() << '\n';
    throw CLI::RuntimeError(kRefused);
  }
  bank::replaceText(bank::pathOf(options.source), bank::writeSource(source));
  std::size_t values = 0;
  for (const bank::Compound& compound : source.compounds)
    values += compound.data.constants.size() + compound.data.correlations.size();
  out << options.source << ": " << source.compounds.size() << " compounds, " << values << " values\n";
}

void importChemsep(const ImportOptions& options, std::ostream& out, std::ostream& err) {
  std::vector<bank::Finding> findings;
  const auto made = bank::importChemsep(bank::pathOf(options.file), options.chemsep, findings);
  finish(made.source, findings, options, out, err);
  if (!made.leftOut.empty()) out << "Left out:\n";
  for (const bank::LeftOut& left : made.leftOut) {
    out << "  " << left.element << ": " << left.reason << "; ";
    if (left.times > 1) out << left.times << " times, first ";
    out << "in " << left.first << '\n';
  }
}

void importCsv(const ImportOptions& options, std::ostream& out, std::ostream& err) {
  std::vector<bank::Finding> findings;
  const bank::Source source = bank::importCsv(bank::pathOf(options.file), findings);
  finish(source, findings, options, out, err);
}

CLI::App* addFormat(CLI::App& command, const char* name, const char* what, ImportOptions& options) {
  CLI::App* format = command.add_subcommand(name, what);
  format->add_option("FILE", options.file, "The file to import")->required();
  format->add_option("-o,--output", options.source, "The compound source to write, in place of one that is there")
      ->required();
  return format;
}

}  // namespace

void addImportCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<ImportOptions>();
  CLI::App* command = app.add_subcommand("import", "Make a compound source in JSON from files of other forms");
  command->require_subcommand(1);
  command->footer("Example: qsdb import chemsep library.xml -o compounds.json");

  CLI::App* csv = addFormat(*command, "csv", "Import a sheet with a row for each compound, a CSV file", *options);
  csv->footer("Example: qsdb import csv sheet.csv -o compounds.json");
  csv->callback([options, &out, &err] { importCsv(*options, out, err); });

  CLI::App* chemsep =
      addFormat(*command, "chemsep", "Import a pure-component library of ChemSep, an XML file", *options);
  CLI::Option* first =
      chemsep->add_option("--first-number", options->chemsep.firstNumber, "The number of the first compound")
          ->capture_default_str()
          ->check(CLI::Range(1, std::numeric_limits<std::int32_t>::max()));
  chemsep->add_flag("--library-numbers", options->chemsep.libraryNumbers, "Keep the numbers that the library has")
      ->excludes(first);
  chemsep->footer("Example: qsdb import chemsep library.xml -o compounds.json --first-number 2000");
  chemsep->callback([options, &out, &err] { importChemsep(*options, out, err); });
}

}  // namespace qs::tools
