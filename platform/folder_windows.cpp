#include "platform/folder.h"

#include <windows.h>

#include <memory>

namespace qs {

std::optional<std::vector<WideString>> namesIn(const WideString& folder) {
  WIN32_FIND_DATAW found;
  const HANDLE first = FindFirstFileW((folder + L"\\*").c_str(), &found);
  if (first == INVALID_HANDLE_VALUE) return std::nullopt;
  const auto close = [](HANDLE handle) {
    const DWORD error = GetLastError();
    FindClose(handle);
    SetLastError(error);
  };
  const std::unique_ptr<void, decltype(close)> search(first, close);
  std::vector<WideString> names;
  do names.emplace_back(found.cFileName);
  while (FindNextFileW(search.get(), &found));
  if (GetLastError() != ERROR_NO_MORE_FILES) return std::nullopt;
  return names;
}

}  // namespace qs
