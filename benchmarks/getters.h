// What a value costs: typed getters, the formulas alone and the evaluator, each over the same temperatures.
#pragma once

#include <span>
#include <string>

namespace qs::bench {

// The most that the getter of a form may take, as a multiple of the C library's loop.
struct GetterBound {
  std::string form;
  double factor;
};

// Prints a line per target, with COQSCompound and HostRealArray registered before. Returns how many are short.
int measureGetters(std::span<const GetterBound> bounds);

}  // namespace qs::bench
