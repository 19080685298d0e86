#include "tools/check_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "bank/database_source.h"
#include "bank/text_file.h"
#include "tools/progress.h"

namespace qs::tools {
namespace {

struct CheckOptions {
  std::string place;
  bool json = false;
};

const char* nameOf(bank::Severity severity) { return severity == bank::Severity::Error ? "error" : "warning"; }

void printRules(std::ostream& out) {
  for (const bank::Rule& rule : bank::rules())
    out << rule.name << " (" << nameOf(rule.severity) << "): " << rule.reason << '\n';
}

void printJson(std::span<const bank::Finding> findings, std::ostream& out) {
  using Json = nlohmann::ordered_json;
  Json list = Json::array();
  for (const bank::Finding& finding : findings) {
    Json& entry = list.emplace_back();
    entry["rule"] = finding.rule;
    entry["severity"] = nameOf(finding.severity);
    entry["file"] = finding.file;
    if (finding.line > 0) entry["line"] = finding.line;
    if (!finding.compound.empty()) entry["compound"] = finding.compound;
    if (!finding.field.empty()) entry["field"] = finding.field;
    entry["message"] = finding.message;
    if (!finding.waiver.empty()) entry["waiver"] = finding.waiver;
  }
  out << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void check(const CheckOptions& options, std::ostream& out, std::ostream& err) {
  std::vector<bank::Finding> findings;
  const bank::Source source = bank::readSourceOrDatabase(bank::pathOf(options.place), findings);
  std::ranges::move(checkWithProgress(source, err), std::back_inserter(findings));
  std::ranges::stable_sort(findings, {}, &bank::Finding::line);
  const auto waived =
      std::ranges::count_if(findings, [](const bank::Finding& finding) { return !finding.waiver.empty(); });
  if (options.json) {
    printJson(findings, out);
  } else {
    for (const bank::Finding& finding : findings) {
      out << textOf(finding) << " [" << finding.rule << ", " << nameOf(finding.severity)
          << (finding.waiver.empty() ? "" : ", waived: " + finding.waiver) << "]\n";
    }
    out << options.place << ": " << source.compounds.size() << " compounds, " << std::ssize(findings) - waived
        << " findings, " << waived << " waived\n";
  }
  if (waived != std::ssize(findings)) throw CLI::RuntimeError(1);
}

}  // namespace

void addCheckCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<CheckOptions>();
  CLI::App* command = app.add_subcommand("check", "Say which values of a source or a database cannot be right");
  command->add_option("SOURCE|DATABASE", options->place, "A compound source in JSON, or the directory of a database")
      ->required();
  command->add_flag("--json", options->json, "Print a list in JSON");
  command->add_flag_callback(
      "--rules",
      [&out] {
        printRules(out);
        throw CLI::Success();
      },
      "List the rules with their reasons, and check nothing");
  command->footer(
      "Example: qsdb check compounds.json\n"
      "Exit codes: 0 without findings, 1 with findings that are not waived, 2 when it cannot check");
  command->callback([options, &out, &err] { check(*options, out, err); });
}

}  // namespace qs::tools
