// Everything that a compound holds.
#pragma once

#include "compound/identity.h"
#include "compound/property_table.h"
#include "compound/user_properties.h"

namespace qs {

// Whoever replaces a content keeps the old one to the end of the call: the last release of a component may call back,
// and must find the new.
struct CompoundContent {
  Identity identity;
  PropertyTable properties;
  UserProperties userProperties;

  // Duplicates of everything; external components are shared.
  CompoundContent copy() const;

  bool hasProperties() const { return !properties.empty() || !userProperties.empty(); }
};

}  // namespace qs
