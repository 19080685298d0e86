// What a compound makes of the fields of a database record, and what is left of it when the files are bad.
#include <gmock/gmock.h>

#include <optional>

#include "persist/database_format.h"
#include "platform/input_file.h"
#include "props/forms.h"
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

  // The lines of the compound's description after that of its identity.
  std::string properties() { return describe(compound).substr(describe(compound).find('\n')); }

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

// Lines of a description: a number, and an equation with the range of all equations here.
std::string is(const std::string& name, const std::string& value) { return "\n" + name + " 1 1 " + value + " "; }
std::string curve(const std::string& name, LONG shape, const std::string& coefficients,
                  const std::string& transformation = "1 1 1 1 1 1") {
  return "\n" + name + " 2 2 " + std::to_string(shape) + " " + narrow(findForm(shape)->formula) + " 200 400 1 1000 " +
         coefficients + transformation + " -32767 -32767 ";
}

TEST_F(CompoundDatabase, PropertiesGoWhereTheirNamesSay) {
  // H = 2T + 0.5T^2, so cp = 2 + T and S = 2 ln T + T + 5.
  const std::initializer_list<double> h{0.0, 2.0, 0.5, 0.0, 0.0, 0.0, 5.0};
  const auto enthalpy = equation("IGH", PropCurveVELDB3, h), constant = equation("IGCP", PropCurvePOLY2, {7, 0, 0});
  const auto scaled = [](const char* name) { return equation(name, PropCurvePOLY2, {1, 1, 1}, COMxr); };
  const std::string igh = curve("IGH", PropCurveVELDB3, "0 2 0.5 0 0 0 ");
  const std::string igcp = curve("IGCP", PropCurveVELDB9, "0 2 0.5 0 0 0 ");
  const std::string igs = curve("IGS", PropCurveVELDB10, "0 2 0.5 0 0 0 5 ");
  const std::string noAcentric = is("COSTALDACEN", "-32767"), weight = is("MW", "18");
  const struct {
    const char* what;
    std::vector<FieldBytes> fields;
    std::string expected;
    double version = 2.0;
  } rows[] = {
      {"missing and unset coefficients are zero, further ones do not matter",
       {number("MW", 18.0), number("TC", kEmpty), number("Mine", 4.5), equation("VP", PropCurvePOLY2, {1, kEmpty, 0.5}),
        equation("Own", PropCurveVELDB1, {2.0, 1.0}), equation("LCP", PropCurveEXPO2, {1.0, 2.0, 99.0, 98.0})},
       noAcentric + curve("LCP", PropCurveEXPO2, "1 2 ") + weight + is("TC", "-32767") +
           curve("VP", PropCurvePOLY2, "1 0 0.5 ") + is("Mine", "4.5") + curve("Own", PropCurveVELDB1, "2 1 0 0 0 ")},
      {"no such form",
       {equation("VP", -32767, {1}), equation("ST", kFormCount, {1}), equation("IT", 999, {1}),
        equation("SP", -1, {1})},
       noAcentric + curve("IT", 1000, "") + curve("SP", 1000, "") + curve("ST", 1000, "") + curve("VP", 1000, "")},
      {"an enthalpy brings heat capacity and entropy", {enthalpy}, noAcentric + igcp + igh + igs},
      {"a later field of the record's own",
       {enthalpy, constant},
       noAcentric + curve("IGCP", PropCurvePOLY2, "7 0 0 ") + igh + igs},
      {"an earlier one", {constant, enthalpy}, noAcentric + igcp + igh + igs},
      {"an enthalpy without a form",
       {equation("IGH", -32767, h)},
       noAcentric + curve("IGCP", 1000, "") + curve("IGH", 1000, "") + curve("IGS", 1000, "")},
      {"what is derived is plain",
       {equation("IGH", PropCurveVELDB3, h, COMx, COMlnx, 2.0)},
       noAcentric + igcp + curve("IGH", PropCurveVELDB3, "0 2 0.5 0 0 0 ", "1 7 1 1 2 1") + igs},
      {"old files normalise with the molecular weight",
       {number("MW", 18.0), scaled("HVP"), scaled("VP")},
       noAcentric + curve("HVP", PropCurvePOLY2, "1 1 1 ", "2 1 18 1 1 1") + weight +
           curve("VP", PropCurvePOLY2, "1 1 1 ", "35 1 1 1 1 1"),
       1.0},
      {"newer ones do not",
       {number("MW", 18.0), scaled("HVP")},
       noAcentric + curve("HVP", PropCurvePOLY2, "1 1 1 ", "2 1 1 1 1 1") + weight,
       1.5},
      {"the SRK volume replaces the acentric factor where no Peng-Robinson translation is",
       {number("COSTALDACEN", 0.25), number("SRKVC", 0.5)},
       is("COSTALDACEN", "0.5") + is("SRKVC", "0.5")},
      {"there is one",
       {number("COSTALDACEN", 0.25), number("SRKVC", 0.5), number("PRPVOLT", kEmpty)},
       is("COSTALDACEN", "0.25") + is("PRPVOLT", "-32767") + is("SRKVC", "0.5")},
      {"there is neither", {number("COSTALDACEN", 0.25)}, noAcentric},
  };
  for (const auto& row : rows) {
    fill(row.fields, row.version);
    EXPECT_EQ(properties(), row.expected) << row.what;
  }
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
  fill({text("PName", "Seven"), number("PRPVOLT", 1.0)});
  EXPECT_EQ(identityOf(compound), "Seven (null) (null) (null) ; 7 -32767 -32767 -32767 -32767 -32767; -32767 0;;;");
  EXPECT_EQ(properties(), is("PRPVOLT", "1"));

  EXPECT_EQ(init(8), S_FALSE) << "not in the index";
  const std::string nothing = "(null) (null) (null) (null) ; 8 -32767 -32767 -32767 -32767 -32767; -32767 0;;;";
  EXPECT_EQ(identityOf(compound), nothing);
  EXPECT_EQ(describe(compound).find('\n'), std::string::npos);

  // Nor when the files cannot be read.
  ASSERT_EQ(init(7), S_OK);
  directory.remove("purecmp1.dat");
  EXPECT_EQ(init(7), E_FAIL);
  EXPECT_EQ(describe(compound).find('\n'), std::string::npos);
  const auto loader = query<ICompoundInitFromVelDB>(compound);
  EXPECT_EQ(loader->Init(Bstr(OLESTR("no such directory")).get(), 7), E_FAIL);
  EXPECT_EQ(loader->Init(nullptr, 7), E_FAIL);
}

TEST_F(CompoundDatabase, AFailureNamesFileRecordAndField) {
  const auto index = [](int size) {
    return indexFile({fieldDefinition("PName", size, "String")}, {indexRecord(7, 0)});
  };
  const auto marked = [](int build) {
    return Bytes().real(2.0).integer(build, 8).text("", 2).int32(78).int32(0).int32(0).text(database::kMark, 4);
  };
  const Bytes data = header(2.0, 78, 0, 0).zerosTo(78);
  const struct {
    std::optional<Bytes> index, data;
    std::string file, says;
  } rows[] = {
      {{}, {}, "idx", "there is no such file or folder"},
      {header(2.0, 0, 0, 0), data, "idx", "its records have the length 0"},
      {header(2.0, 78, -1, 0), data, "idx", "it has -1 fields"},
      {indexFile({}), data, "idx", "there is no compound 7"},
      {index(20), {}, "dat", "there is no such file or folder (compound 7)"},
      {index(-1), data, "dat", "record 0, field PName: its size is negative (compound 7)"},
      {marked(1), marked(2), "dat", "it is not of the same build as purecmp1.idx"},
  };
  for (const auto& row : rows) {
    for (const auto& [name, content] : {std::pair("purecmp1.idx", row.index), {"purecmp1.dat", row.data}}) {
      directory.remove(name);
      if (content) directory.write(name, *content);
    }
    EXPECT_NE(init(7), S_OK);
    const WideString file = joinPath(directory.name(), widen("purecmp1." + row.file));
    EXPECT_EQ(got(compound, &ILastError::get_LastError), widen("Init: ") + file + widen(": " + row.says));
  }
}

}  // namespace
}  // namespace qs::test
