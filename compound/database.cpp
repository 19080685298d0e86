// Filling a compound from the pure-component database.
#include <algorithm>

#include "compound/compound.h"
#include "compound/new_property.h"
#include "persist/database_record.h"
#include "props/forms.h"

namespace qs {

// Puts each field of a data record where its name belongs; names that a compound has no place for are passed over.
class RecordReceiver final : public database::RecordSink {
 public:
  explicit RecordReceiver(COQSCompound& compound) : identity_(compound.identity_), properties_(compound.properties_) {}

  void shortInteger(const database::Field& field, std::int16_t value) override {
    if (field.name == OLESTR("NonCondensable"))
      identity_.nonCondensable = value;
    else if (field.name == OLESTR("Family"))
      identity_.family = value;
  }

  void longInteger(const database::Field& field, std::int32_t value) override {
    if (field.name == OLESTR("PPkg"))
      identity_.ppAttribute = value;
    else if (field.name == OLESTR("DIPPRID"))
      identity_.dipprId = value;
    else if (field.name == OLESTR("DDBID"))
      identity_.ddbId = value;
    else if (field.name == OLESTR("PPDSID"))
      identity_.ppdsId = value;
    else if (field.name == OLESTR("CMAID"))
      identity_.cmaId = value;
  }

  void number(const database::Field& field, double value) override { store(field.name, newPoint(field.name, value)); }

  void text(const database::Field& field, WideView value) override {
    if (field.name == OLESTR("PName"))
      identity_.name = Bstr(value);
    else if (field.name == OLESTR("CName"))
      identity_.iupacName = Bstr(value);
    else if (field.name == OLESTR("Formula"))
      identity_.chemicalFormula = Bstr(value);
    else if (field.name == OLESTR("CASN"))
      identity_.casNumber = Bstr(value);
  }

  void groups(const database::Field& field, std::span<const database::GroupCount> values) override {
    if (field.name != OLESTR("UNIFAC")) return;
    identity_.groupCount = static_cast<INT>(values.size());
    identity_.groupTypes.clear();
    identity_.groupCounts.clear();
    for (const auto& [type, count] : values) {
      identity_.groupTypes.push_back(type);
      identity_.groupCounts.push_back(count);
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
  void store(WideView name, PropertyPtr property) {
    properties_.AddPropertyToMap(name, findKey(name).has_value(), property);
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
    const CQSAbstractProp* weight = properties_[Key::MW];
    return weight ? COQSCompound::standardValue(*weight) : kEmptyValue;
  }

  Identity& identity_;
  PropertyTable& properties_;
};

HRESULT COQSCompound::Init(BSTR directory, INT number) noexcept {
  return guarded([&] {
    clear();
    identity_.velcorinId = number;
    identity_.compoundIndex = number;

    const auto catalogue = database::openCatalogue(viewOf(directory));
    const auto record = catalogue->dataRecordOf(number);
    if (!record) return S_FALSE;

    RecordReceiver receiver(*this);
    check(database::readRecord(*catalogue, *record, receiver));
    if (!properties_[Key::PRPVOLT]) {
      const CQSAbstractProp* volume = properties_[Key::SRKVC];
      PropertyPtr acentric = newPoint(nameOf(Key::COSTALDACEN), volume ? standardValue(*volume) : kEmptyValue);
      properties_.AddPropertyToMap(nameOf(Key::COSTALDACEN), true, acentric);
    }

    identity_.synonymCount = 0;
    for (const database::Synonym& synonym : catalogue->synonymsOf(number)) {
      const Bstr text(catalogue->synonymText(synonym));
      if (identity_.putSynonym(identity_.synonymCount, text.get()) != S_OK) break;
    }
    return S_OK;
  });
}

}  // namespace qs
