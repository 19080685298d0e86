// `qsdb show DATABASE COMPOUND`: shows a compound, or some of its values with all that is known of them.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command, which prints to `out` and throws std::exception on failure.
void addShowCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
