#include "bank/text_file.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <system_error>

#include "bank/finding.h"

namespace qs::bank {
namespace {

[[noreturn]] void fail(const std::filesystem::path& path, const char* what, const std::error_code& reason) {
  throw std::runtime_error(utf8(path) + ": " + what + ": " + reason.message());
}
[[noreturn]] void fail(const std::filesystem::path& path, const char* what) {
  fail(path, what, {errno, std::generic_category()});
}

}  // namespace

std::string readText(const std::filesystem::path& path) {
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream && errno == ENOMEM) throw std::bad_alloc();
  if (!stream) fail(path, "cannot be opened");
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) fail(path, "cannot be read");
  return text;
}

void writeText(const std::filesystem::path& path, std::string_view text) {
  errno = 0;
  std::ofstream stream(path, std::ios::binary);
  if (!stream) fail(path, "cannot be opened");
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  stream.close();
  if (!stream) fail(path, "cannot be written");
}

void replaceText(const std::filesystem::path& path, std::string_view text) {
  std::filesystem::path made = path;
  made += ".new";
  try {
    writeText(made, text);
    renameTo(made, path);
  } catch (const std::runtime_error&) {
    std::error_code ignored;
    std::filesystem::remove(made, ignored);
    throw;
  }
}

void renameTo(const std::filesystem::path& path, const std::filesystem::path& target) {
  std::error_code error;
  std::filesystem::rename(path, target, error);
  if (error) fail(target, "cannot be replaced", error);
}

}  // namespace qs::bank
