#include "tools/find_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

#include "bank/compound_text.h"
#include "bank/lookup.h"
#include "tools/bank_arguments.h"

namespace qs::tools {
namespace {

struct FindOptions {
  std::string bank, text;
};

void find(const FindOptions& options, std::ostream& out, std::ostream& err) {
  const bank::Source bank = openBank(options.bank, err);
  const auto found = bank::compoundsLike(bank, options.text);
  if (found.empty()) throw std::runtime_error(options.bank + ": no compound has \"" + options.text + '"');
  out << bank::listText(found);
}

}  // namespace

void addFindCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<FindOptions>();
  CLI::App* command = app.add_subcommand("find", "List the compounds that have a text in their names or numbers");
  command->add_option("DATABASE", options->bank, kBankHelp)->required();
  command->add_option("TEXT", options->text, "A number, formula, or part of a name, synonym or CAS number")->required();
  command->footer("Example: qsdb find database butan");
  command->callback([options, &out, &err] { find(*options, out, err); });
}

}  // namespace qs::tools
