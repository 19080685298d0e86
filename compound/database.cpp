// Filling a compound from the pure-component database.
#include <algorithm>
#include <array>

#include "compound/compound.h"
#include "persist/database_record.h"
#include "props/forms.h"

namespace qs {
namespace {

// What a data record fills of an identity, in the order of IdentityField; null for fields of another type.
template <class T>
using IdentityPlaces = std::array<T Identity::*, kIdentityNames.size()>;

constexpr IdentityPlaces<Bstr> kTexts = [] {
  IdentityPlaces<Bstr> places{};
#define BANK_TEXT(key, field, record_name, size, member) \
  places[static_cast<std::size_t>(IdentityField::key)] = &Identity::field;
#include "props/identity.def"
  return places;
}();

constexpr IdentityPlaces<INT> kIntegers = [] {
  IdentityPlaces<INT> places{};
#define BANK_LONG(key, field, record_name, member) \
  places[static_cast<std::size_t>(IdentityField::key)] = &Identity::field;
#define BANK_SHORT(key, field, type, record_name, member) \
  places[static_cast<std::size_t>(IdentityField::key)] = &Identity::field;
#include "props/identity.def"
  return places;
}();

}  // namespace

// Stores each field of a data record under its name; names that a compound has no place for are skipped.
class RecordReceiver final : public database::RecordSink {
 public:
  explicit RecordReceiver(CompoundContent& content) : content_(content) {}

  void shortInteger(const database::Field& field, std::int16_t value) override { put(kIntegers, field, value); }
  void longInteger(const database::Field& field, std::int32_t value) override { put(kIntegers, field, value); }

  void number(const database::Field& field, double value) override {
    store(field.key, field.name, newPoint(nameFrom(field.key, field.name), value));
  }

  void text(const database::Field& field, WideView value) override { put(kTexts, field, value); }

  void groups(const database::Field& field, std::span<const database::GroupCount> values) override {
    if (!field.groups) return;
    content_.identity.groupCount = static_cast<INT>(values.size());
    for (auto* numbers : {&content_.identity.groupTypes, &content_.identity.groupCounts}) {
      numbers->clear();
      numbers->reserve(values.size());
    }
    for (const auto& [type, count] : values) {
      content_.identity.groupTypes.push_back(type);
      content_.identity.groupCounts.push_back(count);
    }
  }

  void equation(const database::Field& field, const database::EquationField& value) override {
    storeEquation(field.key, field.name, value);
    if (field.key != Key::IGH) return;

    // The heat capacity is the derivative of the enthalpy, the entropy the integral of heat capacity over temperature.
    database::EquationField derived = value;
    derived.xShape = derived.yShape = COMx;
    derived.xPower = derived.yPower = 1.0;
    derived.fromOldShapes = false;
    const bool isVoid = value.shape == PropCurveVoid;
    derived.shape = isVoid ? PropCurveVoid : PropCurveVELDB9;
    storeEquation(Key::IGCP, nameOf(Key::IGCP), derived);
    derived.shape = isVoid ? PropCurveVoid : PropCurveVELDB10;
    storeEquation(Key::IGS, nameOf(Key::IGS), derived);
  }

 private:
  template <class T, class Value>
  void put(const IdentityPlaces<T>& places, const database::Field& field, Value value) {
    if (field.identity) content_.identity.*places[static_cast<std::size_t>(*field.identity)] = T(value);
  }

  // A key is that of the name, and known without a search.
  static PropertyName nameFrom(std::optional<Key> key, WideView name) { return key ? PropertyName(*key) : name; }

  void store(std::optional<Key> key, WideView name, PropertyPtr property) {
    property->setOfDatabase();
    if (key)
      content_.properties.set(*key, std::move(property));
    else
      content_.properties.AddPropertyToMap(name, false, property);
  }

  void storeEquation(std::optional<Key> key, WideView name, const database::EquationField& field) {
    // A form that is not known leaves the property without a value.
    const LONG shape = findForm(LONG{field.shape}) ? field.shape : PropCurveVoid;
    // Coefficients that a form needs beyond those of the field count as zero.
    std::array<double, kMostCoefficients> coefficients{};
    std::copy_n(field.coefficients.begin(), std::min(field.coefficients.size(), coefficients.size()),
                coefficients.begin());
    PropertyPtr equation =
        newEquation(nameFrom(key, name), {shape, field.tMin, field.tMax, field.pMin, field.pMax, coefficients});
    equation->SetXYShape(field.xShape, field.yShape);
    equation->SetXYPow(field.xPower, field.yPower);
    if (field.fromOldShapes && field.xShape == COMxr) equation->SetXYNorm(molecularWeight(), 1.0);
    store(key, name, std::move(equation));
  }

  double molecularWeight() const {
    const CQSAbstractProp* weight = content_.properties[Key::MW];
    return weight ? COQSCompound::standardValue(*weight) : kEmptyValue;
  }

  CompoundContent& content_;
};

HRESULT COQSCompound::Init(BSTR directory, INT number) noexcept {
  return guardedLookUp([&] {
    const CompoundContent old = std::move(content_);
    content_.identity = Identity();
    content_.identity.velcorinId = number;
    content_.identity.compoundIndex = number;
    content_.record = {};

    const auto database = database::openDatabase(viewOf(directory));
    const database::Catalogue& catalogue = *database.catalogue;
    const auto record = catalogue.dataRecordOf(number);
    if (!record) return because(S_FALSE, {catalogue.indexPath(), ": there is no compound ", number});

    content_.record = {catalogue.sharedBuild(), number};
    RecordReceiver receiver(content_);
    check(also(database::readRecord(database, *record, receiver), {" (compound ", number, ")"}));
    if (!content_.properties[Key::PRPVOLT]) {
      const CQSAbstractProp* volume = content_.properties[Key::SRKVC];
      const double acentric = volume ? standardValue(*volume) : kEmptyValue;
      content_.properties.set(Key::COSTALDACEN, newPoint(Key::COSTALDACEN, acentric));
    }

    const auto found = catalogue.synonymsOf(number);
    std::vector<Bstr>& synonyms = content_.identity.synonyms;
    synonyms.reserve(std::min(found.size(), kMostSynonyms));
    content_.identity.synonymCount = 0;
    for (const database::Synonym& synonym : found) {
      Bstr text(catalogue.synonymText(synonym));
      if (synonyms.size() == kMostSynonyms) break;
      synonyms.push_back(std::move(text));
      ++content_.identity.synonymCount;
    }
    return S_OK;
  });
}

}  // namespace qs
