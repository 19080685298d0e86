// Registration scripts: nested registry keys with their values, as text.
//
//   KEY = s 'default value' { CHILD ... val NAME = s 'named value' ... }
//
// NoRemove before a key keeps it when the class is unregistered. ForceRemove removes it with all that it holds, also
// before it is made again. Names and values may be in single quotes, where two quotes mean one. %NAME% inside either is
// replaced.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace qs {

struct RegistryKey {
  enum class Removal { WhenEmpty, Never, WithAll };

  WideString name;
  Removal removal = Removal::WhenEmpty;
  std::optional<WideString> value;
  std::vector<std::pair<WideString, WideString>> namedValues;
  std::vector<RegistryKey> children;
};

// The replacements for %NAME%; an unknown name has none.
using Replacements = std::vector<std::pair<WideView, WideString>>;

// The top keys of a script. Throws CQSCOMError(E_FAIL) when the text is malformed or names an unknown replacement.
std::vector<RegistryKey> parseRegistryScript(WideView text, const Replacements& replacements);

}  // namespace qs
