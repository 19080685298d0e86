// Runs qsdb in the test's process.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "tools/qsdb.h"

namespace qs::test {

struct Outcome {
  int code;
  std::string out, err;
};

inline Outcome runQsdb(const std::vector<std::string>& arguments) {
  std::ostringstream out, err;
  const int code = tools::runQsdb(arguments, out, err);
  return {code, out.str(), err.str()};
}

}  // namespace qs::test
