// The database of the bundled compounds, built once where it is first needed.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tools/qsdb.h"

namespace qs::test {

struct BundledCompounds {
  BundledCompounds() {
    const std::filesystem::path source = kSourceFolder / "data" / "compounds.json";
    std::ostringstream out, err;
    EXPECT_EQ(tools::runQsdb({"build", utf8(source), utf8(directory.path())}, out, err), 0) << err.str();
    const auto compounds = nlohmann::json::parse(std::ifstream(source));
    for (const auto& compound : compounds["compounds"]) numbers.push_back(compound["number"].get<int>());
  }

  TemporaryDirectory directory;
  std::vector<int> numbers;
};

}  // namespace qs::test
