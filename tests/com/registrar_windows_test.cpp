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

bool exists(HKEY root, const std::wstring& path) {
  HKEY key = nullptr;
  const bool found = RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
  if (found) RegCloseKey(key);
  return found;
}

std::wstring valueOf(HKEY root, const std::wstring& path, const wchar_t* name = nullptr) {
  wchar_t text[1024] = {};
  DWORD size = sizeof text;
  if (RegGetValueW(root, path.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size) != ERROR_SUCCESS) return L"(none)";
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
  static HRESULT registerServer() { return entry<Entry>(kModule, "DllRegisterServer")(); }
  static HRESULT unregisterServer() { return entry<Entry>(kModule, "DllUnregisterServer")(); }
  static HRESULT install(BOOL in, PCWSTR target) { return entry<InstallEntry>(kModule, "DllInstall")(in, target); }
  const std::wstring clsid = std::wstring(L"CLSID\\") + kCompound;

  void expectRegistered(HKEY root, const std::wstring& below = L"") {
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
    for (const auto& [key, value] : rows) EXPECT_EQ(valueOf(root, below + key), value);
    EXPECT_EQ(valueOf(root, below + clsid + L"\\InprocServer32", L"ThreadingModel"), L"Apartment");
    EXPECT_TRUE(exists(root, below + clsid + L"\\Programmable"));
  }
  void expectNothing(HKEY root, const std::wstring& below = L"") {
    for (const std::wstring& key :
         {std::wstring(L"COQSCompound.COQSCompound.1"), std::wstring(L"COQSCompound.COQSCompound"), clsid,
          std::wstring(kTypeLibrary) + kTypeLibraryFile,
          std::wstring(L"Interface\\{4CA3B833-4CB3-11D2-B8D4-00A0C986F9F7}")})
      EXPECT_FALSE(exists(root, below + key)) << narrow(key);
    EXPECT_TRUE(exists(root, below + L"CLSID"));
  }
};

TEST_F(Registration, ForAllUsersComesAndGoesWhole) {
  expectNothing(HKEY_CLASSES_ROOT);
  ASSERT_EQ(registerServer(), S_OK);
  expectRegistered(HKEY_CLASSES_ROOT);

  // What a former version left behind goes with the new registration.
  HKEY stale = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, (clsid + L"\\Stale").c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &stale,
                            nullptr),
            ERROR_SUCCESS);
  RegCloseKey(stale);
  ASSERT_EQ(registerServer(), S_OK);
  EXPECT_FALSE(exists(HKEY_CLASSES_ROOT, clsid + L"\\Stale"));
  expectRegistered(HKEY_CLASSES_ROOT);

  ASSERT_EQ(unregisterServer(), S_OK);
  expectNothing(HKEY_CLASSES_ROOT);
}

TEST_F(Registration, ForTheCurrentUserTouchesNobodyElse) {
  ASSERT_EQ(install(TRUE, L"user"), S_OK);
  expectRegistered(HKEY_CURRENT_USER, L"Software\\Classes\\");
  EXPECT_FALSE(exists(HKEY_LOCAL_MACHINE, L"Software\\Classes\\" + clsid));
  EXPECT_FALSE(exists(HKEY_LOCAL_MACHINE, std::wstring(L"Software\\Classes\\") + kTypeLibrary));
  ASSERT_EQ(install(FALSE, L"user"), S_OK);
  expectNothing(HKEY_CURRENT_USER, L"Software\\Classes\\");
  EXPECT_EQ(install(TRUE, L"everyone"), E_INVALIDARG);
}

TEST_F(Registration, TheHostKitIsRegisteredApart) {
  const auto registerKit = entry<Entry>(L"qshostkit.dll", "DllRegisterServer");
  const auto unregisterKit = entry<Entry>(L"qshostkit.dll", "DllUnregisterServer");
  const std::wstring array = L"CLSID\\{5E58EFBA-3C34-11D2-B8CA-00A0C986F9F7}";
  ASSERT_EQ(registerKit(), S_OK);
  EXPECT_EQ(valueOf(HKEY_CLASSES_ROOT, array + L"\\InprocServer32"), fileOf(L"qshostkit.dll"));
  EXPECT_EQ(valueOf(HKEY_CLASSES_ROOT, L"QsHostKit.RealArray\\CurVer"), L"QsHostKit.RealArray.1");
  expectNothing(HKEY_CLASSES_ROOT);
  ASSERT_EQ(unregisterKit(), S_OK);
  EXPECT_FALSE(exists(HKEY_CLASSES_ROOT, array));
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
