// Times that are taken in turns with those that they are held against: what else the machine does disturbs both.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace qs::bench {

struct Pair {
  double subject = 0.0;
  double yardstick = 0.0;

  double ratio() const { return subject / yardstick; }
};

// A pair with its title, the bound of its ratio, and its unit.
struct Comparison {
  std::string title;
  Pair pair;
  double bound;
  std::string unit;
};

// Calls two functions in turns, each of which returns the time that it measured; the pair with the median ratio.
template <class Subject, class Yardstick>
Pair inTurns(int rounds, Subject&& subject, Yardstick&& yardstick) {
  std::vector<Pair> pairs;
  for (int i = 0; i < rounds; ++i) {
    const double time = subject();
    pairs.push_back({time, yardstick()});
  }
  std::ranges::nth_element(pairs, pairs.begin() + rounds / 2, {}, &Pair::ratio);
  return pairs[static_cast<std::size_t>(rounds / 2)];
}

}  // namespace qs::bench
