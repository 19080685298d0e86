// Two components that hosts bring for phases: a registry that numbers the names of properties, and an actor that is
// applied to every phase. Hosts may start from them.
#pragma once

#include <vector>

#include "automation/coclass.h"
#include "platform/text.h"

namespace qs::hostkit {

// Numbers names from 1 in the order of their first registration.
class PropertyRegistry final : public Coclass<PropertyRegistry, IEnumeratedPropertyRegistry> {
 public:
  STDMETHODIMP GetNumberOfProperties(LONG* count) noexcept override;
  // A new string; S_FALSE and null for a number that no name has.
  STDMETHODIMP GetPropertyName(LONG number, BSTR* name) noexcept override;
  STDMETHODIMP RegisterProperty(BSTR name, LONG* number) noexcept override;

 private:
  std::vector<WideString> names_;
};

// Makes each phase an active one.
class PhaseActivator final : public Coclass<PhaseActivator, IPhaseCollectionActor> {
 public:
  STDMETHODIMP Act(IBasicPhase* phase) noexcept override;
};

}  // namespace qs::hostkit
