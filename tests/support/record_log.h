// What the reader of a data record delivers, as one text.
#pragma once

#include <sstream>
#include <string>

#include "persist/database_record.h"

namespace qs::test {

// "name=value " for each field in turn. Groups are type*count; an equation is its shape, its coefficients, its ranges,
// the shapes of X and Y and their powers, and "old" where the shapes are of an old file.
class RecordLog final : public database::RecordSink {
 public:
  std::string text() const { return log_.str(); }

  void shortInteger(const database::Field& field, std::int16_t value) override { note(field) << value << ' '; }
  void longInteger(const database::Field& field, std::int32_t value) override { note(field) << value << ' '; }
  void number(const database::Field& field, double value) override { note(field) << value << ' '; }
  void text(const database::Field& field, WideView value) override { note(field) << narrow(value) << ' '; }
  void groups(const database::Field& field, std::span<const database::GroupCount> values) override {
    note(field);
    for (const auto& [type, count] : values) log_ << type << '*' << count << ' ';
  }
  void equation(const database::Field& field, const database::EquationField& value) override {
    note(field) << value.shape << '(';
    for (const double coefficient : value.coefficients) log_ << coefficient << ' ';
    log_ << ")T" << value.tMin << ".." << value.tMax << " P" << value.pMin << ".." << value.pMax << " X" << value.xShape
         << '^' << value.xPower << " Y" << value.yShape << '^' << value.yPower << (value.fromOldShapes ? " old " : " ");
  }

 private:
  std::ostringstream& note(const database::Field& field) {
    log_ << narrow(field.name) << '=';
    return log_;
  }

  std::ostringstream log_;
};

}  // namespace qs::test
