// Text of pages and pictures, piece by piece.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <utility>

#include "platform/number_text.h"

namespace qs::bank {

class Markup {
 public:
  Markup& operator<<(std::string_view markup) {
    text_ += markup;
    return *this;
  }
  // In the shortest form that reads back the same.
  Markup& operator<<(double number) {
    char digits[kExactNumberLength];
    appendDigits(text_, {digits, writeExactDouble(digits, number)});
    return *this;
  }
  Markup& operator<<(std::integral auto number) {
    text_ += std::to_string(number);
    return *this;
  }

  // Text of others, in which nothing is markup.
  Markup& text(std::string_view plain) {
    for (const char c : plain) {
      switch (c) {
        case '&':
          text_ += "&amp;";
          break;
        case '<':
          text_ += "&lt;";
          break;
        case '>':
          text_ += "&gt;";
          break;
        case '"':
          text_ += "&quot;";
          break;
        default:
          text_ += c;
      }
    }
    return *this;
  }

  std::string take() { return std::move(text_); }

 private:
  std::string text_;
};

}  // namespace qs::bank
