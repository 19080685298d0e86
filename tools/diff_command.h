// `qsdb diff A B`: says what changed between two sources or databases.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command. It prints the differences to `out` and throws CLI::RuntimeError(1) when there are some, another
// std::exception when it cannot compare.
void addDiffCommand(CLI::App& app, std::ostream& out);

}  // namespace qs::tools
