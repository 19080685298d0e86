#include "platform/input_file.h"

#include <algorithm>
#include <utility>

#include "platform/file_calls_windows.h"

namespace qs {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
const std::intptr_t kNoHandle = reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE);

HANDLE asHandle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

std::uint64_t join(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

// A FILETIME counts 100 ns since 1601.
std::int64_t nanosecondsSince1970(const FILETIME& time) {
  constexpr std::int64_t kFirstOf1970 = 116'444'736'000'000'000;
  return (static_cast<std::int64_t>(join(time.dwHighDateTime, time.dwLowDateTime)) - kFirstOf1970) * 100;
}

}  // namespace

FilePath::FilePath(const WideString& path) : native_(path) {}

WideString FilePath::text() const { return native_; }

std::optional<InputFile> InputFile::open(const FilePath& path) {
  if (!mayHappen(FileOperation::Open)) return std::nullopt;
  const HANDLE handle = CreateFileW(path.native().c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  BY_HANDLE_FILE_INFORMATION info;
  if (!mayHappen(FileOperation::Examine) || GetFileType(handle) != FILE_TYPE_DISK ||
      !GetFileInformationByHandle(handle, &info)) {
    const DWORD error = GetLastError();
    CloseHandle(handle);
    SetLastError(error == ERROR_SUCCESS ? ERROR_NOT_SUPPORTED : error);
    return std::nullopt;
  }
  const FileStamp stamp{join(info.nFileSizeHigh, info.nFileSizeLow), nanosecondsSince1970(info.ftLastWriteTime),
                        join(info.nFileIndexHigh, info.nFileIndexLow)};
  return InputFile(reinterpret_cast<std::intptr_t>(handle), stamp);
}

InputFile::InputFile(InputFile&& other) noexcept
    : handle_(std::exchange(other.handle_, kNoHandle)), stamp_(other.stamp_) {}

InputFile::~InputFile() {
  if (handle_ != kNoHandle) CloseHandle(asHandle(handle_));
}

std::optional<std::size_t> InputFile::readAt(std::uint64_t offset, std::span<std::byte> buffer) const {
  if (offset >= stamp_.size) return 0;
  constexpr std::size_t kMost = std::size_t{1} << 30;
  std::size_t done = 0;
  while (done < buffer.size()) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset + done);
    at.OffsetHigh = static_cast<DWORD>((offset + done) >> 32);
    const auto wanted = static_cast<DWORD>(std::min(buffer.size() - done, kMost));
    DWORD got = 0;
    if (!mayHappen(FileOperation::Read)) return std::nullopt;
    if (!ReadFile(asHandle(handle_), buffer.data() + done, wanted, &got, &at) && GetLastError() != ERROR_HANDLE_EOF)
      return std::nullopt;
    if (got == 0) break;
    done += got;
  }
  return done;
}

std::optional<FileStamp> stampOf(const FilePath& path) {
  // Only an open handle has the file's identity.
  const auto file = InputFile::open(path);
  if (!file) return std::nullopt;
  return file->stamp();
}

WideString joinPath(WideView directory, WideView name) {
  return WideString(directory).append(1, OLESTR('\\')).append(name);
}

}  // namespace qs
