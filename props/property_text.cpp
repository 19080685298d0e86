#include "props/property_text.h"

#include <string>

#include "com/number_text.h"

namespace qs {
namespace {

// The 8-bit form of a value; nothing when it does not fit an 80-byte buffer with its terminator.
std::optional<std::string> narrowValue(WideView text) {
  constexpr std::size_t kCapacity = 80;
  std::string bytes = narrow(text);
  if (bytes.size() >= kCapacity) return std::nullopt;
  return bytes;
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

void convertValue(WideView text, double* target) {
  if (const auto bytes = narrowValue(text)) readExactDouble(*bytes, target);
}

void convertValue(WideView text, LONG* target) {
  if (const auto bytes = narrowValue(text)) *target = readInteger(*bytes);
}

}  // namespace qs
