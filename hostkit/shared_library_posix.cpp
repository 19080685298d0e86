#include <dlfcn.h>

#include <filesystem>

#include "hostkit/shared_library.h"

namespace qs::host {

void* openSharedLibrary(const std::string& name) {
  const std::string file = "lib" + name + ".so";
  std::error_code unreadable;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", unreadable);
  if (void* library = dlopen((program.parent_path() / file).c_str(), RTLD_NOW)) return library;
  return dlopen(file.c_str(), RTLD_NOW);
}

void* findEntry(void* library, const char* entry) { return dlsym(library, entry); }

}  // namespace qs::host
