// `qsdb diff A B`: says what changed between two sources or databases.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command. It prints the differences to `out`, and to `err` what a database has and a source cannot hold; it
// throws CLI::RuntimeError(1) when there are differences, another std::exception when it cannot compare.
void addDiffCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
