#include <unistd.h>

#include "platform/terminal.h"

namespace qs {

bool errorsGoToTerminal() { return ::isatty(STDERR_FILENO) == 1; }

}  // namespace qs
