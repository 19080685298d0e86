// How system calls on files are made.
#pragma once

#include <cerrno>

#include "platform/file_faults.h"

namespace qs {

// Repeats a call while signals interrupt it; negative, with errno, when it fails.
template <class Call>
auto callSystem(FileOperation operation, Call&& call) -> decltype(call()) {
  for (;;) {
    const int fault = faultOf(operation);
    const auto result = fault == 0 ? call() : -1;
    if (fault != 0) errno = fault;
    if (result >= 0 || errno != EINTR) return result;
  }
}

}  // namespace qs
