#include <dlfcn.h>

#include "hostkit/shared_library.h"

namespace qs::host {

void* openSharedLibrary(const std::string& name) { return dlopen(("lib" + name + ".so").c_str(), RTLD_NOW); }

void* findEntry(void* library, const char* entry) { return dlsym(library, entry); }

}  // namespace qs::host
