// `qsdb check SOURCE|DATABASE`: says which values of a bank cannot be right, or are unlikely.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command. It reports to `out` and throws CLI::RuntimeError with exit code 1 when there is a finding that is
// not waived, std::exception when it cannot check.
void addCheckCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
