// The property objects of a compound: one slot per fixed key, and an ordered map for all other names.
#pragma once

#include <array>
#include <functional>
#include <map>

#include "com/error.h"
#include "props/key_table.h"
#include "props/new_property.h"

namespace qs {

// Says that a look-up found no property of the name, and returns S_FALSE.
inline HRESULT noProperty(BSTR name) noexcept { return because(S_FALSE, {"there is no property \"", name, "\""}); }

// The result of storing a property under a name, where S_FALSE says that the name is no fixed key.
inline HRESULT stored(HRESULT result, BSTR name) noexcept {
  return result == S_FALSE ? because(S_FALSE, {"there is no fixed property \"", name, "\""}) : result;
}

class PropertyTable {
 public:
  using OtherMap = std::map<WideString, PropertyPtr, std::less<>>;

  // A name's entry. A fixed key always has one, perhaps without an object; any other name has one once it was stored.
  struct Entry {
    bool present = false;
    bool fixed = false;
    CQSAbstractProp* property = nullptr;
  };

  CQSAbstractProp* operator[](Key key) const { return slots_[static_cast<std::size_t>(key)].get(); }
  const OtherMap& others() const { return others_; }

  // The object under a name; null where there is none. A fixed key hides the same name in the other map.
  CQSAbstractProp* named(WideView name) const {
    const int number = numberOfKey(name);
    return number < 0 ? findOther(name).property : slots_[static_cast<std::size_t>(number)].get();
  }
  Entry find(WideView name) const { return find(findKey(name), name); }
  // The same where the name's key is known. Inline, since an optional is slow to pass by value.
  Entry find(const std::optional<Key>& key, WideView name) const {
    return key ? Entry{true, true, (*this)[*key]} : findOther(name);
  }

  // Stores an object under a fixed key, in place of the one that stood there.
  void set(Key key, PropertyPtr property) { slots_[static_cast<std::size_t>(key)] = std::move(property); }

  // Stores an object under a name; the caller gets the one that stood there, or null. S_FALSE, and the caller keeps the
  // object, when `fixed` is set and the name is no fixed key.
  HRESULT AddPropertyToMap(WideView name, bool fixed, PropertyPtr& prop);

  // Destroys the object under a name of the fixed or the other map; S_FALSE when there is none.
  HRESULT erase(WideView name, bool fixed);

  // Whether no name has an object.
  bool empty() const;

  // A table of duplicates of everything in this one.
  PropertyTable copy() const;

 private:
  Entry findOther(WideView name) const;

  std::array<PropertyPtr, kKeyCount> slots_;
  OtherMap others_;
};

}  // namespace qs
