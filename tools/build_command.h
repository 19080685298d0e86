// `qsdb build SOURCE... OUTDIR`: makes the binary database from compound sources.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command. It reports what it made to `out`, and to `err` what a database among the sources has and a source
// cannot hold; it throws std::exception on failure.
void addBuildCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
