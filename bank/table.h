// Tables of properties over temperature.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "bank/source.h"

namespace qs::bank {

// What equations that know a pressure are evaluated at where nobody says another, kPa.
inline constexpr double kUsualPressure = 101.325;

struct TableColumn {
  const Compound* compound;
  Key key;
  std::vector<double> values;  // not a number where there is none
  std::vector<LONG> statuses;  // sums of tagEvaluationStatusEnum
};

struct Table {
  double pressure;                   // kPa
  std::vector<double> temperatures;  // K
  std::vector<TableColumn> columns;  // the keys of the first compound, then those of the next
};

// Temperatures from one to another, both included where a whole number of steps leads there. Throws
// std::invalid_argument for a step that does not lead there, and for more than a million.
std::vector<double> temperaturesBetween(double from, double to, double step);

// Values outside a property's range are not there.
Table makeTable(std::span<const Compound* const> compounds, std::span<const Key> keys, std::vector<double> temperatures,
                double pressure = kUsualPressure);

// For people: columns with six digits, cells without a value marked by a sign that the last lines explain.
std::string tableText(const Table& table);
// Cells without a value are empty.
std::string tableCsv(const Table& table);
// Cells without a value are null; each column has its statuses beside its values.
std::string tableJson(const Table& table);
// A chart for each key.
std::string tableSvg(const Table& table);

}  // namespace qs::bank
