// `qsdb doctor`: says whether hosts can use the installed modules, and what to do when they cannot.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command, which reports to `out` and throws std::runtime_error when there is a fault.
void addDoctorCommand(CLI::App& app, std::ostream& out);

}  // namespace qs::tools
