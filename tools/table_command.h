// `qsdb table DATABASE --compound A,B --key VP,LDN --from T --to T --step T`: values over temperature as text, CSV,
// JSON or a picture.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command, which prints to `out` and throws std::exception on failure.
void addTableCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
