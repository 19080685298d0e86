// Whether somebody reads what a program writes while it runs.
#pragma once

namespace qs {

// Whether the process's standard error stream is a terminal.
bool errorsGoToTerminal();

}  // namespace qs
