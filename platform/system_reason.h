// Why the system refused what it was asked for.
#pragma once

namespace qs {

// An English text of ASCII characters.
struct SystemReason {
  char text[256] = "";
};

// Of the last call of this thread that failed.
SystemReason systemReason() noexcept;

}  // namespace qs
