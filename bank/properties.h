// Properties of compounds in memory as a database of them gives them to hosts.
#pragma once

#include "persist/database_writer.h"
#include "props/new_property.h"

namespace qs::bank {

// Null where the compound has no such value, or an equation that no database can hold: without a form, or with too few
// coefficients. IGCP and IGS follow from IGH where the compound has none of its own.
PropertyPtr propertyOf(const database::CompoundData& compound, Key key);

}  // namespace qs::bank
