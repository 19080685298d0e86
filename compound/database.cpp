// Filling a compound from the pure-component database.
#include <algorithm>

#include "compound/compound.h"
#include "persist/database_record.h"
#include "props/forms.h"

namespace qs {
namespace {

// The identity field that a field of a data record fills.
template <class T>
struct IdentityPlace {
  WideView name;
  T Identity::*field;
};
constexpr IdentityPlace<Bstr> kTexts[] = {
#define BANK_TEXT(key, field, record_name, size, member) {OLESTR(record_name), &Identity::field},
#include "props/identity.def"
};
constexpr IdentityPlace<INT> kLongIntegers[] = {
#define BANK_LONG(key, field, record_name, member) {OLESTR(record_name), &Identity::field},
#include "props/identity.def"
};
constexpr IdentityPlace<INT> kShortIntegers[] = {
#define BANK_SHORT(key, field, type, record_name, member) {OLESTR(record_name), &Identity::field},
#include "props/identity.def"
};

}  // namespace

// Stores each field of a data record under its name; names that a compound has no place for are skipped.
class RecordReceiver final : public database::RecordSink {
 public:
  explicit RecordReceiver(CompoundContent& content) : content_(content) {}

  void shortInteger(const database::Field& field, std::int16_t value) override {
    put(kShortIntegers, field.name, value);
  }
  void longInteger(const database::Field& field, std::int32_t value) override { put(kLongIntegers, field.name, value); }

  void number(const database::Field& field, double value) override { store(field.name, newPoint(field.name, value)); }

  void text(const database::Field& field, WideView value) override { put(kTexts, field.name, value); }

  void groups(const database::Field& field, std::span<const database::GroupCount> values) override {
    if (field.name != OLESTR("UNIFAC")) return;
    content_.identity.groupCount = static_cast<INT>(values.size());
    content_.identity.groupTypes.clear();
    content_.identity.groupCounts.clear();
    for (const auto& [type, count] : values) {
      content_.identity.groupTypes.push_back(type);
      content_.identity.groupCounts.push_back(count);
    }
  }

  void equation(const database::Field& field, const database::EquationField& value) override {
    storeEquation(field.name, value);
    if (field.name != OLESTR("IGH")) return;

    // The heat capacity is the derivative of the enthalpy, the entropy the integral of heat capacity over temperature.
    database::EquationField derived = value;
    derived.xShape = derived.yShape = COMx;
    derived.xPower = derived.yPower = 1.0;
    derived.fromOldShapes = false;
    const bool isVoid = value.shape == PropCurveVoid;
    derived.shape = isVoid ? PropCurveVoid : PropCurveVELDB9;
    storeEquation(OLESTR("IGCP"), derived);
    derived.shape = isVoid ? PropCurveVoid : PropCurveVELDB10;
    storeEquation(OLESTR("IGS"), derived);
  }

 private:
  template <class T, std::size_t size, class Value>
  void put(const IdentityPlace<T> (&places)[size], WideView name, Value value) {
    for (const IdentityPlace<T>& place : places)
      if (place.name == name) content_.identity.*place.field = T(value);
  }

  void store(WideView name, PropertyPtr property) {
    content_.properties.AddPropertyToMap(name, findKey(name).has_value(), property);
  }

  void storeEquation(WideView name, const database::EquationField& field) {
    // A form that is not known leaves the property without a value.
    const LONG shape = findForm(LONG{field.shape}) ? field.shape : PropCurveVoid;
    // Coefficients that a form needs beyond those of the field count as zero.
    std::array<double, kMostCoefficients> coefficients{};
    std::copy_n(field.coefficients.begin(), std::min(field.coefficients.size(), coefficients.size()),
                coefficients.begin());
    PropertyPtr equation = newEquation(name, {shape, field.tMin, field.tMax, field.pMin, field.pMax, coefficients});
    equation->SetXYShape(field.xShape, field.yShape);
    equation->SetXYPow(field.xPower, field.yPower);
    if (field.fromOldShapes && field.xShape == COMxr) equation->SetXYNorm(molecularWeight(), 1.0);
    store(name, std::move(equation));
  }

  double molecularWeight() const {
    const CQSAbstractProp* weight = content_.properties[Key::MW];
    return weight ? COQSCompound::standardValue(*weight) : kEmptyValue;
  }

  CompoundContent& content_;
};

HRESULT COQSCompound::Init(BSTR directory, INT number) noexcept {
  return guarded([&] {
    const CompoundContent old = std::exchange(content_, CompoundContent());
    content_.identity.velcorinId = number;
    content_.identity.compoundIndex = number;

    const auto database = database::openDatabase(viewOf(directory));
    const database::Catalogue& catalogue = *database.catalogue;
    const auto record = catalogue.dataRecordOf(number);
    if (!record) return S_FALSE;

    RecordReceiver receiver(content_);
    check(database::readRecord(database, *record, receiver));
    if (!content_.properties[Key::PRPVOLT]) {
      const CQSAbstractProp* volume = content_.properties[Key::SRKVC];
      PropertyPtr acentric = newPoint(nameOf(Key::COSTALDACEN), volume ? standardValue(*volume) : kEmptyValue);
      content_.properties.AddPropertyToMap(nameOf(Key::COSTALDACEN), true, acentric);
    }

    content_.identity.synonymCount = 0;
    for (const database::Synonym& synonym : catalogue.synonymsOf(number)) {
      const Bstr text(catalogue.synonymText(synonym));
      if (content_.identity.putSynonym(content_.identity.synonymCount, text.get()) != S_OK) break;
    }
    return S_OK;
  });
}

}  // namespace qs
