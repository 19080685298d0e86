// `qsdb import csv|chemsep FILE -o SOURCE.json`: makes a compound source from the files of others.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace qs::tools {

// Adds the command. It reports what it made and what it left out to `out`, faults in the file to `err`, and throws
// CLI::RuntimeError or std::exception when nothing was written.
void addImportCommand(CLI::App& app, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
