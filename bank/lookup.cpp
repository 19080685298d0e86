#include "bank/lookup.h"

#include <algorithm>
#include <string>

#include "bank/names.h"

namespace qs::bank {
namespace {

using database::CompoundData;

template <class Test>
std::vector<const Compound*> matching(const Source& source, Test test) {
  std::vector<const Compound*> found;
  for (const Compound& compound : source.compounds)
    if (test(compound.data)) found.push_back(&compound);
  return found;
}

// Whether the number is the text or one of the names, in lower case, passes a test.
template <class Test>
bool isCalled(const CompoundData& compound, const std::string& text, Test test) {
  const auto passes = [&](const std::string& name) { return test(lower(name)); };
  return std::to_string(compound.number) == text || passes(compound.name) || passes(compound.iupacName) ||
         passes(compound.cas) || std::ranges::any_of(compound.synonyms, passes);
}

}  // namespace

std::vector<const Compound*> compoundsNamed(const Source& source, std::string_view text) {
  if (text.empty()) return {};
  return matching(source, [wanted = lower(text)](const CompoundData& compound) {
    return isCalled(compound, wanted, [&](const std::string& name) { return name == wanted; });
  });
}

std::vector<const Compound*> compoundsLike(const Source& source, std::string_view text) {
  if (text.empty()) return {};
  return matching(source, [wanted = lower(text)](const CompoundData& compound) {
    return isCalled(compound, wanted, [&](const std::string& name) { return name.find(wanted) != name.npos; }) ||
           lower(compound.formula) == wanted;
  });
}

}  // namespace qs::bank
