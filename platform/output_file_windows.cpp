#include "platform/output_file.h"

#include <algorithm>
#include <utility>

#include "platform/file_calls_windows.h"

namespace qs {
namespace {

constexpr DWORD kShareNothing = 0;

bool writeAll(HANDLE file, std::span<const std::byte> content) {
  constexpr std::size_t kMost = std::size_t{1} << 30;
  while (!content.empty()) {
    DWORD written = 0;
    if (!mayHappen(FileOperation::Write) ||
        !WriteFile(file, content.data(), static_cast<DWORD>(std::min(content.size(), kMost)), &written, nullptr))
      return false;
    content = content.subspan(written);
  }
  return true;
}

// For a moment others may hold a file open that cannot be renamed or removed then: search services, virus scanners, and
// readers of a file that was removed.
template <class Call>
bool insist(FileOperation operation, Call&& call) {
  constexpr DWORD kPause = 10;  // ms
  if (!mayHappen(operation)) return false;
  for (int left = 25;; --left) {
    if (call()) return true;
    const DWORD error = GetLastError();
    if (left == 0 || (error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED)) return false;
    Sleep(kPause);
  }
}

}  // namespace

bool writeFile(const std::filesystem::path& path, std::span<const std::byte> content) {
  if (!mayHappen(FileOperation::Open)) return false;
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_WRITE, kShareNothing, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool held = writeAll(file, content) && mayHappen(FileOperation::Sync) && FlushFileBuffers(file);
  return CloseHandle(file) && held;
}

bool setAside(const std::filesystem::path& path, const std::filesystem::path& aside) { return renameFile(path, aside); }

bool renameFile(const std::filesystem::path& path, const std::filesystem::path& target) {
  return insist(FileOperation::Rename, [&] {
    return MoveFileExW(path.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
  });
}

bool removeFile(const std::filesystem::path& path) {
  return insist(FileOperation::Remove,
                [&] { return DeleteFileW(path.c_str()) || GetLastError() == ERROR_FILE_NOT_FOUND; });
}

std::optional<DirectoryLock> DirectoryLock::take(const std::filesystem::path& directory) {
  const HANDLE file = mayHappen(FileOperation::Open)
                          ? CreateFileW((directory / "build.lock").c_str(), GENERIC_WRITE, kShareNothing, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr)
                          : INVALID_HANDLE_VALUE;
  if (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_SHARING_VIOLATION) return std::nullopt;
  return DirectoryLock(reinterpret_cast<std::intptr_t>(file));
}

DirectoryLock::DirectoryLock(DirectoryLock&& other) noexcept
    : handle_(std::exchange(other.handle_, reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE))) {}

DirectoryLock::~DirectoryLock() {
  const HANDLE file = reinterpret_cast<HANDLE>(handle_);
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
}

// Renaming has written the names through.
void DirectoryLock::sync() const {}

}  // namespace qs
