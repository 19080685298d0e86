// Tells whether what was read from a file still holds.
#pragma once

#include <chrono>

#include "platform/input_file.h"

namespace qs::database {

// A file that is rewritten in place within the resolution of its file system's times keeps its stamp. A reading is
// therefore trusted only when every later writing must give the file another stamp: when the stamp had been seen for
// longer than its resolution, or is older than the coarsest resolution by the system's clock. A file server's clock may
// differ from that one by as much; a stamp of the future says nothing.
class FileWatch {
 public:
  bool holds(const FileStamp& stamp) const { return settled_ && stamp == stamp_; }

  // To be called with an open file's stamp before the file is read.
  void beforeReading(const FileStamp& stamp);

 private:
  FileStamp stamp_;
  std::chrono::steady_clock::time_point seen_;
  bool settled_ = false;
};

}  // namespace qs::database
