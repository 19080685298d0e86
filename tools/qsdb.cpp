#include "tools/qsdb.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <ostream>
#include <utility>

#include "tools/build_command.h"
#include "tools/doctor_command.h"
#include "tools/export_command.h"
#include "tools/import_command.h"

namespace qs::tools {

int runQsdb(std::vector<std::string> arguments, std::ostream& out, std::ostream& err) {
  CLI::App app("Makes pure-component databases and examines installations.", "qsdb");
  app.set_version_flag("--version", "qsdb " QS_VERSION);
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // paths may start with a slash
  addBuildCommand(app, out);
  addDoctorCommand(app, out);
  addExportCommand(app, out, err);
  addImportCommand(app, out, err);
  std::ranges::reverse(arguments);  // as CLI11 takes them
  try {
    app.parse(std::move(arguments));
    return 0;
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err);
  } catch (const std::exception& error) {
    err << "qsdb: " << error.what() << '\n';
    return 1;
  }
}

}  // namespace qs::tools
