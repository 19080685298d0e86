#include "tools/qsdb.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <ostream>
#include <utility>

#include "bank/names.h"
#include "tools/build_command.h"
#include "tools/check_command.h"
#include "tools/diff_command.h"
#include "tools/doctor_command.h"
#include "tools/export_command.h"
#include "tools/find_command.h"
#include "tools/import_command.h"
#include "tools/report_command.h"
#include "tools/show_command.h"
#include "tools/table_command.h"
#include "tools/template_command.h"
#include "tools/units_command.h"

namespace qs::tools {
namespace {

constexpr int kCouldNot = 2;  // what a command was asked to do

}  // namespace

int runQsdb(std::vector<std::string> arguments, std::ostream& out, std::ostream& err) {
  CLI::App app("Makes and shows pure-component databases, and examines installations.", "qsdb");
  app.set_version_flag("--version", "qsdb " QS_VERSION);
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // paths may start with a slash
  addBuildCommand(app, out, err);
  addCheckCommand(app, out, err);
  addDiffCommand(app, out, err);
  addDoctorCommand(app, out);
  addExportCommand(app, out, err);
  addFindCommand(app, out, err);
  addImportCommand(app, out, err);
  addReportCommand(app, out, err);
  addShowCommand(app, out, err);
  addTableCommand(app, out, err);
  addTemplateCommand(app, out);
  addUnitsCommand(app, out);
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
  if (!arguments.empty() && !arguments[0].starts_with('-') && std::ranges::count(names, arguments[0]) == 0) {
    err << "qsdb: no command \"" << arguments[0] << '"' << bank::suggestion(arguments[0], {names.begin(), names.end()})
        << '\n';
    return kCouldNot;
  }
  std::ranges::reverse(arguments);  // as CLI11 takes them
  try {
    app.parse(std::move(arguments));
    return 0;
  } catch (const CLI::RuntimeError& error) {
    return error.get_exit_code();  // of a command that has reported its findings
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err) == 0 ? 0 : kCouldNot;
  } catch (const std::exception& error) {
    err << "qsdb: " << error.what() << '\n';
    return app.got_subcommand("build") || app.got_subcommand("doctor") ? 1 : kCouldNot;
  }
}

}  // namespace qs::tools
