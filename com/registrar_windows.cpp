#include "com/registrar.h"

#include "com/error.h"
#include "com/module_file.h"
#include "com/registry_script.h"

namespace qs {
namespace {

void checkRegistry(LSTATUS status) { check(HRESULT_FROM_WIN32(static_cast<DWORD>(status))); }

void checkRemoval(LSTATUS status) {
  if (status != ERROR_FILE_NOT_FOUND) checkRegistry(status);
}

class OpenKey {
 public:
  OpenKey() = default;
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  ~OpenKey() {
    if (key_) RegCloseKey(key_);
  }
  HKEY get() const { return key_; }
  HKEY* out() { return &key_; }

 private:
  HKEY key_ = nullptr;
};

void setValue(HKEY key, const wchar_t* name, const WideString& text) {
  const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  checkRegistry(RegSetValueExW(key, name, 0, REG_SZ, bytes, size));
}

void write(HKEY parent, const RegistryKey& key) {
  if (key.removal == RegistryKey::Removal::WithAll) checkRemoval(RegDeleteTreeW(parent, key.name.c_str()));
  OpenKey made;
  checkRegistry(
      RegCreateKeyExW(parent, key.name.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, made.out(), nullptr));
  if (key.value) setValue(made.get(), nullptr, *key.value);
  for (const auto& [name, value] : key.namedValues) setValue(made.get(), name.c_str(), value);
  for (const RegistryKey& child : key.children) write(made.get(), child);
}

bool hasSubkeys(HKEY key) {
  DWORD count = 0;
  checkRegistry(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr));
  return count != 0;
}

void remove(HKEY parent, const RegistryKey& key) {
  if (key.removal == RegistryKey::Removal::WithAll) {
    checkRemoval(RegDeleteTreeW(parent, key.name.c_str()));
    return;
  }
  {
    OpenKey opened;
    const LSTATUS status = RegOpenKeyExW(parent, key.name.c_str(), 0, KEY_READ | KEY_WRITE, opened.out());
    if (status == ERROR_FILE_NOT_FOUND) return;
    checkRegistry(status);
    for (const RegistryKey& child : key.children) remove(opened.get(), child);
    // Keys that others made below stay, and so does this one then.
    if (key.removal == RegistryKey::Removal::Never || hasSubkeys(opened.get())) return;
  }
  checkRemoval(RegDeleteKeyW(parent, key.name.c_str()));
}

// The keys below HKEY_CLASSES_ROOT that the class's script names.
std::vector<RegistryKey> scriptOf(const ClassEntry& entry) {
  const HMODULE module = moduleHandle();
  const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(entry.script), L"REGISTRY");
  const HGLOBAL loaded = resource ? LoadResource(module, resource) : nullptr;
  if (!loaded) throw CQSCOMError(HRESULT_FROM_WIN32(GetLastError()));
  const std::string_view text(static_cast<const char*>(LockResource(loaded)), SizeofResource(module, resource));

  wchar_t clsid[39];
  StringFromGUID2(*entry.clsid, clsid, 39);
  auto roots = parseRegistryScript(widen(text), {{L"MODULE", moduleFile()},
                                                 {L"CLSID", clsid},
                                                 {L"PROGID", WideString(entry.program)},
                                                 {L"DESCRIPTION", WideString(entry.description)}});
  if (roots.size() != 1 || roots[0].name != L"HKCR") throw CQSCOMError(E_FAIL);
  return std::move(roots[0].children);
}

}  // namespace

ClassesRoot::ClassesRoot(Owner owner) {
  if (owner == Owner::AllUsers) return;
  letTypeLibrariesFollow(GetModuleHandleW(L"oleaut32.dll"));
  OpenKey classes;
  checkRegistry(RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Classes", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                classes.out(), nullptr));
  checkRegistry(RegOverridePredefKey(HKEY_CLASSES_ROOT, classes.get()));
  redirected_ = true;
}

ClassesRoot::~ClassesRoot() {
  if (redirected_) RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
}

void registerClass(const ClassEntry& entry) {
  for (const RegistryKey& key : scriptOf(entry)) write(HKEY_CLASSES_ROOT, key);
}

void unregisterClass(const ClassEntry& entry) {
  for (const RegistryKey& key : scriptOf(entry)) remove(HKEY_CLASSES_ROOT, key);
}

}  // namespace qs
