#include "props/property_text.h"

#include <algorithm>

#include "platform/unit_block.h"

namespace qs {
namespace {

constexpr WideView kContentAfterName = OLESTR(") ComContent(");
static_assert(kContentAfterName.ends_with(kComponentContent));

// The place of the first occurrence of `key`, which is not empty; npos for none. Places are examined one by one only
// where two blocks of them have the first letter and, as far from it as in the key, the last one.
std::size_t placeOf(WideView key, WideView text) {
  if (text.size() < key.size()) return WideView::npos;
  const WideBlock first = blockOf(key.front());
  const WideBlock last = blockOf(key.back());
  const auto candidates = [&](const OLECHAR* place) {
    return (blockAt(place) == first) & (blockAt(place + key.size() - 1) == last);
  };
  constexpr std::ptrdiff_t kPlaces = 2 * kBlockUnits;
  const OLECHAR* const end = text.data() + text.size() - key.size() + 1;
  for (const OLECHAR* place = text.data(); place < end;) {
    const OLECHAR* const next = place + std::min(kPlaces, end - place);
    if (next - place == kPlaces && !any(candidates(place) | candidates(place + kBlockUnits))) place = next;
    for (; place < next; ++place)
      if (*place == key.front() && WideView(place, key.size()) == key)
        return static_cast<std::size_t>(place - text.data());
  }
  return WideView::npos;
}

// The text between a position and the bracket at the end.
WideView upToLastBracket(WideView text, std::size_t position) {
  return text.substr(position, text.size() - 1 - position);
}

}  // namespace

std::optional<WideView> ReadKeyValue(WideView key, WideView text) {
  const std::size_t found = placeOf(key, text);
  if (found == WideView::npos) return std::nullopt;
  text.remove_prefix(found + key.size());
  if (!text.starts_with(OLESTR('('))) return std::nullopt;
  const std::size_t closing = text.find(OLESTR(')'));
  if (closing == WideView::npos) return std::nullopt;
  return text.substr(1, closing - 1);
}

ComponentText readComponent(WideView key, WideView text) {
  if (text.ends_with(OLESTR(')'))) {
    if (text.starts_with(kComponentContent)) return {std::nullopt, upToLastBracket(text, kComponentContent.size())};
    const std::size_t nameStart = key.size() + 1;
    const std::size_t nameEnd = text.find(kContentAfterName);
    if (text.starts_with(key) && text.substr(key.size()).starts_with(OLESTR('(')) && nameEnd != WideView::npos &&
        nameEnd >= nameStart) {
      return {text.substr(nameStart, nameEnd - nameStart), upToLastBracket(text, nameEnd + kContentAfterName.size())};
    }
  }
  return {ReadKeyValue(key, text), ReadKeyValue(Opening{kComponentContent}.key(), text).value_or(WideView())};
}

bool isReadable(WideView className) { return className.find(kContentAfterName) == WideView::npos; }

}  // namespace qs
