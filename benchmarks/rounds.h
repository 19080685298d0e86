// Times functions in turns, so that what else the machine does meets all of them alike: comparisons are medians over
// the rounds of what one round measured.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace qs::bench {

class Rounds {
 public:
  // A function that does something `count` times.
  void add(const std::string& name, std::size_t count, std::function<void()> function) {
    subjects_[name] = {count, std::move(function), {}};
  }

  void run(int rounds) {
    for (int round = 0; round < rounds; ++round)
      for (auto& [name, subject] : subjects_) {
        subject.function();  // what a first call waits for: caches, and the power of wide registers
        const auto start = std::chrono::steady_clock::now();
        subject.function();
        const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
        subject.nanoseconds.push_back(elapsed.count() / static_cast<double>(subject.count));
      }
  }

  bool has(const std::string& name) const { return subjects_.contains(name); }
  double nanoseconds(const std::string& name) const {
    return *std::ranges::min_element(subjects_.at(name).nanoseconds);
  }
  double ratio(const std::string& name, const std::string& yardstick) const {
    return nanoseconds(name) / nanoseconds(yardstick);
  }
  // In nanoseconds, of the time over `factor` times the yardstick's.
  double excess(const std::string& name, double factor, const std::string& yardstick) const {
    return nanoseconds(name) - factor * nanoseconds(yardstick);
  }

 private:
  struct Subject {
    std::size_t count = 1;
    std::function<void()> function;
    std::vector<double> nanoseconds;
  };

  std::map<std::string, Subject> subjects_;
};

}  // namespace qs::bench
