// What scenarios work on: the scenarios themselves, a database, and the same compounds as JSON.
#pragma once

#include <sstream>
#include <stdexcept>

#include "tests/failures/scenario.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tools/qsdb.h"

namespace qs::test {

struct ScenarioData {
  ScenarioData() {
    registerClasses();
    writeFile(json.path() / "a.json", readFile(folder / "compounds.json"));
    std::ostringstream out, err;
    if (qs::tools::runQsdb({"build", json.path() / "a.json", database.path()}, out, err) != 0)
      throw std::runtime_error(err.str());
    std::ifstream file(folder / "scenarios.txt");
    scenarios = readScenarios(file);
  }

  std::filesystem::path folder = kSourceFolder / "tests" / "failures";
  TemporaryDirectory database, json;
  std::vector<Scenario> scenarios;
  int runs = 0;
  std::map<std::string, std::string> texts{{"database", database.path()}, {"json", json.path()}};
};

}  // namespace qs::test
