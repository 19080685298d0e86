#include "tests/failures/heap.h"

#include <cerrno>
#include <cstddef>
#include <new>

// The program's definitions take the place of the C library's in every module; these are what they stand on.
#ifdef __SANITIZE_ADDRESS__
#define REAL(name) __interceptor_##name
#else
#define REAL(name) __libc_##name
#endif
extern "C" {
void* REAL(malloc)(std::size_t size);
void* REAL(calloc)(std::size_t count, std::size_t size);
void* REAL(realloc)(void* block, std::size_t size);
void REAL(free)(void* block);
}

namespace {

bool active = false;
bool allLater = false;
std::int64_t callsLeft = 0;
std::int64_t held = 0;

bool works() {
  if (!active) return true;
  if (callsLeft > 0) {
    --callsLeft;
    return true;
  }
  const bool works = callsLeft < 0 && !allLater;
  callsLeft = -1;
  if (!works) errno = ENOMEM;
  return works;
}

void* counted(void* block) {
  held += block != nullptr;
  return block;
}

}  // namespace

#define EXPORTED __attribute__((visibility("default")))
extern "C" {
EXPORTED void* malloc(std::size_t size) noexcept { return works() ? counted(REAL(malloc)(size)) : nullptr; }
EXPORTED void* calloc(std::size_t count, std::size_t size) noexcept {
  return works() ? counted(REAL(calloc)(count, size)) : nullptr;
}
EXPORTED void* realloc(void* block, std::size_t size) noexcept {
  if (!works()) return nullptr;
  void* moved = REAL(realloc)(block, size);
  return block ? moved : counted(moved);
}
EXPORTED void free(void* block) noexcept {
  held -= block != nullptr;
  REAL(free)(block);
}
}

namespace {
void* newBlock(std::size_t size) {
  if (void* block = malloc(size ? size : 1)) return block;
  throw std::bad_alloc();
}
}  // namespace

EXPORTED void* operator new(std::size_t size) { return newBlock(size); }
EXPORTED void* operator new[](std::size_t size) { return newBlock(size); }
EXPORTED void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
EXPORTED void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
EXPORTED void operator delete(void* block) noexcept { free(block); }
EXPORTED void operator delete[](void* block) noexcept { free(block); }
EXPORTED void operator delete(void* block, std::size_t) noexcept { free(block); }
EXPORTED void operator delete[](void* block, std::size_t) noexcept { free(block); }

namespace qs::test {

void failAllocation(std::int64_t failing, bool andAllLater) {
  callsLeft = failing;
  allLater = andAllLater;
  active = true;
}

bool endFailing() {
  active = false;
  return callsLeft < 0;
}

SpareHeap::SpareHeap() : was_(active) { active = false; }
SpareHeap::~SpareHeap() { active = was_; }

std::int64_t blocksHeld() { return held; }

}  // namespace qs::test
