// The fixed property keys: their order, names and help texts, and the way from a name to a key.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include "platform/text.h"

namespace qs {

// A fixed key; its number is the key's place in the table and its slot in a compound.
enum class Key : int {
#define FIXED_KEY(key, help, interface_name, dispid) key,
#define FIXED_KEY_BY_NAME(key, help) key,
#include "props/keys.def"
};

struct KeyEntry {
  WideView name;
  WideView help;
};

// In the order of Key.
inline constexpr auto kKeys = std::to_array<KeyEntry>({
#define FIXED_KEY(key, help, interface_name, dispid) {OLESTR(#key), OLESTR(help)},
#define FIXED_KEY_BY_NAME(key, help) {OLESTR(#key), OLESTR(help)},
#include "props/keys.def"
});
inline constexpr int kKeyCount = static_cast<int>(kKeys.size());

constexpr WideView nameOf(Key key) { return kKeys[static_cast<std::size_t>(key)].name; }

// All keys in the order of the table.
inline constexpr std::array<Key, kKeyCount> kKeysInOrder = [] {
  std::array<Key, kKeyCount> keys;
  for (int i = 0; i < kKeyCount; ++i) keys[static_cast<std::size_t>(i)] = static_cast<Key>(i);
  return keys;
}();

// All keys in the code-unit order of their names.
inline constexpr std::array<Key, kKeyCount> kKeysByName = [] {
  auto keys = kKeysInOrder;
  std::sort(keys.begin(), keys.end(), [](Key a, Key b) { return nameOf(a) < nameOf(b); });
  return keys;
}();
static_assert(std::adjacent_find(kKeysByName.begin(), kKeysByName.end(),
                                 [](Key a, Key b) { return nameOf(a) >= nameOf(b); }) == kKeysByName.end(),
              "every name once, in ascending order");

// The key of a name, compared in full and case-sensitively.
constexpr std::optional<Key> findKey(WideView name) {
  const auto found = std::lower_bound(kKeysByName.begin(), kKeysByName.end(), name,
                                      [](Key key, WideView wanted) { return nameOf(key) < wanted; });
  if (found == kKeysByName.end() || nameOf(*found) != name) return std::nullopt;
  return *found;
}

}  // namespace qs
