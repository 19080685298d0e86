// The compounds as scripts see them: by position or by a text, and one after the other.
#include "automation/enumerator.h"
#include "automation/script_values.h"
#include "collection/collection.h"
#include "com/bstr.h"
#include "com/query.h"
#include "persist/database_catalogue.h"

namespace qs {
namespace {

bool isText(HRESULT result, const Bstr& found, WideView text) {
  check(result);
  return result == S_OK && found && database::sameName(found.view(), text);
}

// What a compound may be known by.
constexpr bool (*kKnownBy[])(ICompoundID*, WideView) = {
    [](ICompoundID* identity, WideView text) {
      Bstr name;
      return isText(identity->get_Name(name.out()), name, text);
    },
    [](ICompoundID* identity, WideView text) {
      Bstr number;
      return isText(identity->get_CASN(number.out()), number, text);
    },
    [](ICompoundID* identity, WideView text) {
      INT synonyms = 0;
      check(identity->get_NumberOfSynonymNames(&synonyms));
      for (INT i = 0; i < synonyms; ++i) {
        Bstr synonym;
        const HRESULT result = identity->get_SynonymName(i, synonym.out());
        if (isText(result, synonym, text)) return true;
        if (result != S_OK) break;
      }
      return false;
    },
};

}  // namespace

HRESULT COQSCompoundCollection::get_Item(VARIANT index, IDispatch** compound) noexcept {
  if (!compound) return report(E_POINTER);
  *compound = nullptr;
  const VARIANT& given = behind(index);
  if (given.vt != VT_BSTR)
    return guarded([&] {
      const auto position = positionFrom(given);
      return position ? get_Compound(*position, compound) : S_FALSE;
    });
  return guardedLookUp([&] {
    // Compounds of a host may call back and change the list.
    for (const auto isKnownBy : kKnownBy) {
      for (INT i = 0; i < count(); ++i) {
        ComPtr<IDispatch> candidate;
        check(get_Compound(i, candidate.out()));
        const auto identity = implemented<ICompoundID>(candidate.get());
        if (!identity || !isKnownBy(identity.get(), viewOf(given.bstrVal))) continue;
        *compound = candidate.release();
        return S_OK;
      }
    }
    return because(S_FALSE, {"no compound is known as \"", given.bstrVal, "\""});
  });
}

HRESULT COQSCompoundCollection::get_Count(LONG* number) noexcept {
  if (!number) return report(E_POINTER);
  *number = count();
  return S_OK;
}

HRESULT COQSCompoundCollection::get__NewEnum(IUnknown** enumerator) noexcept {
  return newEnumerator(ItemsOf{ComPtr<IItems>(this)}, enumerator);
}

}  // namespace qs
