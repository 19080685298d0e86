// What a fuzz target defines: the entry point that libFuzzer and plain_main.cpp call, and inputs to start from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace qs {

// Well-formed inputs; plain_main.cpp mutates them when it is given no files.
std::vector<std::string> fuzzSeeds();

inline void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace qs
