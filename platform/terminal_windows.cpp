#include <windows.h>

#include "platform/terminal.h"

namespace qs {

bool errorsGoToTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace qs
