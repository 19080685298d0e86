#include "tools/units_command.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <string>

#include "bank/names.h"
#include "bank/units.h"

namespace qs::tools {
namespace {

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text + "  ";
}

void printRow(const std::string& key, const std::string& property, const std::string& unit,
              const std::string& converted, std::ostream& out) {
  std::string row = padded(key, 20) + padded(property, 46) + padded(unit, 20) + converted;
  row.erase(row.find_last_not_of(' ') + 1);
  out << row << '\n';
}

std::string convertedTo(std::string_view target) {
  std::string list;
  for (const bank::Unit& unit : bank::convertedUnits()) {
    if (unit.target != target || unit.name.empty()) continue;
    if (!list.empty()) list += ", ";
    list += unit.name;
  }
  return list;
}

void printUnits(std::ostream& out) {
  printRow("KEY", "PROPERTY", "UNIT", "CONVERTED FROM", out);
  for (const KeyEntry& key : kKeys) {
    const std::string unit = narrow(key.unit);
    printRow(narrow(key.name), narrow(key.help), unit, convertedTo(unit), out);
  }
  for (const std::string_view unit : {bank::kTemperatureUnit, bank::kPressureUnit})
    printRow("", "limits of a correlation", std::string(unit), convertedTo(unit), out);
}

}  // namespace

void addUnitsCommand(CLI::App& app, std::ostream& out) {
  app.add_subcommand("units", "List the property keys, their units, and the units that are converted to them")
      ->footer("Example:\n  qsdb units")
      ->callback([&out] { printUnits(out); });
}

}  // namespace qs::tools
