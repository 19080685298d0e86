#include "platform/text.h"

#include <gtest/gtest.h>

namespace qs {
namespace {

TEST(Text, ConvertsEveryCharacterAtEveryPlace) {
  const std::string ascii = "The quick brown fox jumps over the lazy dog";
  for (const WideView other : {OLESTR(""), OLESTR("\xE9"), OLESTR("\x20AC"), OLESTR("\xD83D\xDE00")})
    for (std::size_t length = 0; length <= ascii.size(); ++length)
      for (std::size_t place = 0; place <= length; ++place) {
        const std::string before = ascii.substr(0, place), after = ascii.substr(place, length - place);
        const std::string text = before + narrow(other) + after;
        const WideString wide(before.begin(), before.end());
        EXPECT_EQ(narrow(wide + WideString(other) + WideString(after.begin(), after.end())), text);
        EXPECT_EQ(widen(text), wide + widen(narrow(other)) + WideString(after.begin(), after.end()));
      }
}

}  // namespace
}  // namespace qs
