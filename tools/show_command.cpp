#include "tools/show_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "bank/compound_text.h"
#include "tools/bank_arguments.h"

namespace qs::tools {
namespace {

struct ShowOptions {
  std::string bank, compound;
  std::vector<std::string> keys;
};

void show(const ShowOptions& options, std::ostream& out, std::ostream& err) {
  const bank::Source bank = openBank(options.bank, err);
  const bank::Compound& compound = compoundCalled(bank, options.compound);
  std::string text;
  for (const std::string& key : options.keys) text += bank::valueText(bank, compound, keyCalled(key));
  out << (options.keys.empty() ? bank::compoundText(compound) : text);
}

}  // namespace

void addShowCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<ShowOptions>();
  CLI::App* command = app.add_subcommand("show", "Show a compound, or some of its values in full");
  command->add_option("DATABASE", options->bank, kBankHelp)->required();
  command->add_option("COMPOUND", options->compound, kCompoundHelp)->required();
  command->add_option("--key", options->keys, "Keys to show in full, such as VP,LDN")->delimiter(',');
  command->footer("Example: qsdb show database water --key VP");
  command->callback([options, &out, &err] { show(*options, out, err); });
}

}  // namespace qs::tools
