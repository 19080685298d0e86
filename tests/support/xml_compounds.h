// Compounds and collections as XML texts, and what the parser makes of a text.
#pragma once

#include "tests/support/collections.h"
#include "tests/support/components.h"

namespace qs::test {

class XmlTest : public CollectionTest {
 protected:
  template <class I>
  static WideString textOf(const ComPtr<I>& object) {
    Bstr text;
    EXPECT_EQ(query<IXMLStore>(object)->StoreAsXML(text.out()), S_OK);
    return WideString(text.view());
  }
  template <class I>
  static WideString textOf(const ComPtr<I>& object, INT form) {
    Bstr text;
    EXPECT_EQ(query<IXMLStoreEx>(object)->StoreAsXMLEx(form, text.out()), S_OK);
    return WideString(text.view());
  }
  static HRESULT parse(WideView text, IDispatch* client) {
    return create<IXMLParser>(__uuidof(::XMLParser))->ParseText(Bstr(text).get(), client);
  }
  static ComPtr<IBasicCompound> read(WideView text, HRESULT expected = S_OK) {
    auto compound = newCompound();
    EXPECT_EQ(parse(text, compound.get()), expected) << narrow(text);
    return compound;
  }
};

}  // namespace qs::test
