#include "bank/source.h"

#include <utility>

namespace qs::bank {

std::vector<database::CompoundData> compoundsOf(Source source) {
  std::vector<database::CompoundData> compounds;
  for (Compound& compound : source.compounds) compounds.push_back(std::move(compound.data));
  return compounds;
}

}  // namespace qs::bank
