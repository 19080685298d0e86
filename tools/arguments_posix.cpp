#include "tools/arguments.h"

namespace qs::tools {

std::vector<std::string> utf8Arguments(int argc, char** argv) { return {argv + (argc > 0), argv + argc}; }

}  // namespace qs::tools
