// Compounds and collections as texts: all that a compound's interfaces answer, and what the parser makes of an XML
// text.
#pragma once

#include <bit>
#include <deque>
#include <functional>
#include <string>

#include "tests/support/collections.h"
#include "tests/support/host_object.h"

namespace qs::test {

// A component whose content is a text; it refuses the content "bad", and has no memory for "much".
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
    return content == OLESTR("bad") ? E_FAIL : content == OLESTR("much") ? E_OUTOFMEMORY : S_OK;
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
    return FAILED(result) ? result : make({})->QueryInterface(iid, out);
  }
  STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }

  HRESULT result = S_OK;  // of a creation

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

// Everything that a compound's interfaces tell, one line per item; doubles as their bits.
class Description {
 public:
  static WideString of(const ComPtr<IBasicCompound>& compound) {
    Description description;
    description.identity(query<ICompoundID>(compound), query<ICompoundFamily>(compound));
    description.groups(query<ICompoundUNIFAC1>(compound));
    for (const BYTE fixed : {BYTE{1}, BYTE{0}})
      description.properties(query<ICompoundProp>(compound), query<ICompoundPropPut>(compound),
                             query<ICompEqnXYShape>(compound), fixed);
    description.userProperties(query<IUserProperty>(compound));
    return description.text_;
  }

 private:
  Description& operator<<(WideView text) {
    text_.append(text) += OLESTR('|');
    return *this;
  }
  Description& operator<<(std::int64_t number) { return *this << widen(std::to_string(number)); }
  Description& operator<<(double number) { return *this << std::bit_cast<std::int64_t>(number); }
  void end() { text_ += OLESTR('\n'); }

  void identity(const ComPtr<ICompoundID>& id, const ComPtr<ICompoundFamily>& families) {
    BSTR text = nullptr;
    INT number = 0;
    for (const auto get : {&ICompoundID::get_Name, &ICompoundID::get_CASN, &ICompoundID::get_IUPACName,
                           &ICompoundID::get_ChemicalFormula})
      *this << ((id.get()->*get)(&text), taken(text));
    *this << (families->get_SubFamily(&text), taken(text));
    for (const auto get : {&ICompoundID::get_PPAttribute, &ICompoundID::get_VelcorinID, &ICompoundID::get_PPDSID,
                           &ICompoundID::get_DDBID, &ICompoundID::get_DIPPRID, &ICompoundID::get_CMAID,
                           &ICompoundID::get_NumberOfSynonymNames})
      *this << ((id.get()->*get)(&number), std::int64_t{number});
    for (INT i = 0; i < number && i < 70; ++i) *this << (id->get_SynonymName(i, &text), taken(text));
    tagCompoundFamilyEnum family{};
    VARIANT_BOOL condensable = 7;
    families->get_Family(&family);
    families->get_NonCondensable(&condensable);
    *this << std::int64_t{family} << std::int64_t{condensable};
    end();
  }

  void groups(const ComPtr<ICompoundUNIFAC1>& unifac) {
    INT count = 0;
    unifac->get_UNIFAC1NumberOfGroups(&count);
    *this << std::int64_t{count};
    ComPtr<IDispatch> types, counts;
    unifac->get_UNIFAC1Groups(types.out(), counts.out());
    for (IDispatch* array : {types.get(), counts.get()}) {
      const auto values = ComPtr<IIntegerArrayDisp>::from(array);
      LONG size = 0;
      values->get_Size(&size);
      *this << std::int64_t{size};
      for (LONG i = 0, value = 0; i < size; ++i) *this << (values->get_IthValue(i, &value), std::int64_t{value});
    }
    end();
  }

  void properties(const ComPtr<ICompoundProp>& props, const ComPtr<ICompoundPropPut>& put,
                  const ComPtr<ICompEqnXYShape>& shapes, BYTE fixed) {
    INT count = 0;
    props->GetNumbOfProperty(fixed, &count);
    for (INT i = 0; i < count; ++i) {
      Bstr name, loader;
      tagPropTypeEnum type{};
      props->GetPropertyName(fixed, i, name.out(), &type);
      *this << name.view() << std::int64_t{type} << std::int64_t{props->GetPropertyType(name.get(), &type)};
      if (put->GetPropertyLoader(name.get(), loader.out()) == S_OK) *this << OLESTR("loader") << loader.view();
      if (type == PointProp) {
        double value = 0;
        LONG dependencies = 0;
        props->GetPropertyValue(name.get(), 300, 100, eNoExtrapolation, &dependencies, &value);
        *this << value;
      } else if (type == EquationProp) {
        equation(name.get(), props, shapes);
      } else if (type == COMProp) {
        Bstr className;
        ComPtr<IPCProperty> component;
        props->GetCOMProperty(name.get(), className.out(), component.out());
        BSTR content = nullptr;
        if (component) component->Store(&content);
        *this << (className ? className.view() : WideView(OLESTR("(null)"))) << taken(content);
      }
      end();
    }
  }

  void equation(BSTR name, const ComPtr<ICompoundProp>& props, const ComPtr<ICompEqnXYShape>& shapes) {
    tagEquationShapeEnum shape{};
    BSTR form = nullptr;
    double v[6]{};
    INT count = 0;
    ComPtr<IRealArrayDisp> coefficients;
    props->GetEquationProperty(name, &shape, &form, v, v + 1, v + 2, v + 3, &count, coefficients.out());
    *this << std::int64_t{shape} << taken(form) << v[0] << v[1] << v[2] << v[3];
    for (INT i = 0; i < count; ++i) *this << (coefficients->get_IthValue(i, v), v[0]);
    tagXYShapeEnum x{}, y{};
    shapes->GetEquationPropertyXYShape(name, &x, &y, v, v + 1, v + 2, v + 3, v + 4, v + 5);
    *this << std::int64_t{x} << std::int64_t{y};
    for (const double value : v) *this << value;
  }

  void userProperties(const ComPtr<IUserProperty>& user) {
    INT count = 0;
    user->GetNumbOfUserProperty(&count);
    for (INT i = 0; i < count; ++i) {
      Bstr name;
      BSTR classId = nullptr, content = nullptr;
      ComPtr<IDispatch> component;
      user->GetUserPropertyI(i, name.out(), &classId, component.out());
      if (const auto stored = ComPtr<ICOMUserProp>::from(component.get())) stored->Store(&content);
      *this << OLESTR("user") << name.view() << taken(classId) << taken(content);
      end();
    }
  }

  WideString text_;
};

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
