#include "platform/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/file_calls_posix.h"

namespace qs {
namespace {

FileStamp stampFrom(const struct stat& status) {
  return {static_cast<std::uint64_t>(status.st_size),
          std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec, status.st_ino};
}

}  // namespace

FilePath::FilePath(const WideString& path) : native_(narrow(path)) {}

WideString FilePath::text() const { return widen(native_); }

std::optional<InputFile> InputFile::open(const FilePath& path) {
  // Non-blocking, so that a path that names a pipe is refused below and does not wait for a writer.
  const int descriptor =
      callSystem(FileOperation::Open, [&] { return ::open(path.native().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
  if (descriptor < 0) return std::nullopt;
  struct stat status;
  const bool examined = callSystem(FileOperation::Examine, [&] { return ::fstat(descriptor, &status); }) == 0;
  if (!examined || !S_ISREG(status.st_mode)) {
    const int error = examined ? (S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP) : errno;
    ::close(descriptor);
    errno = error;
    return std::nullopt;
  }
  return InputFile(descriptor, stampFrom(status));
}

InputFile::InputFile(InputFile&& other) noexcept : handle_(std::exchange(other.handle_, -1)), stamp_(other.stamp_) {}

InputFile::~InputFile() {
  if (handle_ >= 0) ::close(static_cast<int>(handle_));
}

std::optional<std::size_t> InputFile::readAt(std::uint64_t offset, std::span<std::byte> buffer) const {
  if (offset >= stamp_.size) return 0;
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t got = callSystem(FileOperation::Read, [&] {
      return ::pread(static_cast<int>(handle_), buffer.data() + done, buffer.size() - done,
                     static_cast<off_t>(offset + done));
    });
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

std::optional<FileStamp> stampOf(const FilePath& path) {
  struct stat status;
  if (callSystem(FileOperation::Examine, [&] { return ::stat(path.native().c_str(), &status); }) != 0 ||
      !S_ISREG(status.st_mode))
    return std::nullopt;
  return stampFrom(status);
}

WideString joinPath(WideView directory, WideView name) {
  return WideString(directory).append(1, OLESTR('/')).append(name);
}

}  // namespace qs
