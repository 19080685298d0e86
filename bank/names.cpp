#include "bank/names.h"

#include <numeric>
#include <utility>

#include "platform/number_text.h"
#include "platform/text.h"

namespace qs::bank {
namespace {

// The least number of characters to insert, delete or replace (Levenshtein).
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

std::string unitOf(Key key) { return narrow(kKeys[static_cast<std::size_t>(key)].unit); }

std::string exactText(double number) {
  char digits[kExactNumberLength];
  return {digits, writeExactDouble(digits, number)};
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string suggestion(std::string_view mistyped, const std::vector<std::string_view>& names) {
  std::size_t least = mistyped.size() / 3 + 2;  // farther away it is another name
  std::string_view nearest;
  for (const std::string_view name : names) {
    const std::size_t found = distance(lower(mistyped), lower(name));
    if (found >= least || found >= name.size()) continue;
    least = found;
    nearest = name;
  }
  return nearest.empty() ? std::string() : std::string("; did you mean \"").append(nearest).append("\"?");
}

std::string unknownKeyText(const std::string& name) {
  std::vector<std::string> keys;
  for (const KeyEntry& key : kKeys) keys.push_back(narrow(key.name));
  return "no property key \"" + name + '"' + suggestion(name, {keys.begin(), keys.end()});
}

}  // namespace qs::bank
