// Finds the positions of elements of a sequence that lives elsewhere, by hashes of the elements.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qs::database {

// Four to twelve bytes for each position. However many elements are equal, it is made in time proportional to their
// number.
class HashedPositions {
 public:
  HashedPositions() = default;

  // hashOf(i) is the hash of the element at each position i below the count.
  template <class HashOf>
  HashedPositions(std::size_t count, const HashOf& hashOf) : first_(std::bit_ceil(count)), next_(count) {
    for (std::size_t i = count; i-- > 0;) {
      std::uint32_t& first = first_[bucketOf(hashOf(i))];
      next_[i] = first;
      first = static_cast<std::uint32_t>(i + 1);
    }
  }

  // The first position for which `matches` returns true, among all of this hash and some others, in ascending order.
  template <class Matches>
  std::optional<std::size_t> find(std::uint32_t hash, const Matches& matches) const {
    if (next_.empty()) return std::nullopt;
    for (std::uint32_t i = first_[bucketOf(hash)]; i != 0; i = next_[i - 1])
      if (matches(std::size_t{i - 1})) return i - 1;
    return std::nullopt;
  }

 private:
  std::size_t bucketOf(std::uint32_t hash) const { return hash & (first_.size() - 1); }

  // One more than the first position in a bucket, and than the one after each position; 0 for none.
  std::vector<std::uint32_t> first_;
  std::vector<std::uint32_t> next_;
};

}  // namespace qs::database
