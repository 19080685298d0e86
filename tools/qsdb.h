// The command line of qsdb, apart from the process that it runs in.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace qs::tools {

// Runs qsdb with arguments in UTF-8, without the program's name. Answers the process's exit code: 0 when all is done;
// otherwise `err` tells why.
int runQsdb(std::vector<std::string> arguments, std::ostream& out, std::ostream& err);

}  // namespace qs::tools
