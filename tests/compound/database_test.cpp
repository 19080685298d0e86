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
  return {fieldDefinition(name, 20, "String"), Bytes().text(value, 20, '\0')};
}
FieldBytes shortInteger(std::string_view name, int value) {
  return {fieldDefinition(name, 2, "Short Integer"), Bytes().int16(value)};
}
FieldBytes longInteger(std::string_view name, int value) {
  return {fieldDefinition(name, 4, "Long Integer"), Bytes().int32(value)};
}
FieldBytes groups(std::string_view name, std::initializer_list<int> numbers) {
  Bytes content;
  for (const int each : numbers) content.int16(each);
  return {fieldDefinition(name, static_cast<std::int64_t>(numbers.size() / 2), "Group"), content};
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
    std::vector<Bytes> definitions;
    Bytes record = header(version, 78, 0, 0).zerosTo(78);
    for (const FieldBytes& field : fields) {
      definitions.push_back(field.definition);
      record.append(field.content);
    }
    directory.write("purecmp1.idx", indexFile(definitions, {indexRecord(7, 0, "seven")}, synonyms));
    directory.write("purecmp1.dat", record);
    ASSERT_EQ(init(7), S_OK);
  }
  HRESULT init(INT index) { return query<ICompoundInitFromVelDB>(compound)->Init(Bstr(directory.name()).get(), index); }

  PropertyReading value(WideView name) { return propertyOf(compound, name); }
  // Both shapes, the norm and the power of X.
  std::vector<double> shapes(WideView name) {
    tagXYShapeEnum x{}, y{};
    double xNorm = 0, yNorm = 0, xPow = 0, yPow = 0, a = 0, b = 0;
    EXPECT_EQ(query<ICompEqnXYShape>(compound)->GetEquationPropertyXYShape(Bstr(name).get(), &x, &y, &xNorm, &yNorm,
                                                                           &xPow, &yPow, &a, &b),
              S_OK);
    return {static_cast<double>(x), static_cast<double>(y), xNorm, xPow};
  }
  std::vector<double> range() {
    double tMin = 0, tMax = 0, pMin = 0, pMax = 0;
    EXPECT_EQ(compound->get_VPTPRange(&tMin, &tMax, &pMin, &pMax), S_OK);
    return {tMin, tMax, pMin, pMax};
  }
  TemporaryDirectory directory;
  ComPtr<IBasicCompound> compound = newCompound();
};

TEST_F(CompoundDatabase, IdentityFieldsGoWhereTheirNamesSay) {
  fill({text("PName", "Seven"), text("CName", "heptanoid"), text("Formula", "X7  "), text("CASN", "7-7-7"),
        text("Else", "dropped"), shortInteger("Family", 9), shortInteger("NonCondensable", 1),
        shortInteger("SubComp", 3), longInteger("PPkg", 11), longInteger("DIPPRID", 12), longInteger("DDBID", 13),
        longInteger("PPDSID", 14), longInteger("CMAID", 15), longInteger("Else", 16), groups("UNIFAC", {1, 3, -2, 7}),
        groups("Other", {99, 98})});
  EXPECT_EQ(identityOf(compound), "Seven heptanoid X7   7-7-7 ; 7 11 12 13 14 15; 9 1;; 1 -2; 3 7");
}

TEST_F(CompoundDatabase, NumbersAndEquationsAreKeptUnderTheirNames) {
  fill({number("MW", 18.0), number("TC", kEmpty), number("Mine", 4.5), equation("VP", PropCurvePOLY2, {1, kEmpty, 0.5}),
        equation("Own", PropCurveVELDB1, {2.0, 1.0}), equation("LCP", PropCurveEXPO2, {1.0, 2.0, 99.0, 98.0})});
  EXPECT_EQ(value(OLESTR("MW")), (PropertyReading{S_OK, 18.0}));
  EXPECT_EQ(value(OLESTR("TC")), (PropertyReading{S_FALSE, kEmpty}));
  EXPECT_EQ(value(OLESTR("Mine")), (PropertyReading{S_OK, 4.5}));
  EXPECT_EQ(value(OLESTR("VP")), (PropertyReading{S_OK, 1.0 + 0.5 * 90000.0})) << "an unset coefficient is zero";
  EXPECT_EQ(value(OLESTR("Own")), (PropertyReading{S_OK, 302.0})) << "missing ones are zero too";
  EXPECT_EQ(value(OLESTR("LCP")), (PropertyReading{S_OK, 90001.0})) << "further ones do not matter";
  EXPECT_EQ(value(OLESTR("PC")), (PropertyReading{S_FALSE, 0.5})) << "no field, no object";
  EXPECT_EQ(range(), (std::vector<double>{200, 400, 1, 1000}));

  for (const int shape : {-32767, 38, 999, -1}) {
    fill({equation("VP", shape, {1.0, 2.0, 3.0})});
    EXPECT_EQ(value(OLESTR("VP")), (PropertyReading{S_FALSE, kEmpty})) << "no such form " << shape;
    EXPECT_EQ(range().at(1), 400.0) << "but its range " << shape;
  }
}

TEST_F(CompoundDatabase, AnEnthalpyBringsHeatCapacityAndEntropy) {
  // H = 2T + 0.5T^2, so cp = 2 + T and S = 2 ln T + T + 5.
  const auto enthalpy = equation("IGH", PropCurveVELDB3, {0.0, 2.0, 0.5, 0.0, 0.0, 0.0, 5.0});
  fill({enthalpy});
  EXPECT_EQ(value(OLESTR("IGH")), (PropertyReading{S_OK, 600.0 + 45000.0}));
  EXPECT_EQ(value(OLESTR("IGCP")), (PropertyReading{S_OK, 302.0}));
  EXPECT_DOUBLE_EQ(value(OLESTR("IGS")).value, 2.0 * std::log(300.0) + 300.0 + 5.0);
  fill({enthalpy, equation("IGCP", PropCurvePOLY2, {7.0, 0.0, 0.0})});
  EXPECT_EQ(value(OLESTR("IGCP")), (PropertyReading{S_OK, 7.0})) << "a later field of the record's own";
  fill({equation("IGCP", PropCurvePOLY2, {7.0, 0.0, 0.0}), enthalpy});
  EXPECT_EQ(value(OLESTR("IGCP")), (PropertyReading{S_OK, 302.0}));
  fill({equation("IGH", -32767, {0.0, 2.0, 0.5, 0.0, 0.0, 0.0, 5.0})});
  EXPECT_EQ(value(OLESTR("IGCP")), (PropertyReading{S_FALSE, kEmpty}));
  EXPECT_EQ(value(OLESTR("IGS")), (PropertyReading{S_FALSE, kEmpty}));
  fill({equation("IGH", PropCurveVELDB3, {0, 2, 0.5, 0, 0, 0, 5}, COMx, COMlnx, 2.0)});
  EXPECT_EQ(shapes(OLESTR("IGH")), (std::vector<double>{COMx, COMlnx, 1.0, 2.0}));
  EXPECT_EQ(shapes(OLESTR("IGS")), (std::vector<double>{COMx, COMx, 1.0, 1.0})) << "what is derived is plain";
}

TEST_F(CompoundDatabase, OldFilesNormaliseWithTheMolecularWeight) {
  const auto heat = equation("HVP", PropCurvePOLY2, {1, 1, 1}, COMxr);
  fill({number("MW", 18.0), heat, equation("VP", PropCurvePOLY2, {1, 1, 1}, COMxr)}, 1.0);
  EXPECT_EQ(shapes(OLESTR("HVP")), (std::vector<double>{COMxr, COMx, 18.0, 1.0}));
  EXPECT_EQ(shapes(OLESTR("VP")), (std::vector<double>{COMxp, COMx, 1.0, 1.0}));
  fill({number("MW", 18.0), heat}, 1.5);
  EXPECT_EQ(shapes(OLESTR("HVP")), (std::vector<double>{COMxr, COMx, 1.0, 1.0}));
}

TEST_F(CompoundDatabase, TheSrkVolumeStandsInWhereNoPengRobinsonTranslationIs) {
  fill({number("COSTALDACEN", 0.3), number("SRKVC", 0.05)});
  EXPECT_EQ(value(OLESTR("COSTALDACEN")), (PropertyReading{S_OK, 0.05}));
  fill({number("COSTALDACEN", 0.3), number("SRKVC", 0.05), number("PRPVOLT", kEmpty)});
  EXPECT_EQ(value(OLESTR("COSTALDACEN")), (PropertyReading{S_OK, 0.3}));
  fill({number("COSTALDACEN", 0.3)});
  EXPECT_EQ(value(OLESTR("COSTALDACEN")), (PropertyReading{S_FALSE, kEmpty}));
}

TEST_F(CompoundDatabase, SynonymsFillUpToTheMostThatACompoundKeeps) {
  fill({number("MW", 1)}, 2.0,
       {synonymRecord(6, "six"), synonymRecord(7, "a"), synonymRecord(7, "b"), synonymRecord(8, "c")});
  EXPECT_THAT(identityOf(compound), testing::HasSubstr("; a b;"));
  fill({number("MW", 1)}, 2.0, std::vector<Bytes>(70, synonymRecord(7, "same")));
  EXPECT_EQ(got(compound, &ICompoundID::get_NumberOfSynonymNames), 64);
}

TEST_F(CompoundDatabase, NothingOfAnotherCompoundStays) {
  query<ICompoundIDPut>(compound)->put_CMAID(5);
  query<ICompoundPropPut>(compound)->SetPointProperty(Bstr(OLESTR("other")).get(), 0, 1.0);
  query<ICompoundPropPut>(compound)->SetPointProperty(Bstr(OLESTR("PC")).get(), 1, 1.0);
  fill({number("MW", 18.0), text("PName", "Seven")});
  EXPECT_EQ(identityOf(compound), "Seven (null) (null) (null) ; 7 -32767 -32767 -32767 -32767 -32767; -32767 0;;;");
  EXPECT_EQ(value(OLESTR("other")).result, S_FALSE);
  EXPECT_EQ(value(OLESTR("PC")).result, S_FALSE);

  EXPECT_EQ(init(8), S_FALSE) << "not in the index";
  EXPECT_THAT(identityOf(compound), testing::StartsWith("(null) (null) (null) (null) ; 8 -32767"));
  EXPECT_EQ(value(OLESTR("MW")).result, S_FALSE);

  // Nor when the files cannot be read.
  ASSERT_EQ(init(7), S_OK);
  directory.remove("purecmp1.dat");
  EXPECT_EQ(init(7), E_FAIL);
  EXPECT_EQ(value(OLESTR("MW")).result, S_FALSE);
  const auto loader = query<ICompoundInitFromVelDB>(compound);
  EXPECT_EQ(loader->Init(Bstr(OLESTR("no such directory")).get(), 7), E_FAIL);
  EXPECT_EQ(loader->Init(nullptr, 7), E_FAIL);
}

}  // namespace
}  // namespace qs::test
