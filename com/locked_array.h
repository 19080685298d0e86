// The elements of a safe array, for as long as this lives: calls meanwhile cannot take them away.
#pragma once

#include <cstddef>

#include "com/error.h"

namespace qs {

class LockedArray {
 public:
  // The array is lent. Throws CQSCOMError when it cannot be locked.
  explicit LockedArray(SAFEARRAY* array) : array_(array) { check(SafeArrayAccessData(array_, &data_)); }
  LockedArray(const LockedArray&) = delete;
  LockedArray& operator=(const LockedArray&) = delete;
  ~LockedArray() { SafeArrayUnaccessData(array_); }

  // The number of elements of a dimension; dimensions count from 1.
  ULONG extent(UINT dimension) const { return array_->rgsabound[array_->cDims - dimension].cElements; }

  // The element at a position in memory, where the first dimension varies fastest.
  void* element(std::size_t position) const { return static_cast<std::byte*>(data_) + position * array_->cbElements; }

 private:
  SAFEARRAY* array_;
  void* data_ = nullptr;
};

}  // namespace qs
