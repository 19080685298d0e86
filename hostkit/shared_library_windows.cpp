#include "hostkit/shared_library.h"
#include "platform/text.h"

namespace qs::host {

void* openSharedLibrary(const std::string& name) { return LoadLibraryW(widen(name + ".dll").c_str()); }

void* findEntry(void* library, const char* entry) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), entry));
}

}  // namespace qs::host
