// `qsdb template [--keys TC,PC,VP] [-o FILE]`: writes an empty sheet for `qsdb import csv`.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command. It writes to `out` or the file and throws std::exception on failure.
void addTemplateCommand(CLI::App& app, std::ostream& out);

}  // namespace qs::tools
