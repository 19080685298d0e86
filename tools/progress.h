// Tells on a terminal how far long work is.
#pragma once

#include <chrono>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "bank/checks.h"

namespace qs::tools {

// Writes nothing unless the stream is the process's standard error stream and that is a terminal.
class Progress {
 public:
  Progress(std::ostream& err, std::string what, std::size_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();  // clears the line

  void reach(std::size_t done);

 private:
  using Clock = std::chrono::steady_clock;

  std::ostream& err_;
  const std::string what_;
  const std::size_t total_;
  const bool isSeen_;
  Clock::time_point next_;  // when it is written again
};

// What bank::check finds.
std::vector<bank::Finding> checkWithProgress(const bank::Source& bank, std::ostream& err);

}  // namespace qs::tools
