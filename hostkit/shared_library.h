// The operating system's loader of shared libraries.
#pragma once

#include <string>

namespace qs::host {

// Loads a library by its name without prefix and ending, first from the program's folder; null when that fails.
void* openSharedLibrary(const std::string& name);

// The address of an exported function, null when there is none.
void* findEntry(void* library, const char* entry);

}  // namespace qs::host
