#include "tools/template_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "bank/csv_import.h"
#include "tools/bank_arguments.h"

namespace qs::tools {
namespace {

struct TemplateOptions {
  std::vector<std::string> keys;
  std::string file;
};

void writeTemplate(const TemplateOptions& options, std::ostream& out) {
  std::vector<Key> keys;
  for (const std::string& name : options.keys) keys.push_back(keyCalled(name));
  if (keys.empty()) keys.assign(bank::usualKeys().begin(), bank::usualKeys().end());
  writeResult(bank::csvTemplate(keys), options.file, out);
}

}  // namespace

void addTemplateCommand(CLI::App& app, std::ostream& out) {
  const auto options = std::make_shared<TemplateOptions>();
  CLI::App* command = app.add_subcommand("template", "Write the header of a sheet for import csv");
  command->add_option("--keys", options->keys, "The keys of the columns, instead of the usual ones")->delimiter(',');
  command->add_option("-o,--output", options->file, "The file to write, in place of one that is there");
  command->footer("Example: qsdb template --keys TC,PC,VP -o sheet.csv");
  command->callback([options, &out] { writeTemplate(*options, out); });
}

}  // namespace qs::tools
