// Late binding through the type library, as scripts use it.
#include "com/dispatch.h"

#include <map>
#include <set>

#include "props/key_table.h"
#include "tests/support/compounds.h"
#include "tests/support/late_call.h"

namespace qs::test {
namespace {

// A function of an interface as its type information tells it.
struct Function {
  DISPID id;
  int kind;  // INVOKEKIND
  std::wstring help;
  std::vector<VARTYPE> parameters;
};
using Functions = std::multimap<std::wstring, Function>;

Functions functionsOf(ITypeInfo* info) {
  Functions result;
  TYPEATTR* attributes = nullptr;
  EXPECT_EQ(info->GetTypeAttr(&attributes), S_OK);
  const UINT count = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  for (UINT i = 0; i < count; ++i) {
    FUNCDESC* function = nullptr;
    EXPECT_EQ(info->GetFuncDesc(i, &function), S_OK);
    Bstr name, help;
    EXPECT_EQ(info->GetDocumentation(function->memid, name.out(), help.out(), nullptr, nullptr), S_OK);
    std::vector<VARTYPE> parameters;
    for (int p = 0; p < function->cParams; ++p) parameters.push_back(function->lprgelemdescParam[p].tdesc.vt);
    if (!(function->wFuncFlags & FUNCFLAG_FRESTRICTED))
      result.emplace(std::wstring(name.view()),
                     Function{function->memid, function->invkind, std::wstring(help.view()), parameters});
    info->ReleaseFuncDesc(function);
  }
  return result;
}

ComPtr<ITypeInfo> typeInfoOf(IDispatch* object) {
  ComPtr<ITypeInfo> info;
  EXPECT_EQ(object->GetTypeInfo(0, 0, info.out()), S_OK);
  return info;
}

// Every dual interface of a class in the order of the type library, with its functions.
struct InterfaceFunctions {
  std::wstring name;
  IID iid;
  Functions functions;
};
std::vector<InterfaceFunctions> interfacesOf(REFCLSID clsid, IDispatch* object) {
  ComPtr<ITypeLib> library;
  UINT index = 0;
  EXPECT_EQ(typeInfoOf(object)->GetContainingTypeLib(library.out(), &index), S_OK);
  ComPtr<ITypeInfo> coclass;
  EXPECT_EQ(library->GetTypeInfoOfGuid(clsid, coclass.out()), S_OK);
  TYPEATTR* attributes = nullptr;
  EXPECT_EQ(coclass->GetTypeAttr(&attributes), S_OK);
  const UINT count = attributes->cImplTypes;
  coclass->ReleaseTypeAttr(attributes);

  std::vector<InterfaceFunctions> result;
  for (UINT i = 0; i < count; ++i) {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(coclass->GetRefTypeOfImplType(i, &reference), S_OK);
    EXPECT_EQ(coclass->GetRefTypeInfo(reference, info.out()), S_OK);
    EXPECT_EQ(info->GetTypeAttr(&attributes), S_OK);
    const IID iid = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    Bstr name;
    EXPECT_EQ(info->GetDocumentation(MEMBERID_NIL, name.out(), nullptr, nullptr, nullptr), S_OK);
    result.push_back({std::wstring(name.view()), iid, functionsOf(info.get())});
  }
  return result;
}

using LateBinding = CompoundTest;

TEST_F(LateBinding, TypeLibraryAndKeyTableAgreeBothWays) {
  struct Row {
    std::wstring interfaceName, key;
    DISPID id;
    bool range;
    std::wstring help;
  };
  std::map<std::wstring, std::wstring> helpOf;
  for (const KeyEntry& key : kKeys) helpOf.emplace(key.name, key.help);
  const std::vector<Row> rows = {
#define FIXED_KEY(key, help, interface_name, dispid) {L## #interface_name, L## #key, dispid, true, L##help},
#define FIXED_KEY_ALSO(key, interface_name, dispid) {L## #interface_name, L## #key, dispid, false, helpOf[L## #key]},
#include "props/keys.def"
  };

  const auto compound = newCompound();
  std::set<std::pair<std::wstring, DISPID>> documented;
  std::map<std::wstring, const Functions*> functions;
  const auto interfaces = interfacesOf(__uuidof(::COQSCompound), compound.get());
  for (const InterfaceFunctions& face : interfaces) functions[face.name] = &face.functions;
  const std::vector<VARTYPE> valueParameters{VT_R8, VT_R8, VT_USERDEFINED, VT_PTR, VT_PTR};
  const std::vector<VARTYPE> rangeParameters{VT_PTR, VT_PTR, VT_PTR, VT_PTR};

  for (const Row& row : rows) {
    SCOPED_TRACE(narrow(row.interfaceName + L"::" + row.key));
    const Functions& own = *functions.at(row.interfaceName);
    const auto value = own.find(row.key);
    ASSERT_NE(value, own.end());
    EXPECT_EQ(value->second.id, row.id);
    EXPECT_EQ(value->second.kind, INVOKE_PROPERTYGET);
    EXPECT_EQ(value->second.help, row.help);
    const auto range = own.find(L"get_" + row.key + L"TPRange");
    ASSERT_EQ(range != own.end(), row.range);
    if (row.range) {
      EXPECT_EQ(range->second.id, row.id + 1);
      EXPECT_EQ(range->second.kind, INVOKE_FUNC);
      EXPECT_EQ(range->second.help, row.help);
      documented.emplace(row.interfaceName, row.id + 1);
    }
    documented.emplace(row.interfaceName, row.id);
  }
  for (const InterfaceFunctions& face : interfaces)
    for (const auto& [name, function] : face.functions) {
      const bool typed = name.ends_with(L"TPRange") || (function.kind == INVOKE_PROPERTYGET && helpOf.contains(name));
      if (typed) {
        EXPECT_TRUE(documented.contains({face.name, function.id})) << narrow(face.name + L"::" + name);
      }
    }
}

TEST_F(LateBinding, OnlyTheseGettersStandInTwoInterfaces) {
  // The system answers alike for all of them but VelcorinID and Family, whose result codes differ.
  const std::set<std::wstring> expected = {
      L"IGH",         L"IGS",          L"IGCP",    L"IGHF25",    L"IGSF25",     L"CavettParameter",
      L"COSTALDACEN", L"COSTALDVCHAR", L"SRKACEN", L"SubFamily", L"VelcorinID", L"Family"};
  const auto compound = newCompound();
  std::map<std::pair<std::wstring, int>, int> uses;
  for (const InterfaceFunctions& face : interfacesOf(__uuidof(::COQSCompound), compound.get()))
    for (const auto& [name, function] : face.functions) ++uses[{name, function.kind}];
  std::set<std::wstring> shared;
  for (const auto& [member, count] : uses)
    if (count > 1) shared.insert(member.first);
  EXPECT_EQ(shared, expected);
}

TEST_F(LateBinding, TheDefaultInterfaceKnowsTheNamesOfAll) {
  const auto compound = newCompound();
  const auto interfaces = interfacesOf(__uuidof(::COQSCompound), compound.get());
  ASSERT_EQ(interfaces.size(), 28u + 1u) << "those that hosts have always had, and that of the exact XML form";
  EXPECT_EQ(interfaces.back().name, L"IXMLStoreEx");
  EXPECT_EQ(interfaces[0].name, L"IBasicCompound");
  const Functions& own = interfaces[0].functions;
  std::map<DISPID, std::wstring> nameOfId;
  for (const InterfaceFunctions& face : interfaces) {
    const auto object = ComPtr<IUnknown>::from(compound.get());
    ComPtr<IDispatch> early;
    ASSERT_EQ(object->QueryInterface(face.iid, reinterpret_cast<void**>(early.out())), S_OK);
    for (const auto& [name, function] : face.functions) {
      SCOPED_TRACE(narrow(face.name + L"::" + name));
      DISPID id = 0, again = 0;
      ASSERT_EQ(idOf(compound.get(), name, &id), S_OK);
      ASSERT_EQ(idOf(newCompound().get(), name, &again), S_OK);
      EXPECT_EQ(id, again) << "the same for every object";
      const auto documented = own.find(name);
      if (documented != own.end())
        EXPECT_EQ(id, documented->second.id);
      else
        EXPECT_GE(id, 0x40000000);
      EXPECT_EQ(nameOfId.try_emplace(id, name).first->second, name) << "no identifier stands for two names";

      DISPID ownId = 0;
      ASSERT_EQ(idOf(early.get(), name, &ownId), S_OK);
      if (&face != &interfaces[0]) {
        EXPECT_EQ(ownId, function.id) << "through the interface itself nothing changes";
      }
    }
  }
  DISPID id = 0;
  EXPECT_EQ(idOf(compound.get(), L"NoSuchMember", &id), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(idOf(compound.get(), L"chemicalformula", &id), S_OK) << "names match regardless of case";
}

TEST_F(LateBinding, RefusesWhatDoesNotExist) {
  const auto compound = newCompound();
  DISPPARAMS none{};
  LateValue result;
  for (const DISPID id : {DISPID{0x1000}, DISPID{0x40000000 - 1}, DISPID{0x7fffffff}, DISPID{-1}})
    EXPECT_EQ(compound->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &result.variant, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND)
        << id;
  EXPECT_TRUE(FAILED(callByName(compound.get(), L"ChemicalFormula", DISPATCH_METHOD, result)))
      << "a property is no method";
  EXPECT_TRUE(FAILED(compound->Invoke(1, IID_NULL, 0, DISPATCH_PROPERTYGET, nullptr, nullptr, nullptr, nullptr)));
  ComPtr<ITypeInfo> info;
  EXPECT_EQ(compound->GetTypeInfo(1, 0, info.out()), DISP_E_BADINDEX);
  EXPECT_FALSE(info);
  EXPECT_TRUE(FAILED(compound->GetIDsOfNames(IID_NULL, nullptr, 1, 0, nullptr)));
}

TEST_F(LateBinding, ArraysAnswerByPosition) {
  const auto array = create<IRealArrayDisp>(__uuidof(::HostRealArray));
  EXPECT_EQ(callByName(array.get(), L"Size", DISPATCH_PROPERTYPUT, result, 2), S_OK);
  EXPECT_EQ(callByName(array.get(), L"IthValue", DISPATCH_PROPERTYPUT, result, 1, 2.5), S_OK);
  LateValue result;
  EXPECT_EQ(callByName(array.get(), L"IthValue", DISPATCH_PROPERTYGET, result, 1), S_OK);
  EXPECT_EQ(V_R8(&result.variant), 2.5);
  EXPECT_EQ(callByName(array.get(), L"IthValue", DISPATCH_PROPERTYGET, result, 2), E_BOUNDS);
}

}  // namespace
}  // namespace qs::test
