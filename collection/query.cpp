// Which compounds of a database have a text in a field.
#include <algorithm>
#include <set>

#include "collection/collection.h"
#include "com/host_arrays.h"
#include "persist/database_record.h"
#include "platform/number_text.h"

namespace qs {
namespace {

// Names are ASCII.
constexpr OLECHAR lowerCase(OLECHAR c) {
  return c >= OLESTR('A') && c <= OLESTR('Z') ? static_cast<OLECHAR>(c - OLESTR('A') + OLESTR('a')) : c;
}

WideView withoutTrailingBlanks(WideView text) { return text.substr(0, text.find_last_not_of(OLESTR(' ')) + 1); }

bool sameText(WideView a, WideView b) { return withoutTrailingBlanks(a) == withoutTrailingBlanks(b); }

bool sameName(WideView a, WideView b) {
  return std::ranges::equal(withoutTrailingBlanks(a), withoutTrailingBlanks(b), {}, lowerCase, lowerCase);
}

// Compares one field of a record with a text: a text by its characters, a number by the number in the text.
class FieldMatch final : public database::RecordSink {
 public:
  FieldMatch(WideView text, bool anyCase) : text_(text), narrow_(narrow(text)), anyCase_(anyCase) {}

  bool matches() const { return matches_; }

  void shortInteger(const database::Field&, std::int16_t value) override { compareInteger(value); }
  void longInteger(const database::Field&, std::int32_t value) override { compareInteger(value); }
  void number(const database::Field&, double value) override {
    matches_ = !narrow_.empty() && value == readDouble(narrow_);
  }
  void text(const database::Field&, WideView value) override {
    matches_ = anyCase_ ? sameName(value, text_) : sameText(value, text_);
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
  const auto matches = [&](const database::Synonym& synonym) { return sameName(catalogue.synonymText(synonym), text); };
  return std::ranges::any_of(catalogue.synonymsOf(compound), matches);
}

std::vector<LONG> matchingCompounds(const database::Database& database, WideView fieldName, WideView text) {
  const database::Catalogue& catalogue = *database.catalogue;
  const bool names = fieldName == OLESTR("PName") || fieldName == OLESTR("CName");
  const bool synonyms = names || fieldName == OLESTR("Synonym");
  const auto field = std::ranges::find(catalogue.fields(), fieldName, &database::Field::name);
  std::vector<LONG> found;
  std::set<LONG> seen;
  for (std::size_t i = 0; i < catalogue.indexRecordCount(); ++i) {
    const database::IndexRecord record = catalogue.indexRecord(i);
    // A number that occurs twice is the compound of its first record.
    if (!seen.insert(record.compound).second) continue;
    bool matches = synonyms && hasSynonym(catalogue, record.compound, text);
    if (!matches && field != catalogue.fields().end()) {
      FieldMatch match(text, names);
      check(database::readField(database, record.dataRecord, *field, match));
      matches = match.matches();
    }
    if (matches) found.push_back(record.compound);
  }
  return found;
}

}  // namespace

HRESULT COQSCompoundCollection::GetVelIDs(BSTR directory, BSTR field, BSTR text, IIntegerArrayDisp** numbers) noexcept {
  if (!numbers) return E_POINTER;
  *numbers = nullptr;
  if (!field || !text) return S_FALSE;
  return guarded([&] {
    const auto database = database::openDatabase(viewOf(directory));
    const std::vector<LONG> found = matchingCompounds(database, viewOf(field), viewOf(text));
    if (found.empty()) return S_FALSE;
    *numbers = newIntegerArray(found).release();
    return S_OK;
  });
}

}  // namespace qs
