// Short ways to make and read collections in tests.
#pragma once

#include <string>
#include <vector>

#include "tests/support/compounds.h"
#include "tests/support/host_object.h"

namespace qs::test {

class CollectionTest : public CompoundTest {
 public:
  static ComPtr<ICompoundCollection> newCollection() {
    return create<ICompoundCollection>(__uuidof(::COQSCompoundCollection));
  }

  static ComPtr<IBasicCompound> named(const WideString& name) {
    auto compound = newCompound();
    EXPECT_EQ(query<ICompoundIDPut>(compound)->put_Name(Bstr(name).get()), S_OK);
    return compound;
  }

  // Compounds named with one letter each; a blank stands for an empty slot.
  static ComPtr<ICompoundCollection> collectionOf(const std::string& letters) {
    auto collection = newCollection();
    for (const char letter : letters) {
      if (letter == ' ') {
        EXPECT_EQ(collection->put_NumberOfCompounds(countOf(collection) + 1), S_OK);
      } else {
        const auto compound = named(WideString(1, static_cast<OLECHAR>(letter)));
        EXPECT_EQ(collection->AddCompound(compound.get()), S_OK);
      }
    }
    return collection;
  }

  static INT countOf(const ComPtr<ICompoundCollection>& collection) {
    return got(collection, &ICompoundCollection::get_NumberOfCompounds);
  }

  // The names in their order, for collections made by collectionOf. Both getters must agree.
  static std::string lettersOf(const ComPtr<ICompoundCollection>& collection) {
    std::string letters;
    for (INT i = 0; i < countOf(collection); ++i) {
      ComPtr<IDispatch> compound;
      ComPtr<IBasicCompound> basic;
      const HRESULT result = collection->get_Compound(i, compound.out());
      EXPECT_EQ(collection->GetBasicCompound(i, basic.out()), result);
      EXPECT_EQ(result == S_OK, static_cast<bool>(compound));
      EXPECT_EQ(static_cast<IDispatch*>(basic.get()), compound.get());
      if (!compound) {
        EXPECT_EQ(result, S_FALSE);
        letters += ' ';
        continue;
      }
      letters += static_cast<char>(got(compound, &ICompoundID::get_Name).front());
    }
    return letters;
  }

  static ComPtr<ICompoundCollection> viewOf(const ComPtr<ICompoundCollection>& parent,
                                            std::initializer_list<LONG> positions) {
    ComPtr<ICompoundCollection> view;
    EXPECT_EQ(query<ISubCompList>(parent)->CreateSubCompList(integers(positions).get(), view.out()), S_OK);
    return view;
  }
};

// A compound of another implementation around one of this module, of which a test writes an interface.
template <class I>
struct CompoundAround : Stub<I> {
  CompoundAround() {
    CoCreateInstance(__uuidof(::COQSCompound), this, CLSCTX_INPROC_SERVER, __uuidof(IUnknown),
                     reinterpret_cast<void**>(inner.out()));
  }
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    return IsEqualGUID(iid, __uuidof(IBasicCompound)) ? inner->QueryInterface(iid, out)
                                                      : Stub<I>::QueryInterface(iid, out);
  }

  ComPtr<IUnknown> inner;
};

}  // namespace qs::test
