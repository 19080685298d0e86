#include "tools/progress.h"

#include <iostream>
#include <utility>

#include "platform/terminal.h"

namespace qs::tools {

Progress::Progress(std::ostream& err, std::string what, std::size_t total)
    : err_(err), what_(std::move(what)), total_(total), isSeen_(&err == &std::cerr && errorsGoToTerminal()) {}

Progress::~Progress() {
  if (isSeen_ && next_ != Clock::time_point())
    err_ << '\r' << std::string(what_.size() + 40, ' ') << '\r' << std::flush;
}

void Progress::reach(std::size_t done) {
  using namespace std::chrono_literals;
  if (!isSeen_) return;
  const auto now = Clock::now();
  if (now < next_) return;
  next_ = now + 100ms;
  err_ << '\r' << what_ << ": " << done << " of " << total_ << std::flush;
}

std::vector<bank::Finding> checkWithProgress(const bank::Source& bank, std::ostream& err) {
  Progress progress(err, "checked", bank.compounds.size());
  return bank::check(bank, [&](std::size_t done) { progress.reach(done); });
}

}  // namespace qs::tools
