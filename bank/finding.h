// What is wrong with a source or a database.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qs::bank {

enum class Severity { Error, Warning };

struct Finding {
  std::string rule;  // its name, as in docs/checks.md
  Severity severity = Severity::Error;
  std::string file = {};
  int line = 0;               // 0 in a database
  std::string compound = {};  // as database::describe names it; empty where no compound is meant
  std::string field = {};     // a key or a member
  std::string message = {};
  std::string waiver = {};  // the reason for which it is accepted; empty where it is not
};

// In one line: "FILE:LINE: COMPOUND, FIELD: MESSAGE", without what is empty.
std::string textOf(const Finding& finding);

// A path as messages name it, and back.
std::string utf8(const std::filesystem::path& path);
std::filesystem::path pathOf(std::string_view utf8);

}  // namespace qs::bank
