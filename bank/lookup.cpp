#include "bank/lookup.h"

#include <algorithm>
#include <string>

namespace qs::bank {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool alike(char a, char b) { return lower(a) == lower(b); }

bool isText(std::string_view whole, std::string_view text) { return std::ranges::equal(whole, text, alike); }
bool hasText(std::string_view whole, std::string_view text) {
  return std::search(whole.begin(), whole.end(), text.begin(), text.end(), alike) != whole.end();
}

template <class Test>
std::vector<const Compound*> matching(const Source& source, Test test) {
  std::vector<const Compound*> found;
  for (const Compound& compound : source.compounds)
    if (test(compound.data)) found.push_back(&compound);
  return found;
}

bool isCalled(const database::CompoundData& compound, std::string_view text,
              bool (*test)(std::string_view, std::string_view)) {
  return std::to_string(compound.number) == text || test(compound.name, text) || test(compound.iupacName, text) ||
         test(compound.cas, text) ||
         std::ranges::any_of(compound.synonyms, [&](const std::string& synonym) { return test(synonym, text); });
}

}  // namespace

std::vector<const Compound*> compoundsNamed(const Source& source, std::string_view text) {
  return matching(source, [&](const auto& compound) { return !text.empty() && isCalled(compound, text, isText); });
}

std::vector<const Compound*> compoundsLike(const Source& source, std::string_view text) {
  return matching(source, [&](const auto& compound) {
    return !text.empty() && (isCalled(compound, text, hasText) || isText(compound.formula, text));
  });
}

}  // namespace qs::bank
