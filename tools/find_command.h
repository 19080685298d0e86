// `qsdb find DATABASE TEXT`: lists the compounds that a text finds.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command, which prints to `out` and throws std::exception on failure.
void addFindCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
