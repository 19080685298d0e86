// The fixed property keys: their order, names, help texts, units and policies, and the way from a name to a key.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "interfaces/interfaces.h"
#include "platform/text.h"

namespace qs {

// A fixed key; its number is the key's place in the table and its slot in a compound.
enum class Key : int {
#define FIXED_KEY(key, help, unit, policy, interface_name, dispid) key,
#define FIXED_KEY_BY_NAME(key, help, unit, policy) key,
#include "props/keys.def"
};

struct KeyEntry {
  WideView name;
  WideView help;
  WideView unit;              // of the bundled data
  tagLimitPolicyEnum policy;  // recommended outside the range
};

// In the order of Key.
inline constexpr auto kKeys = std::to_array<KeyEntry>({
#define FIXED_KEY_BY_NAME(key, help, unit, policy) {OLESTR(#key), OLESTR(help), OLESTR(unit), e##policy},
#define FIXED_KEY(key, help, unit, policy, interface_name, dispid) FIXED_KEY_BY_NAME(key, help, unit, policy)
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

// The keys' numbers at the hashes of their names or in the next free places after; negative where there is none.
inline constexpr std::size_t kHashedPlaces = 512;
constexpr std::size_t hashOfName(WideView name) {
  const auto at = [name](std::size_t i) { return static_cast<std::size_t>(name[i]); };
  return name.empty() ? 0 : (at(0) * 3 + at(name.size() / 2) * 11 + at(name.size() - 1) * 67 + name.size() * 101);
}
inline constexpr std::array<std::int16_t, kHashedPlaces> kKeysByHash = [] {
  std::array<std::int16_t, kHashedPlaces> places;
  places.fill(-1);
  for (const Key key : kKeysInOrder) {
    std::size_t place = hashOfName(nameOf(key));
    while (places[place % kHashedPlaces] >= 0) ++place;
    places[place % kHashedPlaces] = static_cast<std::int16_t>(key);
  }
  return places;
}();

// The key of a name, compared in full and case-sensitively.
constexpr std::optional<Key> findKey(WideView name) {
  for (std::size_t place = hashOfName(name);; ++place) {
    const std::int16_t number = kKeysByHash[place % kHashedPlaces];
    if (number < 0) return std::nullopt;
    if (kKeys[static_cast<std::size_t>(number)].name == name) return static_cast<Key>(number);
  }
}

}  // namespace qs
