// Writes and removes a class's registry keys by its registration script (Windows only).
#pragma once

#include "com/module.h"

namespace qs {

// While it lives, HKEY_CLASSES_ROOT of this process is that of all users, or that of the current user alone; type
// libraries are registered there too.
class ClassesRoot {
 public:
  enum class Owner { AllUsers, CurrentUser };
  explicit ClassesRoot(Owner owner);
  ClassesRoot(const ClassesRoot&) = delete;
  ClassesRoot& operator=(const ClassesRoot&) = delete;
  ~ClassesRoot();

 private:
  bool redirected_ = false;
};

// Makes the type libraries that this process registers follow ClassesRoot. Windows has a function for that in
// oleaut32.dll and registers them for all users until it is called; without one they follow as they are.
inline void letTypeLibrariesFollow(HMODULE automation) {
  const FARPROC found = GetProcAddress(automation, "OaEnablePerUserTLibRegistration");
  if (found) reinterpret_cast<void(WINAPI*)()>(reinterpret_cast<void*>(found))();
}

// Runs the script of a class in either mode, with the class's and the module's data put in. They throw a CQSCOMError
// with the first failing result; a key that is already gone is no failure.
void registerClass(const ClassEntry& entry);
void unregisterClass(const ClassEntry& entry);

}  // namespace qs
