// What a compound makes of the fields of a database record, and what is left of it when the files are bad.
#include <gmock/gmock.h>

#include "tests/support/compounds.h"
#include "tests/support/database_builder.h"

namespace qs::test {
namespace {

// One field of a record: its definition and its bytes.
struct FieldBytes {
  Bytes definition;
  Bytes content;
};

FieldBytes number(std::string_view name, double value) {
  return {fieldDefinition(name, 8, "Double"), Bytes().real(value)};
}
FieldBytes text(std::string_view name, std::string_view value) {
  return {fieldDefinition(name, 20, "String"), Bytes().text(value, 20)};
}
FieldBytes shortInteger(std::string_view name, int value) {
  return {fieldDefinition(name, 2, "Short Integer"), Bytes().int16(value)};
}
FieldBytes longInteger(std::string_view name, int value) {
  return {fieldDefinition(name, 4, "Long Integer"), Bytes().int32(value)};
}
FieldBytes equation(std::string_view name, int shape, std::initializer_list<double> coefficients, int xShape = 1,
                    int yShape = 1, double xPower = 1.0) {
  Bytes content = Bytes().int16(shape).reals(coefficients).reals({200.0, 400.0, 1.0, 1000.0});
  content.int16(xShape).int16(yShape).reals({xPower, 1.0}).int16(0).int16(0).int16(0);
  return {fieldDefinition(name, static_cast<std::int64_t>(coefficients.size()), "Equation"), content};
}

class CompoundDatabase : public CompoundTest {
 protected:
  // Writes a database of one compound, number 7, and fills a compound from it.
  void fill(const std::vector<FieldBytes>& fields, double version = 2.0, const std::vector<Bytes>& synonyms = {}) {
    write(fields, version, synonyms);
    ASSERT_EQ(init(7), S_OK);
  }
  void write(const std::vector<FieldBytes>& fields, double version = 2.0, const std::vector<Bytes>& synonyms = {}) {
    std::vector<Bytes> definitions;
    Bytes record = header(version, 78, 0, 0).zerosTo(78);
    for (const FieldBytes& field : fields) {
      definitions.push_back(field.definition);
      record.append(field.content);
    }
    directory.write("purecmp1.idx", indexFile(definitions, {indexRecord(7, 0, "seven")}, synonyms));
    directory.write("purecmp1.dat", record);
  }
  HRESULT init(INT index) { return query<ICompoundInitFromVelDB>(compound)->Init(Bstr(directory.name()).get(), index); }

  struct Value {
    HRESULT result;
    double value;
    bool operator==(const Value&) const = default;
  };
  Value value(WideView name, double temperature = 300.0, double pressure = 50.0) {
    LONG dependencies = 0;
    Value read{0, 0.5};
    read.result = query<ICompoundProp>(compound)->GetPropertyValue(Bstr(name).get(), temperature, pressure,
                                                                   eNoExtrapolation, &dependencies, &read.value);
    return read;
  }
  int kind(WideView name) {
    tagPropTypeEnum type{};
    query<ICompoundProp>(compound)->GetPropertyType(Bstr(name).get(), &type);
    return type;
  }
  struct Shapes {
    int x, y;
    double xNorm, xPow;
    bool operator==(const Shapes&) const = default;
  };
  Shapes shapes(WideView name) {
    tagXYShapeEnum x{}, y{};
    double xNorm = 0, yNorm = 0, xPow = 0, yPow = 0, a = 0, b = 0;
    EXPECT_EQ(query<ICompEqnXYShape>(compound)->GetEquationPropertyXYShape(Bstr(name).get(), &x, &y, &xNorm, &yNorm,
                                                                           &xPow, &yPow, &a, &b),
              S_OK);
    return {x, y, xNorm, xPow};
  }
  std::vector<double> range() {
    double tMin = 0, tMax = 0, pMin = 0, pMax = 0;
    EXPECT_EQ(compound->get_VPTPRange(&tMin, &tMax, &pMin, &pMax), S_OK);
    return {tMin, tMax, pMin, pMax};
  }
  std::vector<WideString> synonyms() {
    const auto id = query<ICompoundID>(compound);
    INT count = 0;
    id->get_NumberOfSynonymNames(&count);
    std::vector<WideString> result;
    for (INT i = 0; i < count; ++i) {
      BSTR synonym = nullptr;
      EXPECT_EQ(id->get_SynonymName(i, &synonym), S_OK);
      result.push_back(taken(synonym));
    }
    return result;
  }
  WideString name() {
    BSTR given = nullptr;
    query<ICompoundID>(compound)->get_Name(&given);
    return taken(given);
  }

  void SetUp() override {
    CompoundTest::SetUp();
    compound = newCompound();
  }
  void TearDown() override {
    compound = {};
    CompoundTest::TearDown();
  }

  TemporaryDirectory directory;
  ComPtr<IBasicCompound> compound;
};

TEST_F(CompoundDatabase, IdentityFieldsGoWhereTheirNamesSay) {
  fill({text("PName", "Seven"), text("CName", "heptanoid"), text("Formula", "X7"), text("CASN", "7-7-7"),
        text("Else", "dropped"), shortInteger("Family", 9), shortInteger("NonCondensable", 1),
        shortInteger("SubComp", 3), longInteger("PPkg", 11), longInteger("DIPPRID", 12), longInteger("DDBID", 13),
        longInteger("PPDSID", 14), longInteger("CMAID", 15), longInteger("Else", 16)});
  const auto id = query<ICompoundID>(compound);
  const auto textOf = [&](HRESULT (STDMETHODCALLTYPE ICompoundID::*get)(BSTR*)) {
    BSTR given = nullptr;
    (id.get()->*get)(&given);
    return taken(given);
  };
  EXPECT_EQ(textOf(&ICompoundID::get_Name), OLESTR("Seven"));
  EXPECT_EQ(textOf(&ICompoundID::get_IUPACName), OLESTR("heptanoid"));
  EXPECT_EQ(textOf(&ICompoundID::get_ChemicalFormula), OLESTR("X7"));
  EXPECT_EQ(textOf(&ICompoundID::get_CASN), OLESTR("7-7-7"));
  INT numbers[6] = {};
  id->get_VelcorinID(&numbers[0]);
  id->get_PPAttribute(&numbers[1]);
  id->get_DIPPRID(&numbers[2]);
  id->get_DDBID(&numbers[3]);
  id->get_PPDSID(&numbers[4]);
  id->get_CMAID(&numbers[5]);
  EXPECT_THAT(numbers, testing::ElementsAre(7, 11, 12, 13, 14, 15));
  tagCompoundFamilyEnum family{};
  compound->get_Family(&family);
  EXPECT_EQ(family, eHalogen);
  BYTE nonCondensable = 9;
  EXPECT_EQ(compound->GetNonCondensable(&nonCondensable), S_OK);
  EXPECT_EQ(nonCondensable, 1);
  EXPECT_EQ(synonyms(), std::vector<WideString>());
}

TEST_F(CompoundDatabase, GroupsAreFilledPairByPair) {
  fill({{fieldDefinition("UNIFAC", 2, "Group"), Bytes().int16(1).int16(3).int16(-2).int16(7)},
        {fieldDefinition("Other", 1, "Group"), Bytes().int16(99).int16(98)}});
  ComPtr<IDispatch> types, counts;
  const auto groups = query<ICompoundUNIFAC1>(compound);
  INT count = 0;
  EXPECT_EQ(groups->get_UNIFAC1NumberOfGroups(&count), S_OK);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(groups->get_UNIFAC1Groups(types.out(), counts.out()), S_OK);
  EXPECT_EQ(valuesOf(types.get()), (std::vector<LONG>{1, -2}));
  EXPECT_EQ(valuesOf(counts.get()), (std::vector<LONG>{3, 7}));
}

TEST_F(CompoundDatabase, NumbersAndEquationsAreKeptUnderTheirNames) {
  fill({number("MW", 18.0), number("TC", kEmpty), number("Mine", 4.5),
        equation("VP", PropCurvePOLY2, {1.0, kEmpty, 0.5}), equation("Own", PropCurvePOLY2, {1.0, 2.0, 0.0})});
  EXPECT_EQ(value(OLESTR("MW")), (Value{S_OK, 18.0}));
  EXPECT_EQ(value(OLESTR("TC")), (Value{S_FALSE, kEmpty}));
  EXPECT_EQ(value(OLESTR("Mine")), (Value{S_OK, 4.5}));
  EXPECT_EQ(value(OLESTR("Own")), (Value{S_OK, 601.0}));
  EXPECT_EQ(value(OLESTR("VP")), (Value{S_OK, 1.0 + 0.5 * 90000.0})) << "an unset coefficient is zero";
  EXPECT_EQ(range(), (std::vector<double>{200, 400, 1, 1000}));
  EXPECT_EQ(value(OLESTR("PC")), (Value{S_FALSE, 0.5})) << "no field, no object";
}

TEST_F(CompoundDatabase, WhatHasNoFormIsNotSetButKeepsItsRange) {
  for (const int shape : {-32767, 38, 999, -1}) {
    fill({equation("VP", shape, {1.0, 2.0, 3.0})});
    EXPECT_EQ(value(OLESTR("VP")), (Value{S_FALSE, kEmpty})) << shape;
    EXPECT_EQ(kind(OLESTR("VP")), EquationProp) << shape;
    EXPECT_EQ(range().at(1), 400.0) << shape;
  }
}

TEST_F(CompoundDatabase, MissingCoefficientsCountAsZeroAndFurtherOnesDoNotMatter) {
  fill({equation("VP", PropCurveVELDB1, {2.0, 1.0}), equation("LCP", PropCurveEXPO2, {1.0, 2.0, 99.0, 98.0})});
  EXPECT_EQ(value(OLESTR("VP")), (Value{S_OK, 302.0}));
  EXPECT_EQ(value(OLESTR("LCP")), (Value{S_OK, 90001.0}));
}

TEST_F(CompoundDatabase, AnEnthalpyBringsHeatCapacityAndEntropy) {
  // H = 2T + 0.5T^2, so cp = 2 + T and S = 2 ln T + T + 5.
  const auto enthalpy = equation("IGH", PropCurveVELDB3, {0.0, 2.0, 0.5, 0.0, 0.0, 0.0, 5.0});
  fill({enthalpy});
  EXPECT_EQ(value(OLESTR("IGH")), (Value{S_OK, 600.0 + 45000.0}));
  EXPECT_EQ(value(OLESTR("IGCP")), (Value{S_OK, 302.0}));
  EXPECT_DOUBLE_EQ(value(OLESTR("IGS")).value, 2.0 * std::log(300.0) + 300.0 + 5.0);
  double tMin = 0, tMax = 0, pMin = 0, pMax = 0;
  EXPECT_EQ(query<ICompoundReferenceStateProperties>(compound)->get_IGSTPRange(&tMin, &tMax, &pMin, &pMax), S_OK);
  EXPECT_EQ(tMax, 400.0);

  fill({enthalpy, equation("IGCP", PropCurvePOLY2, {7.0, 0.0, 0.0})});
  EXPECT_EQ(value(OLESTR("IGCP")), (Value{S_OK, 7.0})) << "a later field of the record's own";
  fill({equation("IGCP", PropCurvePOLY2, {7.0, 0.0, 0.0}), enthalpy});
  EXPECT_EQ(value(OLESTR("IGCP")), (Value{S_OK, 302.0}));
  fill({equation("IGH", -32767, {0.0, 2.0, 0.5, 0.0, 0.0, 0.0, 5.0})});
  EXPECT_EQ(value(OLESTR("IGCP")), (Value{S_FALSE, kEmpty}));
  EXPECT_EQ(value(OLESTR("IGS")), (Value{S_FALSE, kEmpty}));
  fill({equation("IGH", PropCurveVELDB3, {0, 2, 0.5, 0, 0, 0, 5}, COMx, COMlnx, 2.0)});
  EXPECT_EQ(shapes(OLESTR("IGS")), (Shapes{COMx, COMx, 1.0, 1.0})) << "derived correlations are not transformed";
}

TEST_F(CompoundDatabase, TransformationsAreTakenFromTheField) {
  fill({equation("VP", PropCurvePOLY2, {0.0, 1.0, 0.0}, COMxr, COMlnx, 2.0)});
  EXPECT_EQ(shapes(OLESTR("VP")), (Shapes{COMxr, COMlnx, 1.0, 2.0}));
}

TEST_F(CompoundDatabase, OldFilesNormaliseWithTheMolecularWeight) {
  fill({number("MW", 18.0), equation("HVP", PropCurvePOLY2, {1, 1, 1}, COMxr),
        equation("VP", PropCurvePOLY2, {1, 1, 1}, COMxr)},
       1.0);
  EXPECT_EQ(shapes(OLESTR("HVP")), (Shapes{COMxr, COMx, 18.0, 1.0}));
  EXPECT_EQ(shapes(OLESTR("VP")), (Shapes{COMxp, COMx, 1.0, 1.0}));
  fill({number("MW", 18.0), equation("HVP", PropCurvePOLY2, {1, 1, 1}, COMxr, COMlnxxo)}, 1.5);
  EXPECT_EQ(shapes(OLESTR("HVP")), (Shapes{COMxr, COMlnxxo, 1.0, 1.0})) << "other versions are taken as they are";
}

TEST_F(CompoundDatabase, TheSrkVolumeStandsInWhereNoPengRobinsonTranslationIs) {
  fill({number("COSTALDACEN", 0.3), number("SRKVC", 0.05)});
  EXPECT_EQ(value(OLESTR("COSTALDACEN")), (Value{S_OK, 0.05}));
  fill({number("COSTALDACEN", 0.3), number("SRKVC", 0.05), number("PRPVOLT", kEmpty)});
  EXPECT_EQ(value(OLESTR("COSTALDACEN")), (Value{S_OK, 0.3}));
  fill({number("COSTALDACEN", 0.3)});
  EXPECT_EQ(value(OLESTR("COSTALDACEN")), (Value{S_FALSE, kEmpty}));
}

TEST_F(CompoundDatabase, SynonymsFillUpToTheMostThatACompoundKeeps) {
  fill({number("MW", 1)}, 2.0,
       {synonymRecord(6, "six"), synonymRecord(7, "a"), synonymRecord(7, "b"), synonymRecord(8, "c")});
  EXPECT_EQ(synonyms(), (std::vector<WideString>{OLESTR("a"), OLESTR("b")}));
  fill({number("MW", 1)}, 2.0, std::vector<Bytes>(70, synonymRecord(7, "same")));
  EXPECT_EQ(synonyms(), std::vector<WideString>(64, OLESTR("same")));
}

TEST_F(CompoundDatabase, NothingOfAnotherCompoundStays) {
  query<ICompoundIDPut>(compound)->put_CMAID(5);
  query<ICompoundPropPut>(compound)->SetPointProperty(Bstr(OLESTR("other")).get(), 0, 1.0);
  query<ICompoundPropPut>(compound)->SetPointProperty(Bstr(OLESTR("PC")).get(), 1, 1.0);
  fill({number("MW", 18.0), text("PName", "Seven")});
  INT cma = 0;
  EXPECT_EQ(query<ICompoundID>(compound)->get_CMAID(&cma), S_FALSE);
  EXPECT_EQ(value(OLESTR("other")).result, S_FALSE);
  EXPECT_EQ(value(OLESTR("PC")).result, S_FALSE);

  EXPECT_EQ(init(8), S_FALSE) << "not in the index";
  INT index = 0;
  query<ICompoundID>(compound)->get_VelcorinID(&index);
  EXPECT_EQ(index, 8);
  EXPECT_EQ(name(), OLESTR("(null)"));
  EXPECT_EQ(value(OLESTR("MW")).result, S_FALSE);
}

TEST_F(CompoundDatabase, FilesThatCannotBeReadLeaveAClearedCompound) {
  write({number("MW", 18.0), text("PName", "Seven")});
  ASSERT_EQ(init(7), S_OK);
  directory.remove("purecmp1.dat");
  EXPECT_EQ(init(7), E_FAIL);
  EXPECT_EQ(value(OLESTR("MW")).result, S_FALSE);
  directory.remove("purecmp1.idx");
  EXPECT_EQ(init(7), E_FAIL);
  const auto loader = query<ICompoundInitFromVelDB>(compound);
  for (const WideString& path : {WideString(), WideString(5000, OLESTR('d')), WideString(OLESTR("no such directory"))})
    EXPECT_EQ(loader->Init(Bstr(path).get(), 7), E_FAIL);
  EXPECT_EQ(loader->Init(nullptr, 7), E_FAIL);

  write({number("MW", 20.0)});
  ASSERT_EQ(init(7), S_OK);
  EXPECT_EQ(value(OLESTR("MW")), (Value{S_OK, 20.0}));
}

}  // namespace
}  // namespace qs::test
