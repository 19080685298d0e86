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

// A name of at most four code units is found by one number that has all of them.
inline constexpr std::size_t kShortName = 4;
constexpr std::uint64_t packed(OLECHAR unit, std::size_t place) {
  return std::uint64_t{static_cast<std::uint16_t>(unit)} << (16 * place);
}
constexpr std::uint64_t packed(WideView name) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < name.size(); ++i) number |= packed(name[i], i);
  return number;
}

// The keys with short names, each at a place that no other has.
class ShortNames {
 public:
  constexpr ShortNames() {
    while (!place()) factor_ += 2;
  }

  // Null for a name that no key has.
  constexpr const Key* find(std::uint64_t name) const {
    const Place& place = places_[placeOf(name)];
    return place.name == name ? &place.key : nullptr;
  }

 private:
  static constexpr int kPlaceBits = 9;
  struct Place {
    std::uint64_t name;
    Key key;
  };

  constexpr std::size_t placeOf(std::uint64_t name) const {
    return static_cast<std::size_t>(name * factor_ >> (64 - kPlaceBits));
  }

  // False where two names have the same place.
  constexpr bool place() {
    places_.fill({});
    for (const Key key : kKeysInOrder) {
      if (nameOf(key).size() > kShortName) continue;
      const std::uint64_t name = packed(nameOf(key));
      Place& place = places_[placeOf(name)];
      if (place.name != 0) return false;
      place = {name, key};
    }
    // At a free place is a name that has another place: 0 at all but the first, which is its own.
    if (places_[0].name == 0) places_[0].name = 1;
    return true;
  }

  std::uint64_t factor_ = 0x9e3779b97f4a7c15;
  std::array<Place, std::size_t{1} << kPlaceBits> places_{};
};
inline constexpr ShortNames kShortNames;

// The numbers of the keys with longer names at the hashes of these or in the next free places after; negative where
// there is none.
inline constexpr std::size_t kHashedPlaces = 512;
constexpr std::size_t hashOfName(WideView name) {
  const auto at = [name](std::size_t i) { return static_cast<std::size_t>(name[i]); };
  return at(0) * 3 + at(name.size() / 2) * 11 + at(name.size() - 1) * 67 + name.size() * 101;
}
inline constexpr std::array<std::int16_t, kHashedPlaces> kKeysByHash = [] {
  std::array<std::int16_t, kHashedPlaces> places;
  places.fill(-1);
  for (const Key key : kKeysInOrder) {
    if (nameOf(key).size() <= kShortName) continue;
    std::size_t place = hashOfName(nameOf(key));
    while (places[place % kHashedPlaces] >= 0) ++place;
    places[place % kHashedPlaces] = static_cast<std::int16_t>(key);
  }
  return places;
}();

// The number of the key of a name, compared in full and case-sensitively; negative where there is none.
constexpr int numberOfKey(WideView name) {
  if (name.size() <= kShortName) {
    // A NUL at the end is lost where a name is packed.
    const Key* key = kShortNames.find(packed(name));
    return key && nameOf(*key).size() == name.size() ? static_cast<int>(*key) : -1;
  }
  for (std::size_t place = hashOfName(name);; ++place) {
    const std::int16_t number = kKeysByHash[place % kHashedPlaces];
    if (number < 0 || kKeys[static_cast<std::size_t>(number)].name == name) return number;
  }
}

// The key itself. Apart from its number, since a call returns an optional slowly: written in two pieces, read as one.
constexpr std::optional<Key> findKey(WideView name) {
  const int number = numberOfKey(name);
  return number < 0 ? std::nullopt : std::optional(static_cast<Key>(number));
}

// The key of a name that ends at its NUL, if both are short; null for any other.
inline const Key* findShortKey(const OLECHAR* name) {
  std::uint64_t number = 0;
  std::size_t i = 0;
  for (; i < kShortName && name[i]; ++i) number |= packed(name[i], i);
  return i == kShortName && name[i] ? nullptr : kShortNames.find(number);
}

}  // namespace qs
