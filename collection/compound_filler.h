// Fills a compound from a loader, through public interfaces on both sides.
#pragma once

#include <functional>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace qs {

// The text of an identity field, by the names that ICompoundProp::GetCommonPropertyName gives; null when the field or
// its value is not known.
Bstr identityText(IUnknown* compound, WideView field);

// Where a value of a compound comes from: the name of a loader or an estimator, the component, and for a loader the
// field and the text by which it knows the compound.
struct ValueOrigin {
  BSTR name;
  IUnknown* component;
  BSTR searchKey = nullptr, id = nullptr;
};

// The loader finds the compound by the text `id` in the field `searchKey`; the filler owns none of its strings and
// pointers. A property is stored under its name, with the loader's name and with its source where the loader has
// it; one with the name of an identity field goes there. What the loader returns S_FALSE for, and what a compound has
// no place for, is skipped. Throws CQSCOMError with the failure of any call, and E_FAIL for a loader whose list of
// properties does not end; the compound is then partly filled.
class CompoundFiller {
 public:
  struct Source {
    ILoad* loader;
    BSTR loaderName, searchKey, id;
  };
  CompoundFiller(const Source& source, IBasicCompound* compound) : source_(source), compound_(compound) {}

  // Properties and synonyms; S_FALSE when the loader has none.
  HRESULT fillAll();

  // One property or identity field, or the synonyms as "SynonymName"; S_FALSE when the loader lacks it.
  HRESULT fillProperty(BSTR name);

 private:
  // Whether the loader has what it was asked for; its failure is raised.
  bool isThere(HRESULT result, BSTR name) const;
  HRESULT nothing(WideView name) const;
  bool fill(BSTR name, tagPropTypeEnum type);
  bool fillSingleValue(BSTR name, tagPropTypeEnum type);
  bool fillEquation(BSTR name);
  bool fillComponent(BSTR name);
  bool fillIntegers(BSTR name);
  bool fillReals(BSTR name);
  bool fillSynonyms();
  bool storeNumber(BSTR name, double value);
  ValueOrigin origin() const { return {source_.loaderName, source_.loader, source_.searchKey, source_.id}; }

  const Source source_;
  IBasicCompound* const compound_;
};

// Stores a number under a fixed key or another name, and where it comes from. Returns the result of SetPointProperty.
// Throws CQSCOMError.
HRESULT storePoint(IUnknown* compound, BSTR name, double value, const ValueOrigin& origin);

ComPtr<IBasicCompound> newCompound();

// Makes one compound a copy of another under an index. Throws CQSCOMError.
void copyCompound(IBasicCompound* from, IBasicCompound* to, INT index);

// Whether the compound can be copied: it is one of this module.
bool isCopyable(IBasicCompound* compound);

// Runs `change` on a copy of a compound. When that returns S_OK the compound becomes like the copy, but for the index;
// otherwise nothing has changed. Throws CQSCOMError: E_NOINTERFACE for a compound that cannot be copied.
HRESULT changeAsCopy(IBasicCompound* compound, const std::function<HRESULT(IBasicCompound*)>& change);

}  // namespace qs
