#include "bank/source.h"

#include <utility>

#include "platform/text.h"

namespace qs::bank {

bool hasValue(const database::CompoundData& compound, Key key) {
  return compound.constants.contains(key) || compound.correlations.contains(key);
}

std::vector<database::CompoundData> compoundsOf(Source source) {
  std::vector<database::CompoundData> compounds;
  for (Compound& compound : source.compounds) compounds.push_back(std::move(compound.data));
  return compounds;
}

database::Annotations annotationsOf(const Source& source) {
  database::Annotations annotations{
      source.description, source.origins, source.identityOrigins, {source.waivers.begin(), source.waivers.end()}, {}};
  for (const Compound& compound : source.compounds) {
    for (const auto& [key, provenance] : compound.provenance)
      if (hasValue(compound.data, key) && provenance != database::Provenance())
        annotations.values.push_back({compound.data.number, narrow(nameOf(key)), provenance});
  }
  return annotations;
}

database::DatabaseFiles encode(Source source) {
  const database::Annotations annotations = annotationsOf(source);
  return database::encodeDatabase(compoundsOf(std::move(source)), annotations);
}

}  // namespace qs::bank
