// The operating system's loader of shared libraries.
#pragma once

#include <string>

namespace qs::host {

// A library by its name without prefix and ending, first looked for beside the program; null when it cannot be loaded.
void* openSharedLibrary(const std::string& name);

// The address of an exported function, null when there is none.
void* findEntry(void* library, const char* entry);

}  // namespace qs::host
