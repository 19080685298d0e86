#include "props/property_text.h"

namespace qs {
namespace {

constexpr WideView kContentAfterName = OLESTR(") ComContent(");
static_assert(kContentAfterName.ends_with(kComponentContent));

// The text between a position and the bracket at the end.
WideView upToLastBracket(WideView text, std::size_t position) {
  return text.substr(position, text.size() - 1 - position);
}

}  // namespace

std::optional<WideView> ReadKeyValue(WideView key, WideView text) {
  const std::size_t found = text.find(key);
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
