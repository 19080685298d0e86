#include "tools/export_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>

#include "bank/csv_writer.h"
#include "bank/json_writer.h"
#include "tools/bank_arguments.h"

namespace qs::tools {
namespace {

struct ExportOptions {
  std::string place, file;
  bool csv = false, json = false;
};

void exportSource(const ExportOptions& options, std::ostream& out, std::ostream& err) {
  const bank::Source source = openWhole(options.place, err);
  writeResult(options.csv ? bank::writeCsv(source) : bank::writeSource(source), options.file, out);
}

}  // namespace

void addExportCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App* command = app.add_subcommand("export", "Write what a database holds as JSON or as a sheet");
  command->add_option("DATABASE", options->place, "The directory of the database, or a compound source in JSON")
      ->required();
  CLI::Option* csv = command->add_flag("--csv", options->csv, "Write a sheet with a row for each compound");
  command->add_flag("--json", options->json, "Write a compound source in JSON, as without an option")->excludes(csv);
  command->add_option("-o,--output", options->file, "The file to write, in place of one that is there");
  command->footer("Example:\n  qsdb export database --json -o compounds.json");
  command->callback([options, &out, &err] { exportSource(*options, out, err); });
}

}  // namespace qs::tools
