// The command line of qsdb, separate from its process.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace qs::tools {

// Runs qsdb with arguments in UTF-8, without the program's name. Returns the process's exit code: 0 for success,
// 1 for findings, which were reported, and 2 when a command cannot do what it was asked; `err` has the reason. Failures
// of build and doctor have 1.
int runQsdb(std::vector<std::string> arguments, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
