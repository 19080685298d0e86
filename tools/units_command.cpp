#include "tools/units_command.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "bank/compound_text.h"
#include "bank/names.h"
#include "bank/units.h"

namespace qs::tools {
namespace {

std::string convertedTo(std::string_view target) {
  std::string list;
  for (const bank::Unit& unit : bank::convertedUnits()) {
    if (unit.target != target || unit.name.empty()) continue;
    if (!list.empty()) list += ", ";
    list += unit.name;
  }
  return list;
}

std::string unitsText() {
  std::vector<std::vector<std::string>> rows{{"KEY", "PROPERTY", "UNIT", "CONVERTED FROM"}};
  for (const KeyEntry& key : kKeys) {
    const std::string unit = narrow(key.unit);
    rows.push_back({narrow(key.name), narrow(key.help), unit, convertedTo(unit)});
  }
  for (const std::string_view unit : {bank::kTemperatureUnit, bank::kPressureUnit})
    rows.push_back({"", "limits of a correlation", std::string(unit), convertedTo(unit)});
  return bank::columnText(rows);
}

}  // namespace

void addUnitsCommand(CLI::App& app, std::ostream& out) {
  app.add_subcommand("units", "List the property keys, their units, and the units that are converted to them")
      ->footer("Example:\n  qsdb units")
      ->callback([&out] { out << unitsText(); });
}

}  // namespace qs::tools
