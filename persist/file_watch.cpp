#include "persist/file_watch.h"

namespace qs::database {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds kCoarsestResolution = 2s;  // FAT
constexpr std::chrono::nanoseconds kUsualResolution = 20ms;   // the longest clock tick of the other file systems

std::chrono::nanoseconds resolutionOf(std::chrono::nanoseconds modified) {
  return modified % 1s == 0s ? kCoarsestResolution : kUsualResolution;
}

}  // namespace

void FileWatch::beforeReading(const FileStamp& stamp) {
  const auto now = std::chrono::steady_clock::now();
  if (stamp != stamp_) {
    stamp_ = stamp;
    seen_ = now;
  }
  const std::chrono::nanoseconds modified(stamp.modified);
  const auto age = std::chrono::system_clock::now().time_since_epoch() - modified;
  settled_ = age > kCoarsestResolution || now - seen_ > resolutionOf(modified);
}

}  // namespace qs::database
