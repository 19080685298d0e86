// Which compounds of a database have a text in a field.
#include <algorithm>
#include <utility>
#include <vector>

#include "collection/collection.h"
#include "com/host_arrays.h"
#include "persist/database_record.h"
#include "platform/number_text.h"

namespace qs {
namespace {

WideView withoutTrailingBlanks(WideView text) { return text.substr(0, text.find_last_not_of(OLESTR(' ')) + 1); }

bool sameText(WideView a, WideView b) { return withoutTrailingBlanks(a) == withoutTrailingBlanks(b); }

// Compares one field of a record with a text: a text by its characters, a number by the number in the text.
class FieldMatch final : public database::RecordSink {
 public:
  FieldMatch(WideView text, bool anyCase) : text_(text), narrow_(narrow(text)), anyCase_(anyCase) {}

  // Whether the field matched that was delivered since the last call.
  bool takeMatch() { return std::exchange(matches_, false); }

  void shortInteger(const database::Field&, std::int16_t value) override { compareInteger(value); }
  void longInteger(const database::Field&, std::int32_t value) override { compareInteger(value); }
  void number(const database::Field&, double value) override {
    matches_ = !narrow_.empty() && value == readDouble(narrow_);
  }
  void text(const database::Field&, WideView value) override {
    matches_ = anyCase_ ? database::sameName(value, text_) : sameText(value, text_);
  }
  void groups(const database::Field&, std::span<const database::GroupCount>) override {}
  void equation(const database::Field&, const database::EquationField&) override {}

 private:
  void compareInteger(std::int32_t value) {
    std::string digits;
    appendInteger(digits, value);
    matches_ = digits == narrow_;
  }

  const WideView text_;
  const std::string narrow_;
  const bool anyCase_;
  bool matches_ = false;
};

bool hasSynonym(const database::Catalogue& catalogue, LONG compound, WideView text) {
  return std::ranges::any_of(catalogue.synonymsOf(compound), [&](const database::Synonym& synonym) {
    return database::sameName(catalogue.synonymText(synonym), text);
  });
}

std::vector<LONG> matchingCompounds(const database::Database& database, WideView fieldName, WideView text) {
  const database::Catalogue& catalogue = *database.catalogue;
  const bool names = fieldName == OLESTR("PName") || fieldName == OLESTR("CName");
  const std::vector<database::CompoundRecord> compounds = catalogue.compounds();
  std::vector<bool> matches(compounds.size());
  if (names || fieldName == OLESTR("Synonym")) {
    const std::vector<LONG> candidates = catalogue.candidatesBySynonym(text);
    for (std::size_t i = 0; i < compounds.size(); ++i)
      matches[i] = std::ranges::binary_search(candidates, compounds[i].compound) &&
                   hasSynonym(catalogue, compounds[i].compound, text);
  }
  const auto field = std::ranges::find(catalogue.fields(), fieldName, &database::Field::name);
  if (field != catalogue.fields().end()) {
    std::vector<database::CompoundRecord> others;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < compounds.size(); ++i) {
      if (matches[i]) continue;
      others.push_back(compounds[i]);
      places.push_back(i);
    }
    FieldMatch match(text, names);
    check(database::readField(database, others, *field, match,
                              [&](std::size_t i) { matches[places[i]] = match.takeMatch(); }));
  }
  std::vector<LONG> found;
  for (std::size_t i = 0; i < compounds.size(); ++i)
    if (matches[i]) found.push_back(compounds[i].compound);
  return found;
}

}  // namespace

HRESULT COQSCompoundCollection::GetVelIDs(BSTR directory, BSTR field, BSTR text, IIntegerArrayDisp** numbers) noexcept {
  if (!numbers) return report(E_POINTER);
  *numbers = nullptr;
  if (!field || !text) return report(S_FALSE, {"the field or the text is null"});
  return guardedLookUp([&] {
    const auto database = database::openDatabase(viewOf(directory));
    const std::vector<LONG> found = matchingCompounds(database, viewOf(field), viewOf(text));
    if (found.empty())
      return because(S_FALSE,
                     {database.catalogue->indexPath(), ": no compound has \"", text, "\" in the field ", field});
    *numbers = newIntegerArray(found).release();
    return S_OK;
  });
}

}  // namespace qs
