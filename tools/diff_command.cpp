#include "tools/diff_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>

#include "bank/differences.h"
#include "tools/bank_arguments.h"

namespace qs::tools {
namespace {

struct DiffOptions {
  std::string before, after;
};

void compare(const DiffOptions& options, std::ostream& out, std::ostream& err) {
  const auto differences = bank::differences(openWhole(options.before, err), openWhole(options.after, err));
  for (const bank::Difference& difference : differences) out << textOf(difference) << '\n';
  if (!differences.empty()) throw CLI::RuntimeError(1);
}

}  // namespace

void addDiffCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App* command = app.add_subcommand("diff", "Say what changed between two sources or databases");
  command->add_option("A", options->before, kBankHelp)->required();
  command->add_option("B", options->after, kBankHelp)->required();
  command->footer("Example:\n  qsdb diff compounds.json database");
  command->callback([options, &out, &err] { compare(*options, out, err); });
}

}  // namespace qs::tools
