// What phases expect of a host: numbers for the names of their properties, and something to do to every phase. Both
// classes are for hosts to start from.
#pragma once

#include <vector>

#include "automation/coclass.h"
#include "platform/text.h"

namespace qs::hostkit {

// Numbers names from 1 in the order of their first registration.
class PropertyRegistry final : public Coclass<PropertyRegistry, IEnumeratedPropertyRegistry> {
 public:
  STDMETHODIMP GetNumberOfProperties(LONG* count) noexcept override;
  // A new string; S_FALSE and null for a number that was not given.
  STDMETHODIMP GetPropertyName(LONG number, BSTR* name) noexcept override;
  STDMETHODIMP RegisterProperty(BSTR name, LONG* number) noexcept override;

 private:
  std::vector<WideString> names_;
};

// Makes every phase that it is applied to an active one.
class PhaseActivator final : public Coclass<PhaseActivator, IPhaseCollectionActor> {
 public:
  STDMETHODIMP Act(IBasicPhase* phase) noexcept override;
};

}  // namespace qs::hostkit
