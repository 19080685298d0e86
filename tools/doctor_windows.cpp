// Reads the registry as the component runtime does: what the current user has registered comes before what is there for
// all users, and programs of 64 and of 32 bits have registrations of their own.
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>

#include "com/com_ptr.h"
#include "platform/text.h"
#include "tools/doctor.h"

namespace qs::tools {
namespace {

namespace fs = std::filesystem;

constexpr int kOwnBits = 8 * sizeof(void*);

std::string utf8(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}
std::string quoted(const fs::path& path) { return '"' + utf8(path) + '"'; }

template <class Number>
std::string hex(Number value) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16);
  return {digits.data(), end.ptr};
}
std::string codeText(HRESULT code) { return "error 0x" + hex(static_cast<unsigned>(code)); }

std::wstring guidText(const GUID& guid) {
  std::array<wchar_t, 39> text{};
  StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
  return text.data();
}

std::string bitsText(int bits) { return std::to_string(bits) + "-bit"; }

// Where classes are registered: for whom, and for programs of which bitness.
struct Place {
  HKEY root;
  int bits;

  std::string name() const {
    return std::string(root == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER" : "HKEY_LOCAL_MACHINE") + ", " + bitsText(bits) +
           " programs";
  }
};

bool systemHas64Bits() {
  SYSTEM_INFO system{};
  GetNativeSystemInfo(&system);
  return system.wProcessorArchitecture != PROCESSOR_ARCHITECTURE_INTEL;
}

std::vector<Place> places() {
  if (!systemHas64Bits()) return {{HKEY_CURRENT_USER, 32}, {HKEY_LOCAL_MACHINE, 32}};
  return {{HKEY_CURRENT_USER, 64}, {HKEY_LOCAL_MACHINE, 64}, {HKEY_CURRENT_USER, 32}, {HKEY_LOCAL_MACHINE, 32}};
}

// A key below Software\Classes, open for reading; it may not be there. The bitness matters for classes only.
class OpenKey {
 public:
  OpenKey(const Place& place, const std::wstring& path) {
    std::wstring full = L"Software\\Classes\\";
    if (place.bits == 32 && systemHas64Bits()) full += L"Wow6432Node\\";
    RegOpenKeyExW(place.root, (full + path).c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key_);
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  ~OpenKey() {
    if (key_) RegCloseKey(key_);
  }

  std::optional<std::wstring> value() const {
    DWORD bytes = 0;
    if (!key_ || RegGetValueW(key_, nullptr, nullptr, RRF_RT_REG_SZ, nullptr, nullptr, &bytes) != ERROR_SUCCESS)
      return {};
    std::wstring text(bytes / sizeof(wchar_t), L'\0');
    if (RegGetValueW(key_, nullptr, nullptr, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) != ERROR_SUCCESS) return {};
    text.resize(text.find(L'\0'));
    return text;
  }

  std::vector<std::wstring> subkeys() const {
    std::vector<std::wstring> names;
    std::array<wchar_t, 256> name;
    for (DWORD i = 0, length = 256;
         key_ && RegEnumKeyExW(key_, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++i, length = 256)
      names.emplace_back(name.data(), length);
    return names;
  }

 private:
  HKEY key_ = nullptr;
};

// The bitness of a program file, 0 when it is none.
int bitsOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::uint32_t header = 0;
  std::array<char, 4> signature{};
  std::uint16_t machine = 0;
  stream.seekg(0x3C).read(reinterpret_cast<char*>(&header), sizeof header);
  stream.seekg(header).read(signature.data(), signature.size());
  stream.read(reinterpret_cast<char*>(&machine), sizeof machine);
  if (!stream || signature != std::array{'P', 'E', '\0', '\0'}) return 0;
  return machine == IMAGE_FILE_MACHINE_AMD64 ? 64 : machine == IMAGE_FILE_MACHINE_I386 ? 32 : 0;
}

fs::path programFile() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path;
}
fs::path programFolder() { return programFile().parent_path(); }

// How to register a module, for programs of this bitness where it lies beside this one.
std::string registrationOf(const char* module, int bits) {
  const fs::path file = std::string(module) + ".dll";
  const fs::path beside = programFolder() / file;
  if (bits != kOwnBits || bitsOf(beside) != bits)
    return "Register the " + bitsText(bits) + ' ' + utf8(file) + ": regsvr32 with its full path" +
           (kOwnBits == 64 && bits == 32 ? ", from the system's folder SysWOW64." : ".");
  return "Register " + utf8(file) + ": regsvr32 " + quoted(beside) + " as administrator, or regsvr32 /n /i:user " +
         quoted(beside) + " for yourself alone.";
}

// What keeps a file from serving a class, in words; empty when nothing does, as far as a program of this bitness can
// tell.
std::string faultOf(const fs::path& file, int bits, const CLSID& clsid) {
  std::error_code unreadable;
  if (!fs::exists(file, unreadable)) return "this file is not there; it was moved or deleted";
  const int found = bitsOf(file);
  if (found == 0) return "this file is no module";
  if (found != bits)
    return "this file is a " + bitsText(found) + " module, which " + bitsText(bits) + " programs cannot load";
  if (bits != kOwnBits) return {};
  const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!module) return "this file does not load, " + codeText(HRESULT_FROM_WIN32(GetLastError()));
  const auto entry = reinterpret_cast<decltype(&DllGetClassObject)>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
  ComPtr<IUnknown> classObject;
  const HRESULT hr = entry ? entry(clsid, __uuidof(IUnknown), classObject.outAny()) : E_NOTIMPL;
  return FAILED(hr) ? "this file does not have the class, " + codeText(hr) : std::string();
}

std::optional<std::wstring> registeredFile(const NeededClass& needed, const Place& place) {
  return OpenKey(place, L"CLSID\\" + guidText(*needed.clsid) + L"\\InprocServer32").value();
}

void examineClass(const NeededClass& needed, Report& report) {
  const std::string name = needed.name;
  bool registered = false;
  for (const Place& place : places()) {
    const auto file = registeredFile(needed, place);
    if (!file) continue;
    registered = registered || place.bits == kOwnBits;
    const std::string line = name + " (" + place.name() + "): " + utf8(*file);
    const std::string fault = faultOf(*file, place.bits, *needed.clsid);
    if (fault.empty())
      report.tell(line + (place.bits == kOwnBits ? ", loads" : ""));
    else
      report.complain(line + ": " + fault, registrationOf(needed.module, place.bits));
  }
  if (!registered) {
    const bool array = needed.module == std::string_view("qshostkit");
    report.complain(
        name + ": not registered for " + bitsText(kOwnBits) + " programs" +
            (array ? "; what returns an array fails, and no phase can be created" : ""),
        registrationOf(needed.module, kOwnBits) + (array ? " A host may register array classes of its own." : ""));
    return;
  }
  if (report.faults != 0) return;  // which explain a failure
  ComPtr<IUnknown> object;
  const HRESULT hr = object.create(*needed.clsid);
  if (FAILED(hr))
    report.complain(name + ": cannot be created, " + codeText(hr), registrationOf(needed.module, kOwnBits));
}

// A type library's identity. The one that this program carries is that of the modules of its version.
struct Library {
  GUID guid{};
  std::wstring version;  // as registered: hexadecimal
};
std::optional<Library> libraryIn(const fs::path& file) {
  ComPtr<ITypeLib> library;
  TLIBATTR* attributes = nullptr;
  if (FAILED(LoadTypeLibEx(file.c_str(), REGKIND_NONE, library.out())) || FAILED(library->GetLibAttr(&attributes)))
    return {};
  Library result{attributes->guid, widen(hex(attributes->wMajorVerNum) + '.' + hex(attributes->wMinorVerNum))};
  library->ReleaseTLibAttr(attributes);
  return result;
}

// One registered version of the type library, in all its languages and for all systems.
bool examineVersion(const Place& place, const Library& own, const std::wstring& version, Report& report) {
  const std::string remedy = registrationOf("qscontainers", kOwnBits);
  const std::string name = "type library " + narrow(version) + " (" +
                           (place.root == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER" : "HKEY_LOCAL_MACHINE") + "): ";
  if (version != own.version) {
    report.complain(name + "another version than these modules have, which is " + narrow(own.version),
                    "Unregister the modules that brought the other version: regsvr32 /u with their full paths.");
    return false;
  }
  bool found = false;
  const std::wstring path = L"TypeLib\\" + guidText(own.guid) + L'\\' + version;
  for (const std::wstring& language : OpenKey(place, path).subkeys()) {
    for (const wchar_t* system : {L"\\win64", L"\\win32"}) {
      const auto file = OpenKey(place, path + L'\\' + language + system).value();
      if (!file) continue;
      found = true;
      const auto held = libraryIn(*file);
      if (!held)
        report.complain(name + utf8(*file) + " is not there or has no type library", remedy);
      else if (held->version != own.version || held->guid != own.guid)
        report.complain(name + utf8(*file) + " has a type library of another version, " + narrow(held->version),
                        remedy);
      else
        report.tell(name + utf8(*file) + ", loads");
    }
  }
  return found;
}

void examineTypeLibrary(Report& report) {
  const auto own = libraryIn(programFile());
  if (!own) {
    report.complain("this program's own type library cannot be read", "Unpack the package again.");
    return;
  }
  bool found = false;
  for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    const Place place{root, systemHas64Bits() ? 64 : 32};  // programs of both kinds share it
    for (const std::wstring& version : OpenKey(place, L"TypeLib\\" + guidText(own->guid)).subkeys())
      found = examineVersion(place, *own, version, report) || found;
  }
  if (!found)
    report.complain("type library " + narrow(own->version) +
                        ": not registered; compiled hosts and calls between apartments may fail",
                    registrationOf("qscontainers", kOwnBits));
}

void tellOfTheUser(Report& report) {
  for (const NeededClass& needed : kNeededClasses)
    for (const Place& place : places()) {
      if (place.root != HKEY_CURRENT_USER || !registeredFile(needed, place)) continue;
      report.tell(
          "What HKEY_CURRENT_USER holds serves programs that you start yourself. Programs that run as administrator, "
          "services and other users' programs do not see it: register for all users where those need it.");
      return;
    }
}

void examineFilesBeside(Report& report) {
  for (const char* module : {"qscontainers.dll", "qshostkit.dll"}) {
    const fs::path file = programFolder() / module;
    const int bits = bitsOf(file);
    if (bits) report.tell("beside this program: " + utf8(file) + ", " + bitsText(bits));
  }
}

}  // namespace

Report examineInstallation() {
  Report report;
  const HRESULT started = CoInitialize(nullptr);
  examineFilesBeside(report);
  for (const NeededClass& needed : kNeededClasses) examineClass(needed, report);
  examineTypeLibrary(report);
  tellOfTheUser(report);
  if (SUCCEEDED(started)) CoUninitialize();
  return report;
}

}  // namespace qs::tools
