// The program's command line; Windows does not pass it to main in UTF-8.
#pragma once

#include <string>
#include <vector>

namespace qs::tools {

// The arguments in UTF-8, without the program's name.
std::vector<std::string> utf8Arguments(int argc, char** argv);

}  // namespace qs::tools
