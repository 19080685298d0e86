// Prints what the type library of a module says of its classes: a line `CLASS IDENTIFIER`, for each of its interfaces a
// line `CLASS INTERFACE IDENTIFIER`, and for each function of that in the order of the virtual table
//   CLASS INTERFACE get|put|method NAME DISPID [not-dual] [restricted] PARAMETER...
// where a parameter is `in:TYPE:NAME`, `out:TYPE:NAME` or, for the return value, `result:TYPE:NAME`.
//   type_library_text MODULE
#include <filesystem>
#include <iostream>
#include <map>
#include <string>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/error.h"
#include "interfaces/interfaces.h"
#include "platform/text.h"

namespace qs::test {
namespace {

// Attributes of a type, released at the end.
struct Attributes {
  explicit Attributes(ITypeInfo& info) : type(info) { check(type.GetTypeAttr(&value)); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { type.ReleaseTypeAttr(value); }
  const TYPEATTR* operator->() const { return value; }

  ITypeInfo& type;
  TYPEATTR* value = nullptr;
};

std::string nameOf(ITypeInfo& type) {
  Bstr name;
  check(type.GetDocumentation(MEMBERID_NIL, name.out(), nullptr, nullptr, nullptr));
  return narrow(name.view());
}

std::string identifierOf(ITypeInfo& type) {
  OLECHAR text[39] = {};
  StringFromGUID2(Attributes(type)->guid, text, static_cast<int>(std::size(text)));
  return narrow(text);
}

ComPtr<ITypeInfo> referred(ITypeInfo& type, HREFTYPE reference) {
  ComPtr<ITypeInfo> found;
  check(type.GetRefTypeInfo(reference, found.out()));
  return found;
}

std::string typeName(ITypeInfo& type, const TYPEDESC& description) {
  static const std::map<VARTYPE, const char*> names = {
      {VT_R8, "double"},           {VT_I4, "LONG"},           {VT_INT, "INT"},        {VT_UI1, "BYTE"},
      {VT_UI4, "DWORD"},           {VT_BOOL, "VARIANT_BOOL"}, {VT_BSTR, "BSTR"},      {VT_VARIANT, "VARIANT"},
      {VT_DISPATCH, "IDispatch*"}, {VT_UNKNOWN, "IUnknown*"}, {VT_LPWSTR, "LPOLESTR"}};
  if (description.vt == VT_PTR) return typeName(type, *description.lptdesc) + "*";
  if (description.vt == VT_USERDEFINED) return nameOf(*referred(type, description.hreftype).get());
  return names.at(description.vt);
}

void printFunction(const std::string& owner, bool dual, ITypeInfo& type, const FUNCDESC& function) {
  BSTR names[20] = {};
  UINT count = 0;
  check(type.GetNames(function.memid, names, std::size(names), &count));
  std::cout << owner << " "
            << (function.invkind == INVOKE_PROPERTYGET   ? "get "
                : function.invkind == INVOKE_PROPERTYPUT ? "put "
                                                         : "method ")
            << narrow(viewOf(names[0])) << " " << function.memid;
  if (!dual) std::cout << " not-dual";
  if (function.wFuncFlags & FUNCFLAG_FRESTRICTED) std::cout << " restricted";
  for (UINT i = 0; i < static_cast<UINT>(function.cParams); ++i) {
    const ELEMDESC& parameter = function.lprgelemdescParam[i];
    const USHORT flags = parameter.paramdesc.wParamFlags;
    std::cout << (flags & PARAMFLAG_FRETVAL ? " result:"
                  : flags & PARAMFLAG_FOUT  ? " out:"
                                            : " in:")
              << typeName(type, parameter.tdesc) << ":" << (i + 1 < count ? narrow(viewOf(names[i + 1])) : "value");
  }
  std::cout << "\n";
  for (UINT i = 0; i < count; ++i) SysFreeString(names[i]);
}

void printInterface(const std::string& className, ITypeInfo& type) {
  const std::string owner = className + " " + nameOf(type);
  std::cout << owner << " " << identifierOf(type) << "\n";
  ComPtr<ITypeInfo> table(&type);
  const bool dual = Attributes(type)->wTypeFlags & TYPEFLAG_FDUAL;
  if (dual) {
    // It is listed as it is for late binding; its virtual table has all parameters.
    HREFTYPE reference = 0;
    check(type.GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    table = referred(type, reference);
  }
  for (UINT i = 0; i < Attributes(*table.get())->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    check(table->GetFuncDesc(i, &function));
    printFunction(owner, dual, *table.get(), *function);
    table->ReleaseFuncDesc(function);
  }
}

void printLibrary(const std::filesystem::path& module) {
  ComPtr<ITypeLib> library;
  check(LoadTypeLibEx(module.c_str(), REGKIND_NONE, library.out()));
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> type;
    check(library->GetTypeInfo(i, type.out()));
    const Attributes attributes(*type.get());
    if (attributes->typekind != TKIND_COCLASS) continue;
    std::cout << nameOf(*type.get()) << " " << identifierOf(*type.get()) << "\n";
    for (UINT face = 0; face < attributes->cImplTypes; ++face) {
      HREFTYPE reference = 0;
      check(type->GetRefTypeOfImplType(face, &reference));
      printInterface(nameOf(*type.get()), *referred(*type.get(), reference).get());
    }
  }
}

}  // namespace
}  // namespace qs::test

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: type_library_text MODULE\n";
    return 2;
  }
  try {
    qs::test::printLibrary(argv[1]);
  } catch (const qs::CQSCOMError& error) {
    std::cerr << "type_library_text: " << argv[1] << ": result " << std::hex << error.result() << "\n";
    return 1;
  }
}
