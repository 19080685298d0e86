#include "props/property_text.h"

namespace qs {

std::optional<WideView> ReadKeyValue(WideView key, WideView text) {
  const std::size_t found = text.find(key);
  if (found == WideView::npos) return std::nullopt;
  text.remove_prefix(found + key.size());
  if (!text.starts_with(OLESTR('('))) return std::nullopt;
  const std::size_t closing = text.find(OLESTR(')'));
  if (closing == WideView::npos) return std::nullopt;
  return text.substr(1, closing - 1);
}

}  // namespace qs
