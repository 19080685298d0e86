// Writes files and puts them in the place of others. The functions answer whether they succeeded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

namespace qs {

// Creates or overwrites a file and waits until its content is on the disk.
bool writeFile(const std::filesystem::path& path, std::span<const std::byte> content);

// Gives a file another name, which no other file has afterwards. Where an open file can be replaced, it keeps its own
// name too.
bool setAside(const std::filesystem::path& path, const std::filesystem::path& aside);

// Gives a file another name. Where an open file can be replaced, it takes the place of a file that has that name; on
// other systems that file must have been set aside.
bool renameFile(const std::filesystem::path& path, const std::filesystem::path& target);

// True also when there is no such file.
bool removeFile(const std::filesystem::path& path);

// Keeps other processes from taking the same directory; ends with the process at the latest. Where the file system
// knows no such locks it locks nothing.
class DirectoryLock {
 public:
  // Nothing when the directory is taken.
  static std::optional<DirectoryLock> take(const std::filesystem::path& directory);

  DirectoryLock(DirectoryLock&& other) noexcept;
  DirectoryLock& operator=(DirectoryLock&&) = delete;
  ~DirectoryLock();

  // Waits until the directory's present names are on the disk, as far as the system can tell.
  void sync() const;

 private:
  explicit DirectoryLock(std::intptr_t handle) : handle_(handle) {}

  std::intptr_t handle_;
};

}  // namespace qs
