#include "tools/table_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "bank/finding.h"
#include "bank/table.h"
#include "bank/text_file.h"
#include "tools/bank_arguments.h"

namespace qs::tools {
namespace {

struct TableOptions {
  std::string bank, picture;
  std::vector<std::string> compounds, keys;
  double from = 0.0, to = 0.0, step = 0.0, pressure = bank::kUsualPressure;
  bool isCsv = false, isJson = false;
};

void writeTable(const TableOptions& options, std::ostream& out, std::ostream& err) {
  const bank::Source bank = openBank(options.bank, err);
  std::vector<const bank::Compound*> compounds;
  std::vector<Key> keys;
  for (const std::string& text : options.compounds) compounds.push_back(&compoundCalled(bank, text));
  for (const std::string& name : options.keys) keys.push_back(keyCalled(name));
  const bank::Table table = bank::makeTable(
      compounds, keys, bank::temperaturesBetween(options.from, options.to, options.step), options.pressure);
  if (!options.picture.empty())
    bank::replaceText(bank::pathOf(options.picture), bank::tableSvg(table));
  else
    out << (options.isCsv ? bank::tableCsv(table) : options.isJson ? bank::tableJson(table) : bank::tableText(table));
}

}  // namespace

void addTableCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<TableOptions>();
  CLI::App* command = app.add_subcommand("table", "Print values over temperature");
  command->add_option("DATABASE", options->bank, kBankHelp)->required();
  command->add_option("--compound", options->compounds, kCompoundHelp)->delimiter(',')->required();
  command->add_option("--key", options->keys, "Keys such as VP,LDN")->delimiter(',')->required();
  command->add_option("--from", options->from, "The first temperature, K")->required();
  command->add_option("--to", options->to, "The last temperature, K")->required();
  command->add_option("--step", options->step, "From one temperature to the next, K")->required();
  command->add_option("--pressure", options->pressure, "The pressure, kPa")->capture_default_str();
  CLI::Option* csv = command->add_flag("--csv", options->isCsv, "Comma-separated values; none where there is none");
  CLI::Option* json = command->add_flag("--json", options->isJson,
                                        "JSON; null where there is no value, with the status of docs/evaluation.md");
  CLI::Option* svg = command->add_option("--svg", options->picture, "Draw the values into a file");
  csv->excludes(json)->excludes(svg);
  json->excludes(svg);
  command->footer(
      "Names with a comma in them are given by number or CAS number.\n"
      "Example: qsdb table database --compound water,methanol --key VP,LDN --from 300 --to 400 --step 25");
  command->callback([options, &out, &err] { writeTable(*options, out, err); });
}

}  // namespace qs::tools
