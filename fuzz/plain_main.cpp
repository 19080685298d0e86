// Runs a fuzz target without libFuzzer: on every file named, or else on the target's seeds and on a fixed number of
// pseudo-random mutations of them, the same at every run. `--write-seeds DIRECTORY` writes the seeds for libFuzzer.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string_view>

#include "fuzz/fuzz_target.h"

namespace {

constexpr int kMutations = 5000;
constexpr std::size_t kLargestInput = 1 << 16;

void runOn(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

class Mutator {
 public:
  explicit Mutator(const std::vector<std::string>& seeds) : seeds_(seeds) {}

  std::string next() {
    std::string input = seed();
    for (std::size_t changes = 1 + below(4); changes > 0; --changes) change(input);
    if (input.size() > kLargestInput) input.resize(kLargestInput);
    return input;
  }

 private:
  std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_); }
  const std::string& seed() { return seeds_[below(seeds_.size())]; }

  // Puts new bytes, or a part of an input, in place of a part, which may be empty; or cuts the input off.
  void change(std::string& input) {
    const std::size_t at = below(input.size() + 1);
    const std::size_t length = below(2) * std::min(below(8) + 1, input.size() - at);
    std::string piece(below(2) * (below(8) + 1), '\0');
    std::generate(piece.begin(), piece.end(), [this] { return static_cast<char>(below(256)); });
    const std::string source = below(2) ? input : seed();
    if (below(3) == 0) piece = source.substr(below(source.size() + 1), below(64));
    if (below(6) == 0)
      input.resize(at);
    else
      input.replace(at, length, piece);
  }

  const std::vector<std::string>& seeds_;
  std::mt19937_64 random_{20261121};
};

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string_view(argv[1]) == "--write-seeds") {
    for (int number = 0; const std::string& seed : qs::fuzzSeeds())
      std::ofstream(argv[2] + ("/seed-" + std::to_string(number++)), std::ios::binary) << seed;
    return EXIT_SUCCESS;
  }
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    if (!file) {
      std::cerr << "cannot read " << argv[i] << '\n';
      return EXIT_FAILURE;
    }
    runOn(std::string(std::istreambuf_iterator<char>(file), {}));
  }
  if (argc > 1) return EXIT_SUCCESS;

  const std::vector<std::string> seeds = qs::fuzzSeeds();
  for (const std::string& seed : seeds) runOn(seed);
  Mutator mutator(seeds);
  for (int i = 0; i < kMutations; ++i) runOn(mutator.next());
  return EXIT_SUCCESS;
}
