#include "props/block_functions.h"

namespace qs {

// block_functions.cpp
extern const BlockFunctions kSSE2, kAVX2, kAVX512;

std::span<const BlockFunctions* const> supportedBlockFunctions() {
  static constexpr const BlockFunctions* kAll[] = {&kSSE2, &kAVX2, &kAVX512};
  // These ask the processor, and the operating system whether it keeps the registers.
  static const std::size_t supported = [] {
    __builtin_cpu_init();
    return std::size_t{1} + (__builtin_cpu_supports("avx2") ? 1u : 0u) +
           (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("avx512f") ? 1u : 0u);
  }();
  return std::span(kAll).first(supported);
}

}  // namespace qs
