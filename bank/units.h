// Converts values from the units of bank/units.def to those of the key table.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "persist/database_writer.h"
#include "props/key_table.h"

namespace qs::bank {

struct Unit {
  std::string_view target;  // the unit of the key table to which it is converted
  std::string_view name;
  double times, over, offset;
};
std::span<const Unit> convertedUnits();

// The units of limits.
inline constexpr std::string_view kTemperatureUnit = "K", kPressureUnit = "kPa";

// Each converts in place. Otherwise it returns why it cannot, and leaves the value as it was.
[[nodiscard]] std::string convertNumber(std::string_view target, std::string_view unit, double& number);
// The values of a correlation; its temperatures and pressures stay. What is not a scale of its coefficients is refused.
[[nodiscard]] std::string convertCorrelation(Key key, std::string_view unit, database::Correlation& correlation);
// Multiplies the values of a correlation by times / over.
[[nodiscard]] std::string scaleCorrelation(Key key, double times, double over, database::Correlation& correlation);

}  // namespace qs::bank
