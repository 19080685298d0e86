// Builds the two files of a pure-component database byte by byte, and directories to put them in.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace qs::test {

inline WideString wide(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

class Bytes {
 public:
  Bytes& integer(std::int64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) bytes_.push_back(static_cast<std::byte>(value >> (8 * i) & 0xFF));
    return *this;
  }
  Bytes& int16(std::int64_t value) { return integer(value, 2); }
  Bytes& int32(std::int64_t value) { return integer(value, 4); }
  Bytes& real(double value) { return integer(std::bit_cast<std::int64_t>(value), 8); }
  Bytes& reals(std::initializer_list<double> values) {
    for (const double value : values) real(value);
    return *this;
  }
  Bytes& text(std::string_view text, std::size_t width, char pad = ' ') {
    for (std::size_t i = 0; i < width; ++i) integer(i < text.size() ? text[i] : pad, 1);
    return *this;
  }
  Bytes& zerosTo(std::size_t size) {
    bytes_.resize(std::max(size, bytes_.size()));
    return *this;
  }
  Bytes& append(const Bytes& other) {
    bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
    return *this;
  }

  std::size_t size() const { return bytes_.size(); }
  const std::vector<std::byte>& get() const { return bytes_; }
  std::vector<std::byte> first(std::size_t size) const { return {bytes_.data(), bytes_.data() + size}; }

 private:
  std::vector<std::byte> bytes_;
};

// A header without the padding of its record.
inline Bytes header(double version, std::int64_t recordLength, std::int64_t fields, std::int64_t compounds) {
  return Bytes().real(version).text("reserved", 10).int32(recordLength).int32(fields).int32(compounds).int32(-1);
}

inline Bytes fieldDefinition(std::string_view name, std::int64_t size, std::string_view kind) {
  return Bytes().int32(0).int32(size).text(name, 50).text(kind, 20);
}

inline Bytes indexRecord(std::int64_t compound, std::int64_t dataRecord, std::string_view name = "",
                         std::string_view identifier = "") {
  return Bytes().int32(compound).int32(dataRecord).text(name, 50).text(identifier, 20);
}

inline Bytes synonymRecord(std::int64_t compound, std::string_view text, std::size_t recordLength = 78) {
  return Bytes().int32(compound).text(text, recordLength - 4, '\0');
}

// An index file with records of 78 bytes whose counts are the true ones.
inline Bytes indexFile(const std::vector<Bytes>& fields, const std::vector<Bytes>& compounds = {},
                       const std::vector<Bytes>& synonyms = {}) {
  Bytes file = header(2.0, 78, static_cast<std::int64_t>(fields.size()), static_cast<std::int64_t>(compounds.size()));
  file.zerosTo(78);
  for (const auto* section : {&fields, &compounds, &synonyms}) {
    for (const Bytes& record : *section) file.append(record);
  }
  return file;
}

// A directory of its own, removed with what it holds. Its name has characters outside ASCII.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    static std::random_device number;
    path_ = std::filesystem::temp_directory_path() / std::filesystem::path(u8"qs \u00e9\u6c34 ");
    path_ += std::to_string(number());
    std::filesystem::create_directory(path_);
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }
  WideString name() const { return path_.string<OLECHAR>(); }

  // Creates a file or overwrites it in place.
  void write(std::string_view file, const Bytes& content) const {
    std::ofstream stream(path_ / file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(content.get().data()), static_cast<std::streamsize>(content.size()));
  }
  void remove(std::string_view file) const { std::filesystem::remove(path_ / file); }

 private:
  std::filesystem::path path_;
};

}  // namespace qs::test
