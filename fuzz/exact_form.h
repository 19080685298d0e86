// What the fuzz targets demand of a compound or a collection, whatever they made of it.
#pragma once

#include "fuzz/fuzz_target.h"
#include "hostkit/module_loader.h"
#include "tests/calls/calls.h"

namespace qs {

// The exact form of an object; null where its texts hold what XML cannot.
inline Bstr exactText(IUnknown* object) {
  Bstr text;
  const HRESULT hr = ComPtr<IXMLStoreEx>::from(object)->StoreAsXMLEx(xmlExactForm, text.out());
  require(hr == S_OK || hr == E_INVALIDARG);
  return text;
}

// The exact form, if there is one, is read back into the same.
inline void requireExactForm(IUnknown* object, REFCLSID clsid) {
  const Bstr exact = exactText(object);
  if (!exact) return;
  const auto again = host::createInstance<IDispatch>(clsid);
  require(host::createInstance<IXMLParser>(__uuidof(::XMLParser))->ParseText(exact.get(), again.get()) == S_OK);
  require(exactText(again.get()).view() == exact.view());
}

}  // namespace qs
