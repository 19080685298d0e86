#include "platform/folder.h"

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <new>

namespace qs {

std::optional<std::vector<WideString>> namesIn(const WideString& folder) {
  const auto close = [](DIR* stream) {
    const int error = errno;
    ::closedir(stream);
    errno = error;
  };
  const std::unique_ptr<DIR, decltype(close)> stream(::opendir(narrow(folder).c_str()), close);
  if (!stream && errno == ENOMEM) throw std::bad_alloc();
  if (!stream) return std::nullopt;
  std::vector<WideString> names;
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(stream.get());
    if (!entry) break;
    names.push_back(widen(entry->d_name));
  }
  if (errno != 0) return std::nullopt;
  return names;
}

}  // namespace qs
