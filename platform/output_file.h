// Writes files and replaces files by others. The functions return whether they succeeded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

namespace qs {

// Creates or overwrites a file and waits until its content is on the disk.
bool writeFile(const std::filesystem::path& path, std::span<const std::byte> content);

// Gives a file another name and removes the file that had it. On systems that can replace an open file, it keeps its
// own name too.
bool setAside(const std::filesystem::path& path, const std::filesystem::path& aside);

// Renames a file. On systems that can replace an open file, it replaces the file that has the name; on others that file
// must have been set aside before.
bool renameFile(const std::filesystem::path& path, const std::filesystem::path& target);

// True also when there is no such file.
bool removeFile(const std::filesystem::path& path);

// Locks a directory against other processes that lock it, until the process ends at the latest. On a file system
// without such locks it does nothing.
class DirectoryLock {
 public:
  // Nothing when another process has locked the directory.
  static std::optional<DirectoryLock> take(const std::filesystem::path& directory);

  DirectoryLock(DirectoryLock&& other) noexcept;
  DirectoryLock& operator=(DirectoryLock&&) = delete;
  ~DirectoryLock();

  // Waits until the names in the directory are on the disk, as far as the system reports it.
  void sync() const;

 private:
  explicit DirectoryLock(std::intptr_t handle) : handle_(handle) {}

  std::intptr_t handle_;
};

}  // namespace qs
