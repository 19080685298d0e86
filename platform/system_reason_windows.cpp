#include "platform/system_reason.h"

#include <windows.h>

#include <string_view>

namespace qs {

SystemReason systemReason() noexcept {
  const DWORD error = GetLastError();
  SystemReason reason;
  std::string_view text = "there is no such file or folder";
  if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
    constexpr DWORD kLanguages[] = {MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), 0};
    DWORD length = 0;
    for (const DWORD language : kLanguages)
      if (length == 0)
        length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, language,
                                reason.text, sizeof reason.text, nullptr);
    while (length > 0 && (reason.text[length - 1] <= ' ' || reason.text[length - 1] == '.')) --length;
    reason.text[length] = '\0';
    if (length > 0) return reason;
    text = "unknown error";
  }
  text.copy(reason.text, sizeof reason.text - 1);
  return reason;
}

}  // namespace qs
