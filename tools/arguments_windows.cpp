#include <windows.h>

// After windows.h, which it needs.
#include <shellapi.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "tools/arguments.h"

namespace qs::tools {

std::vector<std::string> utf8Arguments(int, char**) {
  int count = 0;
  const std::unique_ptr<LPWSTR, decltype(&LocalFree)> wide(CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
  if (!wide) throw std::runtime_error("the command line cannot be read");
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    const std::u8string text = std::filesystem::path(wide.get()[i]).u8string();
    arguments.emplace_back(text.begin(), text.end());
  }
  return arguments;
}

}  // namespace qs::tools
