// A host that needs nothing registered: its manifest names those of both modules, which lie beside the program. It
// fills a compound from the database and reads a value. Only the system's headers and qscontainers.h are needed.
//   without_registration DATABASE-DIRECTORY [mta]
// With `mta` the program is multithreaded: the object lives in another apartment and is called through a proxy.
#include <qscontainers.h>

#include <iostream>
#include <string_view>

namespace {

// The class of that name, from the manifests or the registry.
HRESULT create(const wchar_t* program, IBasicCompound** compound) {
  CLSID clsid;
  const HRESULT known = CLSIDFromProgID(program, &clsid);
  if (FAILED(known)) return known;
  return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IBasicCompound),
                          reinterpret_cast<void**>(compound));
}

HRESULT fill(IBasicCompound* compound, const wchar_t* directory, INT number) {
  ICompoundInitFromVelDB* database = nullptr;
  if (const HRESULT hr =
          compound->QueryInterface(__uuidof(ICompoundInitFromVelDB), reinterpret_cast<void**>(&database));
      FAILED(hr))
    return hr;
  const BSTR text = SysAllocString(directory);
  const HRESULT hr = database->Init(text, number);
  SysFreeString(text);
  database->Release();
  return hr;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) {
    std::cerr << "usage: without_registration DATABASE-DIRECTORY [mta]\n";
    return 2;
  }
  const bool multithreaded = argc > 2 && argv[2] == std::wstring_view(L"mta");
  CoInitializeEx(nullptr, multithreaded ? COINIT_MULTITHREADED : COINIT_APARTMENTTHREADED);

  IBasicCompound* water = nullptr;
  HRESULT hr = create(L"COQSCompound.COQSCompound.1", &water);
  if (SUCCEEDED(hr)) hr = fill(water, argv[1], 19);
  double pressure = 0;
  LONG dependencies = 0;
  if (hr == S_OK) hr = water->get_VP(373.15, 101.325, eNoExtrapolation, &dependencies, &pressure);
  if (hr == S_OK)
    std::cout << "vapour pressure of water at 373.15 K: " << pressure << " kPa\n";
  else
    std::cerr << "failed with 0x" << std::hex << static_cast<unsigned>(hr) << "\n";
  if (water) water->Release();
  CoUninitialize();
  return hr == S_OK ? 0 : 1;
}
