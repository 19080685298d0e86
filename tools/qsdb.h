// The command line of qsdb, separate from its process.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace qs::tools {

// Runs qsdb with arguments in UTF-8, without the program's name. Returns the process's exit code: 0 for success;
// otherwise `err` has the reason.
int runQsdb(std::vector<std::string> arguments, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
