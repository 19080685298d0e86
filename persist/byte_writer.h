// Puts little-endian numbers and text into bytes in memory, one after the other.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace qs {

class ByteWriter {
 public:
  void real(double value) { number(std::bit_cast<std::uint64_t>(value)); }
  void longInteger(std::int32_t value) { number(static_cast<std::uint32_t>(value)); }
  void shortInteger(int value) { number(static_cast<std::uint16_t>(value)); }

  template <class Unsigned>
  void number(Unsigned value) {
    for (std::size_t i = 0; i < sizeof value; ++i) {
      bytes_.push_back(static_cast<std::byte>(static_cast<std::uint64_t>(value) >> (8 * i) & 0xff));
    }
  }

  void text(std::string_view text, std::size_t width, char padding) {
    for (std::size_t i = 0; i < width; ++i)
      bytes_.push_back(static_cast<std::byte>(i < text.size() ? text[i] : padding));
  }

  // Fills with zeros up to a multiple of a length.
  void fillTo(std::size_t length) { bytes_.resize((bytes_.size() + length - 1) / length * length); }

  std::size_t size() const { return bytes_.size(); }
  std::vector<std::byte> take() { return std::move(bytes_); }

 private:
  std::vector<std::byte> bytes_;
};

}  // namespace qs
