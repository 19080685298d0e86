// Puts any data that a host could into a compound, as a source of random bits chooses.
#pragma once

#include <bit>
#include <cmath>
#include <functional>
#include <utility>

#include "com/bstr.h"
#include "hostkit/module_loader.h"
#include "props/forms.h"
#include "props/key_table.h"

namespace qs::test {

class RandomCompound {
 public:
  // A component with a content, and the name of its class; null for none.
  using NewComponent = std::function<std::pair<IDispatch*, Bstr>(WideView content)>;

  explicit RandomCompound(
      std::function<std::uint64_t()> bits, NewComponent value = [](WideView) { return std::pair(nullptr, Bstr()); },
      NewComponent user = [](WideView) { return std::pair(nullptr, Bstr()); })
      : bits_(std::move(bits)), value_(std::move(value)), user_(std::move(user)) {}

  void fill(IUnknown* compound) {
    identity(*as<ICompoundIDPut>(compound).get(), *as<ICompoundFamilyPut>(compound).get());
    groups(*as<ICompoundUNIFAC1Put>(compound).get());
    for (int i = 0; i < kProperties; ++i) property(compound);
    for (unsigned i = below(3); i > 0; --i) {
      const auto [component, classId] = user_(string().view());
      as<IUserProperty>(compound)->SetUserProperty(string().get(), classId.get(), component);
    }
  }

 private:
  static constexpr int kProperties = 12;

  template <class I>
  static ComPtr<I> as(IUnknown* object) {
    return ComPtr<I>::from(object);
  }

  unsigned below(std::size_t limit) { return static_cast<unsigned>(bits_() % limit); }
  bool sometimes() { return below(4) == 0; }
  INT integer() { return sometimes() ? static_cast<INT>(bits_()) : static_cast<INT>(below(1000)); }
  double real() {
    return sometimes() ? std::bit_cast<double>(bits_()) : std::ldexp(static_cast<double>(bits_() >> 11), -60);
  }
  Bstr string() {
    static constexpr WideView kParts[] = {
        OLESTR("a&<>\"'"), OLESTR("\t"),         OLESTR("\r"),           OLESTR("\n "),    OLESTR("("),    OLESTR(")"),
        OLESTR("]]>"),     OLESTR("\x85\x2028"), OLESTR("\xD83D\xDE00"), OLESTR("Value("), OLESTR("&amp;")};
    WideString text;
    for (unsigned i = below(50); i > 0; --i) text += kParts[below(std::size(kParts))];
    return Bstr(text);
  }

  void identity(ICompoundIDPut& id, ICompoundFamilyPut& family) {
    for (const auto put : {&ICompoundIDPut::put_Name, &ICompoundIDPut::put_CASN, &ICompoundIDPut::put_IUPACName,
                           &ICompoundIDPut::put_ChemicalFormula})
      if (!sometimes()) (id.*put)(string().get());
    for (const auto put : {&ICompoundIDPut::put_PPAttribute, &ICompoundIDPut::put_VelcorinID,
                           &ICompoundIDPut::put_PPDSID, &ICompoundIDPut::put_DDBID, &ICompoundIDPut::put_DIPPRID,
                           &ICompoundIDPut::put_CMAID, &ICompoundIDPut::put_NumberOfSynonymNames})
      if (!sometimes()) (id.*put)(integer());
    if (!sometimes()) id.put_NumberOfSynonymNames(0);
    for (unsigned i = below(70); i > 0; --i)
      id.put_SynonymName(static_cast<INT>(below(70)), sometimes() ? nullptr : string().get());
    if (sometimes()) id.put_NumberOfSynonymNames(static_cast<INT>(below(70)));
    if (!sometimes()) family.put_SubFamily(string().get());
    if (!sometimes()) family.put_NonCondensable(static_cast<VARIANT_BOOL>(below(2)));
    family.put_Family(static_cast<tagCompoundFamilyEnum>(below(14)));
  }

  void groups(ICompoundUNIFAC1Put& unifac) {
    const auto array = host::createInstance<IIntegerArrayDisp>(__uuidof(::HostIntegerArray));
    for (const auto put : {&ICompoundUNIFAC1Put::put_VELUNIFACNoGr, &ICompoundUNIFAC1Put::put_VELUNIFACSubGr}) {
      if (sometimes()) continue;
      const auto size = static_cast<LONG>(below(6));
      array->put_Size(size);
      for (LONG i = 0; i < size; ++i) array->put_IthValue(i, integer());
      (unifac.*put)(size, array.get());
    }
    if (sometimes()) unifac.put_UNIFAC1NumberOfGroups(integer());
  }

  void property(IUnknown* compound) {
    const auto put = as<ICompoundPropPut>(compound);
    const BYTE fixed = static_cast<BYTE>(below(2));
    const Bstr name = fixed == 1 ? Bstr(kKeys[below(kKeys.size())].name) : string();
    const unsigned kind = below(5);
    if (kind == 0) {
      put->SetVoidProperty(name.get(), fixed);
    } else if (kind == 1) {
      put->SetPointProperty(name.get(), fixed, real());
    } else if (kind == 2) {
      const auto [component, className] = value_(string().view());
      put->SetCOMProperty(name.get(), fixed, className.get(), as<IPCProperty>(component).get());
    } else {
      const auto coefficients = host::createInstance<IRealArrayDisp>(__uuidof(::HostRealArray));
      coefficients->put_Size(kMostCoefficients);
      for (LONG i = 0; i < kMostCoefficients; ++i) coefficients->put_IthValue(i, real());
      const auto shape = static_cast<tagEquationShapeEnum>(kEquationForms[below(kEquationForms.size())].shape);
      put->SetEquationProperty(name.get(), fixed, shape, real(), real(), real(), real(), coefficients.get());
      as<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(name.get(), static_cast<tagXYShapeEnum>(below(40)),
                                                                static_cast<tagXYShapeEnum>(below(40)), real(), real(),
                                                                real(), real(), real(), real());
    }
    if (sometimes()) put->SetPropertyLoader(name.get(), string().get());
  }

  std::function<std::uint64_t()> bits_;
  NewComponent value_, user_;
};

}  // namespace qs::test
