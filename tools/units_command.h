// `qsdb units`: lists the property keys with their units.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command, which prints to `out`.
void addUnitsCommand(CLI::App& app, std::ostream& out);

}  // namespace qs::tools
