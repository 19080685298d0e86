// `qsdb export DATABASE`: writes what a database holds as JSON or as a sheet.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command. It writes to the file that its options name or to `out`, and to `err` what a source cannot hold;
// it throws std::exception on failure.
void addExportCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
