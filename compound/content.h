// Everything that a compound holds.
#pragma once

#include <memory>

#include "compound/identity.h"
#include "compound/property_table.h"
#include "compound/user_properties.h"
#include "persist/database_catalogue.h"
#include "persist/provenance_file.h"

namespace qs {

// The record of a database that a compound was filled from; without a build it is not known.
struct DatabaseRecord {
  std::shared_ptr<const database::Build> build;
  LONG compound = 0;

  // Where the database's values come from; nothing when that is not known, or not of this build.
  std::optional<database::ProvenanceFile> openProvenance() const;
  // Where a property's content comes from, by the file above for the database's.
  ValueSource sourceOf(WideView name, const CQSAbstractProp& property,
                       const std::optional<database::ProvenanceFile>& provenance) const;
};
static_assert(sizeof(DatabaseRecord) <= 32, "all that sources cost a compound that nobody asks");

// Whoever replaces a content keeps the old one to the end of the call: the last release of a component may call back,
// and must find the new.
struct CompoundContent {
  Identity identity;
  PropertyTable properties;
  UserProperties userProperties;
  DatabaseRecord record;

  // Duplicates of everything; external components are shared.
  CompoundContent copy() const;

  bool hasProperties() const { return !properties.empty() || !userProperties.empty(); }
};

}  // namespace qs
