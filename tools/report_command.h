// `qsdb report DATABASE -o FILE.html`: makes a page that shows a whole bank in a browser.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command, which prints to `out` and throws std::exception on failure.
void addReportCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
