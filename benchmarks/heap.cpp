#include "benchmarks/heap.h"

#include <malloc.h>

#include <cerrno>
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

bool counting = false;
std::size_t bytesLeft = 0, left = 0, allocations = 0;

bool failing = false;
bool allLater = false;
std::int64_t callsLeft = 0;

bool works() {
  if (!failing) return true;
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
  if (counting && block) {
    bytesLeft += malloc_usable_size(block);
    ++left;
    ++allocations;
  }
  return block;
}

void discount(void* block) {
  if (!counting || !block) return;
  bytesLeft -= malloc_usable_size(block);
  --left;
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
  discount(block);
  return counted(REAL(realloc)(block, size));
}
EXPORTED void free(void* block) noexcept {
  discount(block);
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

namespace qs::heap {

Count::Count() {
  bytesLeft = left = allocations = 0;
  counting = true;
}
Count::~Count() { counting = false; }
std::size_t Count::bytes() const { return bytesLeft; }
std::size_t Count::blocksLeft() const { return left; }
std::size_t Count::blocks() const { return allocations; }

void failAllocation(std::int64_t number, bool andAllLater) {
  callsLeft = number;
  allLater = andAllLater;
  failing = true;
}

bool endFailing() {
  failing = false;
  return callsLeft < 0;
}

Spare::Spare() : was_(failing) { failing = false; }
Spare::~Spare() { failing = was_; }

}  // namespace qs::heap
