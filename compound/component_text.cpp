#include "compound/component_text.h"

#include "props/property_text.h"

namespace qs {
namespace {

constexpr WideView kContentKey = OLESTR("ComContent");
constexpr WideView kContentAlone = OLESTR("ComContent(");
constexpr WideView kContentAfterName = OLESTR(") ComContent(");

// What stands between a position and the bracket that ends the text.
WideView upToLastBracket(WideView text, std::size_t position) {
  return text.substr(position, text.size() - 1 - position);
}

}  // namespace

ComponentText readComponentText(WideView key, WideView text) {
  if (text.ends_with(OLESTR(')'))) {
    if (text.starts_with(kContentAlone)) return {std::nullopt, upToLastBracket(text, kContentAlone.size())};
    const std::size_t nameStart = key.size() + 1;
    const std::size_t nameEnd = text.find(kContentAfterName);
    if (text.starts_with(key) && text.substr(key.size()).starts_with(OLESTR('(')) && nameEnd != WideView::npos &&
        nameEnd >= nameStart) {
      return {text.substr(nameStart, nameEnd - nameStart), upToLastBracket(text, nameEnd + kContentAfterName.size())};
    }
  }
  return {ReadKeyValue(key, text), ReadKeyValue(kContentKey, text).value_or(WideView())};
}

bool isReadable(WideView className) { return className.find(kContentAfterName) == WideView::npos; }

}  // namespace qs
