// Registration scripts: nested registry keys with their values, as text.
//
//   KEY = s 'default value' { CHILD ... val NAME = s 'named value' ... }
//
// A key may follow NoRemove (it stays when the class is unregistered) or ForceRemove (it goes with all that it holds,
// and does so before it is made anew). Names and values may stand in single quotes, where two quotes mean one. %NAME%
// inside either is replaced.
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

// What stands for %NAME%; an unknown name has no replacement.
using Replacements = std::vector<std::pair<WideView, WideString>>;

// The top keys of a script. Throws CQSCOMError(E_FAIL) when the text is malformed or names an unknown replacement.
std::vector<RegistryKey> parseRegistryScript(WideView text, const Replacements& replacements);

}  // namespace qs
