// The printed lines, alike in every benchmark program: title, measured value, bound and whether it is kept.
#pragma once

#include <iomanip>
#include <iostream>
#include <string>

#include "benchmarks/rounds.h"

namespace qs::bench {

// Whether the bound is kept. The line is left open for what the caller adds.
inline bool printLine(const std::string& title, double measured, double bound, const std::string& unit, int digits) {
  const bool kept = measured <= bound;
  std::cout << std::left << std::setw(50) << title << std::right << std::fixed << std::setprecision(digits)
            << std::setw(8) << measured << " " << unit << "   at most " << std::setw(6) << bound << " " << unit
            << (kept ? "   ok" : "   short");
  return kept;
}

// Lines of what rounds have measured.
class RoundLines {
 public:
  explicit RoundLines(const Rounds& rounds) : rounds_(rounds) {}

  void ratio(const std::string& title, const std::string& name, const std::string& yardstick, double bound) {
    if (!rounds_.has(name)) {
      std::cout << title << ": not measured, the machine has no such instructions\n";
      return;
    }
    short_ += !printLine(title, rounds_.ratio(name, yardstick), bound, "x ", 2);
    printTimes(name, yardstick);
    std::cout << ")\n";
  }
  void excess(const std::string& title, const std::string& name, double factor, const std::string& yardstick,
              double bound, const std::string& beside = {}) {
    short_ += !printLine(title, rounds_.excess(name, factor, yardstick), bound, "ns", 2);
    printTimes(name, yardstick);
    if (!beside.empty()) std::cout << "; the C library's " << rounds_.nanoseconds(beside) << " ns";
    std::cout << ")\n";
  }
  // Of what is left without a part.
  void ratioLess(const std::string& title, const std::string& name, const std::string& part,
                 const std::string& yardstick, double bound) {
    short_ += !printLine(title, rounds_.excess(name, 1.0, part) / rounds_.nanoseconds(yardstick), bound, "x ", 2);
    printTimes(name, part);
    std::cout << ")\n";
  }
  // Without a bound.
  void print(const std::string& title, const std::string& name, const std::string& yardstick) const {
    std::cout << std::left << std::setw(50) << title << std::right << std::fixed << std::setprecision(2) << std::setw(8)
              << rounds_.ratio(name, yardstick) << " x ";
    printTimes(name, yardstick);
    std::cout << ")\n";
  }
  int shortCount() const { return short_; }

 private:
  void printTimes(const std::string& name, const std::string& yardstick) const {
    std::cout << "   (" << std::setprecision(1) << rounds_.nanoseconds(name) << " and "
              << rounds_.nanoseconds(yardstick) << " ns";
  }

  const Rounds& rounds_;
  int short_ = 0;
};

}  // namespace qs::bench
