// Read-only access to a file at absolute offsets, and a cheap mark of its state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/text.h"

namespace qs {

// Changes whenever a file is written or replaced: size in bytes, modification time in nanoseconds since 1970 (UTC), and
// the file system's number of the file.
struct FileStamp {
  std::uint64_t size = 0;
  std::int64_t modified = 0;
  std::uint64_t identity = 0;

  bool operator==(const FileStamp&) const = default;
};

// A path as the system takes it: whoever opens a file often converts its path once.
class FilePath {
 public:
#ifdef _WIN32
  using Native = WideString;
#else
  using Native = std::string;
#endif

  FilePath() = default;
  FilePath(const WideString& path);

  const Native& native() const { return native_; }
  WideString text() const;
  bool operator==(const FilePath&) const = default;

 private:
  Native native_;
};

class InputFile {
 public:
  // Opens a regular file for reading, shared with other readers and writers. Nothing when it cannot be opened; then,
  // and after a read error, systemReason says why.
  static std::optional<InputFile> open(const FilePath& path);

  InputFile(InputFile&& other) noexcept;
  InputFile& operator=(InputFile&&) = delete;
  ~InputFile();

  const FileStamp& stamp() const { return stamp_; }

  // Fills `buffer` from `offset` on, as far as the file goes. Returns the number of bytes; nothing on a read error.
  std::optional<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> buffer) const;

 private:
  InputFile(std::intptr_t handle, const FileStamp& stamp) : handle_(handle), stamp_(stamp) {}

  std::intptr_t handle_;
  FileStamp stamp_;
};

// The state of a file by its path; nothing when there is no regular file.
std::optional<FileStamp> stampOf(const FilePath& path);

// A file's path from its directory, given without a trailing separator, and its name.
WideString joinPath(WideView directory, WideView name);

}  // namespace qs
