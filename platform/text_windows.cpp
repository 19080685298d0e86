#include "platform/text.h"

namespace qs {
namespace {

WideString widenFrom(UINT codePage, std::string_view text) {
  if (text.empty()) return {};
  const int bytes = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(codePage, 0, text.data(), bytes, nullptr, 0);
  WideString wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(codePage, 0, text.data(), bytes, wide.data(), length);
  return wide;
}

}  // namespace

WideString widen(std::string_view text) { return widenFrom(CP_ACP, text); }

WideString widenUtf8(std::string_view text) { return widenFrom(CP_UTF8, text); }

OLECHAR* writeWide(std::string_view text, OLECHAR* out) {
  const int bytes = static_cast<int>(text.size());
  return out + (bytes > 0 ? MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, out, bytes) : 0);
}

std::string narrow(WideView text) {
  if (text.empty()) return {};
  const int units = static_cast<int>(text.size());
  const int length = WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), units, bytes.data(), length, nullptr, nullptr);
  return bytes;
}

}  // namespace qs
