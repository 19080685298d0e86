#include "benchmarks/heap.h"

#include <malloc.h>

// The program's definitions take the place of the C library's in every module; these are the library's own.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

bool counting = false;
std::size_t allocated = 0;  // less what was released; modulo its range
std::size_t blockCount = 0;

void* counted(void* block) {
  if (counting) {
    allocated += malloc_usable_size(block);
    ++blockCount;
  }
  return block;
}

void discount(void* block) {
  if (counting) allocated -= malloc_usable_size(block);
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept { return counted(__libc_malloc(size)); }
__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept {
  return counted(__libc_calloc(count, size));
}
__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) noexcept {
  discount(block);
  return counted(__libc_realloc(block, size));
}
__attribute__((visibility("default"))) void free(void* block) noexcept {
  discount(block);
  __libc_free(block);
}
}

namespace qs::bench {

HeapCount::HeapCount() {
  allocated = blockCount = 0;
  counting = true;
}
HeapCount::~HeapCount() { counting = false; }
std::size_t HeapCount::bytes() const { return allocated; }
std::size_t HeapCount::blocks() const { return blockCount; }

}  // namespace qs::bench
