#include "platform/output_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "platform/file_calls_posix.h"

namespace qs {
namespace {

constexpr mode_t kForAll = 0666;  // less what the process's mask takes away

bool writeAll(int file, std::span<const std::byte> content) {
  while (!content.empty()) {
    const ssize_t written =
        callSystem(FileOperation::Write, [&] { return ::write(file, content.data(), content.size()); });
    if (written < 0) return false;
    content = content.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

bool writeFile(const std::filesystem::path& path, std::span<const std::byte> content) {
  const int file = callSystem(FileOperation::Open,
                              [&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kForAll); });
  if (file < 0) return false;
  const bool held = writeAll(file, content) && callSystem(FileOperation::Sync, [&] { return ::fsync(file); }) == 0;
  return ::close(file) == 0 && held;
}

bool setAside(const std::filesystem::path& path, const std::filesystem::path& aside) {
  const int linked = callSystem(FileOperation::Rename, [&] { return ::link(path.c_str(), aside.c_str()); });
  return linked == 0 || renameFile(path, aside);
}

bool renameFile(const std::filesystem::path& path, const std::filesystem::path& target) {
  return callSystem(FileOperation::Rename, [&] { return std::rename(path.c_str(), target.c_str()); }) == 0;
}

bool removeFile(const std::filesystem::path& path) {
  return callSystem(FileOperation::Remove, [&] { return ::unlink(path.c_str()); }) == 0 || errno == ENOENT;
}

std::optional<DirectoryLock> DirectoryLock::take(const std::filesystem::path& directory) {
  DirectoryLock lock(
      callSystem(FileOperation::Open, [&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (lock.handle_ >= 0 && ::flock(static_cast<int>(lock.handle_), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    return std::nullopt;
  return lock;
}

DirectoryLock::DirectoryLock(DirectoryLock&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}

DirectoryLock::~DirectoryLock() {
  if (handle_ >= 0) ::close(static_cast<int>(handle_));
}

void DirectoryLock::sync() const {
  callSystem(FileOperation::Sync, [&] { return ::fsync(static_cast<int>(handle_)); });
}

}  // namespace qs
