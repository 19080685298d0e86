#include "platform/file_faults.h"

#include <atomic>

namespace qs {
namespace {

std::atomic<FileFault> installed = nullptr;

}  // namespace

void setFileFault(FileFault fault) { installed.store(fault, std::memory_order_relaxed); }

int faultOf(FileOperation operation) {
  const FileFault fault = installed.load(std::memory_order_relaxed);
  return fault ? fault(operation) : 0;
}

}  // namespace qs
