#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/system_reason.h"

namespace qs {

SystemReason systemReason() noexcept {
  const char* known = ::strerrordesc_np(errno);  // the same in every locale
  const std::string_view text = errno == ENOENT ? "there is no such file or folder" : known ? known : "unknown error";
  SystemReason reason;
  text.copy(reason.text, sizeof reason.text - 1);
  return reason;
}

}  // namespace qs
