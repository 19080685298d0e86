// What registration writes and removes, in the registry of the test's own prefix.
#include "com/registrar.h"

#include <string>

#include "tests/support/component_test.h"

namespace qs::test {
namespace {

constexpr wchar_t kCompound[] = L"{4CA3B834-4CB3-11D2-B8D4-00A0C986F9F7}";
constexpr wchar_t kTypeLibrary[] = L"TypeLib\\{8915F1F0-5707-11D2-B8D8-00A0C986F9F7}";
constexpr const wchar_t* kTypeLibraryFile = sizeof(void*) == 8 ? L"\\1.0\\409\\win64" : L"\\1.0\\409\\win32";

using Entry = HRESULT(STDAPICALLTYPE*)();
using InstallEntry = HRESULT(STDAPICALLTYPE*)(BOOL, PCWSTR);

template <class Function>
Function entry(const wchar_t* module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(module), name)));
}

bool exists(const std::wstring& path, HKEY root = HKEY_CLASSES_ROOT) {
  HKEY key = nullptr;
  const bool found = RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
  if (found) RegCloseKey(key);
  return found;
}

std::wstring valueOf(const std::wstring& path, const wchar_t* name = nullptr) {
  wchar_t text[1024] = {};
  DWORD size = sizeof text;
  if (RegGetValueW(HKEY_CLASSES_ROOT, path.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS)
    return L"(none)";
  return text;
}

std::wstring fileOf(const wchar_t* module) {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(GetModuleHandleW(module), path, MAX_PATH);
  return path;
}

class Registration : public ComponentTest {
 protected:
  static constexpr const wchar_t* kModule = L"qscontainers.dll";
  const std::wstring clsid = std::wstring(L"CLSID\\") + kCompound;

  // All keys and values that registration writes for a class.
  void expectRegistered() {
    const std::wstring library = kTypeLibrary;
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"COQSCompound.COQSCompound.1", L"COQSCompound Class"},
        {L"COQSCompound.COQSCompound.1\\CLSID", kCompound},
        {L"COQSCompound.COQSCompound\\CurVer", L"COQSCompound.COQSCompound.1"},
        {clsid, L"COQSCompound Class"},
        {clsid + L"\\ProgID", L"COQSCompound.COQSCompound.1"},
        {clsid + L"\\VersionIndependentProgID", L"COQSCompound.COQSCompound"},
        {clsid + L"\\InprocServer32", fileOf(kModule)},
        {library + L"\\1.0", L"QsContainersLib 1.0 Type Library"},
        {library + kTypeLibraryFile, fileOf(kModule)}};
    for (const auto& [key, value] : rows) EXPECT_EQ(valueOf(key), value);
    EXPECT_EQ(valueOf(clsid + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    EXPECT_TRUE(exists(clsid + L"\\Programmable"));
  }
};

// That nothing at all is left is tested where the packages are installed.
TEST_F(Registration, ComesAndGoesWhole) {
  const auto registerServer = entry<Entry>(kModule, "DllRegisterServer");
  ASSERT_EQ(registerServer(), S_OK);
  expectRegistered();

  // What a former version left behind goes with the new registration.
  HKEY stale = nullptr;
  ASSERT_EQ(RegCreateKeyW(HKEY_CLASSES_ROOT, (clsid + L"\\Stale").c_str(), &stale), ERROR_SUCCESS);
  RegCloseKey(stale);
  ASSERT_EQ(registerServer(), S_OK);
  EXPECT_FALSE(exists(clsid + L"\\Stale"));
  expectRegistered();

  ASSERT_EQ(entry<Entry>(kModule, "DllUnregisterServer")(), S_OK);
  EXPECT_FALSE(exists(clsid));
  EXPECT_FALSE(exists(kTypeLibrary + std::wstring(kTypeLibraryFile)));
  EXPECT_TRUE(exists(L"CLSID"));
  const auto install = entry<InstallEntry>(kModule, "DllInstall");
  ASSERT_EQ(install(TRUE, L"user"), S_OK);
  EXPECT_FALSE(exists(L"Software\\Classes\\" + clsid, HKEY_LOCAL_MACHINE));
  ASSERT_EQ(install(FALSE, L"user"), S_OK);
  EXPECT_TRUE(exists(L"Software\\Classes\\CLSID", HKEY_CURRENT_USER)) << "which others share";
  EXPECT_EQ(install(TRUE, L"everyone"), E_INVALIDARG);
}

// This program stands for a system that has the function, another module for one that lacks it.
int timesCalled = 0;
extern "C" __declspec(dllexport) void OaEnablePerUserTLibRegistration() { ++timesCalled; }

TEST(TypeLibraryOfTheUser, IsAskedForWhereTheSystemCanBe) {
  letTypeLibrariesFollow(GetModuleHandleW(nullptr));
  EXPECT_EQ(timesCalled, 1);
  letTypeLibrariesFollow(GetModuleHandleW(L"kernel32.dll"));
  EXPECT_EQ(timesCalled, 1);
}

TEST_F(Registration, ResourcesNameTheProject) {
  wchar_t text[64] = {};
  EXPECT_GT(LoadStringW(GetModuleHandleW(kModule), 100, text, 64), 0);
  EXPECT_STREQ(text, L"QSContainers");
  DWORD none = 0;
  EXPECT_GT(GetFileVersionInfoSizeW(fileOf(kModule).c_str(), &none), 0u);
}

}  // namespace
}  // namespace qs::test
