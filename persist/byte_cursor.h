// Takes little-endian numbers and text from bytes in memory, one after the other and never beyond their end.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

namespace qs {

static_assert(std::endian::native == std::endian::little, "numbers are copied as they stand");

class ByteCursor {
 public:
  explicit ByteCursor(std::span<const std::byte> bytes) : left_(bytes) {}

  std::size_t left() const { return left_.size(); }

  // Whether the end cut off anything that was asked for so far.
  bool cutOff() const { return cutOff_; }

  // The next number; zero when the end cuts it off, and then nothing is left.
  template <class Number>
  requires std::is_arithmetic_v<Number> Number take() {
    Number value{};
    const auto bytes = advance(sizeof value);
    if (bytes.size() == sizeof value) std::memcpy(&value, bytes.data(), sizeof value);
    return value;
  }

  // The next `length` bytes as text, or as many as there are.
  std::string_view takeText(std::uint64_t length) {
    const auto bytes = advance(length);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

  void skip(std::uint64_t length) { advance(length); }

 private:
  std::span<const std::byte> advance(std::uint64_t length) {
    if (length > left_.size()) cutOff_ = true;
    const auto bytes = left_.first(static_cast<std::size_t>(std::min<std::uint64_t>(length, left_.size())));
    left_ = left_.subspan(bytes.size());
    return bytes;
  }

  std::span<const std::byte> left_;
  bool cutOff_ = false;
};

}  // namespace qs
