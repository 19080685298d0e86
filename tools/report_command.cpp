#include "tools/report_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "bank/report.h"
#include "tools/bank_arguments.h"
#include "tools/progress.h"

namespace qs::tools {
namespace {

struct ReportOptions {
  std::string bank, file;
};

void report(const ReportOptions& options, std::ostream& out, std::ostream& err) {
  std::vector<bank::Finding> findings;
  const bank::Source bank = openBank(options.bank, findings);
  std::ranges::move(checkWithProgress(bank, err), std::back_inserter(findings));
  std::filesystem::path page;
  {
    Progress progress(err, "written", bank.compounds.size());
    page =
        bank::saveReport(bank, findings, bank::pathOf(options.file), [&](std::size_t done) { progress.reach(done); });
  }
  out << bank::utf8(page) << ": " << bank.compounds.size() << " compounds\n";
}

}  // namespace

void addReportCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<ReportOptions>();
  CLI::App* command = app.add_subcommand("report", "Make a page that shows a bank in a browser");
  command->add_option("DATABASE", options->bank, kBankHelp)->required();
  command
      ->add_option("-o,--output", options->file,
                   "The page; for more than 500 compounds a folder, without the ending .html")
      ->required();
  command->footer("Example: qsdb report database -o bank.html");
  command->callback([options, &out, &err] { report(*options, out, err); });
}

}  // namespace qs::tools
