// Decodes database files as docs/database.md describes them, apart from the server's reader, so that tests can compare
// what was written with what was meant.
#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace qs::test {

struct DecodedEquation {
  int shape;
  std::vector<double> coefficients;
  double tmin, tmax, pmin, pmax;
  int xShape, yShape;
  double xPower, yPower;
  std::vector<int> reserved;

  bool operator==(const DecodedEquation&) const = default;
};

class DatabaseDecoder {
 public:
  DatabaseDecoder(std::span<const std::byte> index, std::span<const std::byte> data) : index_(index), data_(data) {
    const auto fields = at<std::int32_t>(index, 22), count = at<std::int32_t>(index, 26);
    std::size_t offset = 0;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(fields); ++i) {
      const std::string name = text(index, 78 * i + 8, 50), kind = text(index, 78 * i + 58, 20);
      const auto size = static_cast<std::size_t>(at<std::int32_t>(index, 78 * i + 4));
      table.push_back(name + '|' + kind + '|' + std::to_string(size));
      fields_[name] = {offset, size};
      offset += kind == "Equation" ? 60 + 8 * size : kind == "Group" ? 4 * size : size;
    }
    recordBytes = offset;
    std::size_t position = 78 * (static_cast<std::size_t>(fields) + 1);
    for (std::int32_t i = 0; i < count; ++i, position += 78) {
      numbers.push_back(at<std::int32_t>(index, position));
      records_[numbers.back()] = static_cast<std::size_t>(at<std::int32_t>(index, position + 4) + 1) * 78;
      names.push_back(text(index, position + 8, 50) + '|' + text(index, position + 58, 20));
    }
    for (; position < index.size(); position += 78) {
      synonyms.emplace_back(at<std::int32_t>(index, position), text(index, position + 4, 74));
    }
  }

  bool has(const std::string& field) const { return fields_.contains(field); }

  std::size_t recordOffset(int compound) const { return records_.at(compound); }

  template <class T>
  T number(int compound, const std::string& field, std::size_t element = 0) const {
    return at<T>(data_, records_.at(compound) + fields_.at(field).offset + element * sizeof(T));
  }

  std::string text(int compound, const std::string& field) const {
    return text(data_, records_.at(compound) + fields_.at(field).offset, fields_.at(field).size);
  }

  DecodedEquation equation(int compound, const std::string& field) const {
    std::size_t offset = records_.at(compound) + fields_.at(field).offset;
    const auto take = [&]<class T>(T) {
      offset += sizeof(T);
      return at<T>(data_, offset - sizeof(T));
    };
    DecodedEquation equation{};
    equation.shape = take(std::int16_t{});
    for (std::size_t i = 0; i < fields_.at(field).size; ++i) equation.coefficients.push_back(take(0.0));
    for (double* value : {&equation.tmin, &equation.tmax, &equation.pmin, &equation.pmax}) *value = take(0.0);
    equation.xShape = take(std::int16_t{});
    equation.yShape = take(std::int16_t{});
    equation.xPower = take(0.0);
    equation.yPower = take(0.0);
    for (int i = 0; i < 3; ++i) equation.reserved.push_back(take(std::int16_t{}));
    return equation;
  }

  template <class T>
  static T at(std::span<const std::byte> bytes, std::size_t offset) {
    T value;
    if (offset + sizeof value > bytes.size()) throw std::out_of_range("beyond the end of the file");
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
  }

  // Up to the first NUL or the blanks at the end.
  static std::string text(std::span<const std::byte> bytes, std::size_t offset, std::size_t size) {
    const auto part = bytes.subspan(offset, size);
    std::string text(reinterpret_cast<const char*>(part.data()), part.size());
    text.resize(std::min(text.find('\0'), text.size()));
    return text.substr(0, text.find_last_not_of(' ') + 1);
  }

  std::vector<std::string> table;  // name|kind|size
  std::size_t recordBytes = 0;
  std::vector<int> numbers;
  std::vector<std::string> names;  // name|identifier
  std::vector<std::pair<int, std::string>> synonyms;

 private:
  struct Place {
    std::size_t offset, size;
  };

  std::span<const std::byte> index_, data_;
  std::map<std::string, Place> fields_;
  std::map<int, std::size_t> records_;
};

}  // namespace qs::test
