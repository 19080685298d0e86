// Compounds and collections as texts: all that a compound's interfaces answer, and what the parser makes of an XML
// text.
#pragma once

#include <bit>
#include <cmath>
#include <deque>
#include <functional>
#include <sstream>
#include <string>

#include "tests/support/collections.h"
#include "tests/support/host_object.h"

namespace qs::test {

// A component whose content is a text; it refuses the content "bad".
template <class I>
class TextComponent : public HostObject<I> {
 public:
  STDMETHODIMP GetClassID(BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Store(BSTR* text) noexcept override {
    if (onStore) onStore();
    *text = Bstr(content).release();
    return stored;
  }
  STDMETHODIMP Recall(BSTR text) noexcept override {
    content = viewOf(text);
    return content == OLESTR("bad") ? E_FAIL : S_OK;
  }
  STDMETHODIMP Copy(I*) noexcept override { return E_NOTIMPL; }

  WideString content;
  HRESULT stored = S_OK;
  std::function<void()> onStore;
};
class UserComponent final : public TextComponent<ICOMUserProp> {};
class ValueComponent final : public TextComponent<IPCProperty> {
 public:
  STDMETHODIMP GetProperty(double, double, tagExtrapolationEnum, LONG*, double*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetClassName(BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetMethod(BSTR*) noexcept override { return E_NOTIMPL; }
};

// Makes components of a class that can be created while it lives; they live as long.
template <class Component>
class ComponentClass final : public IClassFactory {
 public:
  explicit ComponentClass(LPCOLESTR clsid) {
    CLSID id;
    EXPECT_EQ(CLSIDFromString(clsid, &id), S_OK);
    EXPECT_EQ(CoRegisterClassObject(id, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_), S_OK);
  }
  ComponentClass(const ComponentClass&) = delete;
  ComponentClass& operator=(const ComponentClass&) = delete;
  ~ComponentClass() {
    CoRevokeClassObject(cookie_);
    for (const Component& component : made_) EXPECT_EQ(component.references, 1u) << "a component is still in use";
  }

  Component* make(WideView content) {
    made_.emplace_back().content = content;
    return &made_.back();
  }

  STDMETHODIMP CreateInstance(IUnknown*, REFIID iid, void** out) noexcept override {
    return make({})->QueryInterface(iid, out);
  }
  STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    const bool known = IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IClassFactory));
    *out = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }

 private:
  DWORD cookie_ = 0;
  std::deque<Component> made_;
};

// What the interfaces of a compound tell of a property: its type, the result of asking for it and its loader; then its
// value at 300 K, its class name and the text of its component, or its shape, form, ranges, coefficients, the shapes of
// X and Y and their norms, powers, A and B.
inline std::string propertyText(const ComPtr<IBasicCompound>& compound, const Bstr& name) {
  std::ostringstream text;
  text.precision(17);
  const auto note = [&](double value) {
    std::isnan(value) ? text << " nan" << std::bit_cast<std::uint64_t>(value) : text << ' ' << value;
  };
  const auto props = query<ICompoundProp>(compound);
  tagPropTypeEnum type{};
  BSTR string = nullptr;
  const HRESULT known = props->GetPropertyType(name.get(), &type);
  text << INT{type} << ' ' << known;
  if (query<ICompoundPropPut>(compound)->GetPropertyLoader(name.get(), &string) == S_OK)
    text << " from " << narrow(taken(string));
  text << ':';
  if (type == PointProp) note(propertyOf(compound, name.view()).value);
  if (type == COMProp) {
    ComPtr<IPCProperty> component;
    EXPECT_EQ(props->GetCOMProperty(name.get(), &string, component.out()), S_OK);
    text << ' ' << narrow(taken(string));
    string = nullptr;
    if (component) component->Store(&string);
    text << ' ' << narrow(taken(string));
  }
  if (type != EquationProp) return text.str();
  tagEquationShapeEnum shape{};
  double v[6]{};
  INT count = 0;
  ComPtr<IRealArrayDisp> coefficients;
  EXPECT_EQ(props->GetEquationProperty(name.get(), &shape, &string, v, v + 1, v + 2, v + 3, &count, coefficients.out()),
            S_OK);
  text << ' ' << INT{shape} << " '" << narrow(taken(string)) << "'";
  for (const double value : {v[0], v[1], v[2], v[3]}) note(value);
  text << " (";
  for (INT i = 0; i < count; ++i) note((coefficients->get_IthValue(i, v), v[0]));
  tagXYShapeEnum x{}, y{};
  EXPECT_EQ(query<ICompEqnXYShape>(compound)->GetEquationPropertyXYShape(name.get(), &x, &y, v, v + 1, v + 2, v + 3,
                                                                         v + 4, v + 5),
            S_OK);
  text << ") " << INT{x} << ' ' << INT{y};
  for (const double value : v) note(value);
  return text.str();
}

// Everything that a compound's interfaces tell, one line per item.
inline std::string descriptionOf(const ComPtr<IBasicCompound>& compound) {
  std::ostringstream text;
  text << identityOf(compound) << ' ' << narrow(got(compound, &ICompoundFamily::get_SubFamily)) << ' '
       << got(compound, &ICompoundFamily::get_NonCondensable) << ' '
       << got(compound, &ICompoundUNIFAC1::get_UNIFAC1NumberOfGroups) << '\n';
  const auto props = query<ICompoundProp>(compound);
  for (const BYTE fixed : {BYTE{1}, BYTE{0}}) {
    Bstr name;
    tagPropTypeEnum type{};
    for (INT i = 0; props->GetPropertyName(fixed, i, name.out(), &type) == S_OK; ++i)
      text << narrow(name.view()) << ' ' << propertyText(compound, name) << '\n';
  }
  Bstr name;
  BSTR classId = nullptr;
  ComPtr<IDispatch> component;
  for (INT i = 0; query<IUserProperty>(compound)->GetUserPropertyI(i, name.out(), &classId, component.out()) == S_OK;
       ++i) {
    BSTR content = nullptr;
    if (const auto stored = ComPtr<ICOMUserProp>::from(component.get())) stored->Store(&content);
    text << narrow(name.view()) << ' ' << narrow(taken(classId)) << ' ' << narrow(taken(content)) << '\n';
  }
  return text.str();
}

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
  // Gives a compound data of every kind; all strings and integers are the given ones.
  static void fill(const ComPtr<IBasicCompound>& compound, const Bstr& string, INT integer) {
    const auto id = query<ICompoundIDPut>(compound);
    for (const auto put : {&ICompoundIDPut::put_Name, &ICompoundIDPut::put_CASN, &ICompoundIDPut::put_IUPACName,
                           &ICompoundIDPut::put_ChemicalFormula})
      EXPECT_EQ((id.get()->*put)(string.get()), S_OK);
    for (const auto put :
         {&ICompoundIDPut::put_PPAttribute, &ICompoundIDPut::put_VelcorinID, &ICompoundIDPut::put_PPDSID,
          &ICompoundIDPut::put_DDBID, &ICompoundIDPut::put_DIPPRID, &ICompoundIDPut::put_CMAID})
      EXPECT_EQ((id.get()->*put)(integer++), S_OK);
    EXPECT_EQ(id->put_NumberOfSynonymNames(0), S_OK);
    for (INT i = 0; i < 4; ++i) EXPECT_EQ(id->put_SynonymName(i, i == 1 ? nullptr : string.get()), S_OK);
    EXPECT_EQ(id->put_NumberOfSynonymNames(3), S_OK);
    const auto family = query<ICompoundFamilyPut>(compound);
    EXPECT_EQ(family->put_Family(eMiscellaneous), S_OK);
    EXPECT_EQ(family->put_SubFamily(string.get()), S_OK);
    EXPECT_EQ(family->put_NonCondensable(VARIANT_TRUE), S_OK);
    const auto groups = query<ICompoundUNIFAC1Put>(compound);
    EXPECT_EQ(groups->put_VELUNIFACSubGr(2, integers({integer, 3}).get()), S_OK);
    EXPECT_EQ(groups->put_VELUNIFACNoGr(1, integers({7}).get()), S_OK);

    const auto put = query<ICompoundPropPut>(compound);
    const Bstr boiling(OLESTR("NBP")), vapourPressure(OLESTR("VP")), other(OLESTR("other"));
    EXPECT_EQ(put->SetVoidProperty(Bstr(OLESTR("TC")).get(), 1), S_OK);
    EXPECT_EQ(put->SetVoidProperty(other.get(), 0), S_OK);
    EXPECT_EQ(put->SetPointProperty(boiling.get(), 1, std::bit_cast<double>(0xFFF8000000000123)), S_OK);
    EXPECT_EQ(put->SetPointProperty(string.get(), 0, 0.1), S_OK);
    EXPECT_EQ(put->SetEquationProperty(vapourPressure.get(), 1, PropCurvePOLY2, 5e-324, -0.0, -HUGE_VAL, 0.7,
                                       reals({1.0 / 3, std::nan(""), 1e300}).get()),
              S_OK);
    EXPECT_EQ(query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(vapourPressure.get(), COMxr, COMlnx, 0.1,
                                                                           0.2, 0.3, 0.4, 0.6, 0.7),
              S_OK);
    for (const Bstr* name : {&boiling, &vapourPressure, &other})
      EXPECT_EQ(put->SetPropertyLoader(name->get(), string.get()), S_OK);
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
