#include "bank/table.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "bank/csv_writer.h"
#include "bank/markup.h"
#include "bank/names.h"
#include "bank/properties.h"
#include "bank/svg.h"
#include "props/evaluation.h"

namespace qs::bank {
namespace {

// The signs of cells without a value, and of values that are not to be trusted.
struct Sign {
  LONG status;
  char sign;
  std::string_view meaning;
};
constexpr Sign kSigns[] = {
    {eStatusBelow, '<', "below the temperature range"},
    {eStatusAbove, '>', "above the temperature range"},
    {eStatusNotSet, '-', "not known"},
    {eStatusNotANumber, '?', "the equation has no finite value"},
    {eStatusOutsidePressure, '*', "the pressure is outside its range"},
};

constexpr const Sign* signOf(LONG status) {
  for (const Sign& sign : kSigns)
    if (status & sign.status) return &sign;
  return nullptr;
}

std::string sixDigits(double number) {
  std::string digits;
  appendDouble(digits, number);
  return digits;
}

std::string quoted(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

template <class T>
void appendList(Markup& text, std::string_view name, const std::vector<T>& list) {
  text << "\"" << name << "\": [";
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (i > 0) text << ", ";
    if constexpr (std::is_floating_point_v<T>) {
      if (!std::isfinite(list[i])) {
        text << "null";
        continue;
      }
    }
    text << list[i];
  }
  text << "]";
}

}  // namespace

std::vector<double> temperaturesBetween(double from, double to, double step) {
  constexpr double kMostTemperatures = 1e6;
  const double steps = (to - from) / step;
  if (!std::isfinite(from) || !std::isfinite(to) || !(step > 0.0) || !(from <= to))
    throw std::invalid_argument("the temperatures must rise from the first to the last, and the step must be positive");
  if (!(steps < kMostTemperatures)) throw std::invalid_argument("these are more than a million temperatures");
  std::vector<double> temperatures;
  for (int i = 0; i <= steps + 1e-9; ++i) temperatures.push_back(from + i * step);
  return temperatures;
}

Table makeTable(std::span<const Compound* const> compounds, std::span<const Key> keys, std::vector<double> temperatures,
                double pressure) {
  Table table{pressure, std::move(temperatures), {}};
  const std::size_t count = table.temperatures.size();
  for (const Compound* compound : compounds) {
    for (const Key key : keys) {
      TableColumn column{compound, key, std::vector<double>(count), std::vector<LONG>(count)};
      const EvaluationRequest request{
          .P = pressure, .policy = eNotSetOutside, .noValue = std::numeric_limits<double>::quiet_NaN()};
      evaluate(propertyOf(compound->data, key).get(), eStatusNotSet, table.temperatures, request,
               {.values = column.values.data(), .statuses = column.statuses.data()});
      table.columns.push_back(std::move(column));
    }
  }
  return table;
}

std::string tableText(const Table& table) {
  std::vector<std::vector<std::string>> columns{{"", "T", "K"}};
  for (const double T : table.temperatures) columns.front().push_back(sixDigits(T));
  LONG all = 0;
  for (const TableColumn& column : table.columns) {
    auto& cells = columns.emplace_back(
        std::vector<std::string>{column.compound->data.name, narrow(nameOf(column.key)), unitOf(column.key)});
    for (std::size_t i = 0; i < column.values.size(); ++i) {
      const Sign* sign = signOf(column.statuses[i]);
      std::string cell = std::isnan(column.values[i]) ? "" : sixDigits(column.values[i]);
      if (sign) {
        all |= sign->status;
        cell += sign->sign;
      }
      cells.push_back(std::move(cell));
    }
  }
  std::vector<std::string> lines(columns.front().size());
  for (const auto& cells : columns) {
    std::size_t width = 0;
    for (const std::string& cell : cells) width = std::max(width, cell.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (&cells != &columns.front()) lines[i] += "  ";
      lines[i].append(width - cells[i].size(), ' ') += cells[i];
    }
  }
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  for (const Sign& sign : kSigns) {
    if (all & sign.status) text.append(1, sign.sign).append("  ").append(sign.meaning) += '\n';
  }
  return text;
}

std::string tableCsv(const Table& table) {
  Markup text;
  text << "T [K]";
  for (const TableColumn& column : table.columns)
    text << ","
         << csvCell(column.compound->data.name + ' ' + narrow(nameOf(column.key)) + " [" + unitOf(column.key) + ']');
  text << "\n";
  for (std::size_t i = 0; i < table.temperatures.size(); ++i) {
    text << table.temperatures[i];
    for (const TableColumn& column : table.columns) {
      text << ",";
      if (!std::isnan(column.values[i])) text << column.values[i];
    }
    text << "\n";
  }
  return text.take();
}

std::string tableJson(const Table& table) {
  Markup text;
  text << "{\n  \"pressure\": " << table.pressure << ",\n  ";
  appendList(text, "temperatures", table.temperatures);
  text << ",\n  \"columns\": [";
  std::string_view separator = "\n    ";
  for (const TableColumn& column : table.columns) {
    text << separator << "{\"compound\": " << column.compound->data.number
         << ", \"name\": " << quoted(column.compound->data.name) << ", \"key\": \"" << narrow(nameOf(column.key))
         << "\", \"unit\": \"" << unitOf(column.key) << "\",\n     ";
    appendList(text, "values", column.values);
    text << ",\n     ";
    appendList(text, "statuses", column.statuses);
    text << "}";
    separator = ",\n    ";
  }
  text << "\n  ]\n}\n";
  return text.take();
}

std::string tableSvg(const Table& table) {
  std::vector<Chart> charts;
  for (const TableColumn& column : table.columns) {
    const KeyEntry& key = kKeys[static_cast<std::size_t>(column.key)];
    const std::string title = narrow(key.help) + ", " + unitOf(column.key);
    auto chart = std::ranges::find(charts, title, &Chart::title);
    if (chart == charts.end()) chart = charts.insert(charts.end(), {title, "K", table.temperatures, {}, {}, {}, false});
    chart->curves.push_back({column.compound->data.name, column.values});
  }
  return svgFile(charts);
}

}  // namespace qs::bank
