#include "bank/database_source.h"

#include <gmock/gmock.h>

#include "bank/json_source.h"
#include "tests/support/compounds.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using namespace qs::test;
using qs::Key;
using qs::database::encodeDatabase;
using testing::IsEmpty;

// Also where some compounds have an ideal-gas heat capacity of their own, so that it is written out for the others.
TEST(DatabaseSource, HasAllThatAnotherBuildNeeds) {
  Source mixed = readSource(kSourceFolder / "data/compounds.json");
  mixed.compounds[0].data.correlations[Key::IGCP] = {.form = PropCurvePOLY2, .coefficients = {1, 2, 3}};
  for (const Source& source : {readSource(kSourceFolder / "data/compounds.json"), mixed,
                               readSource(kSourceFolder / "tests/tools/sample_source.json"),
                               readSource(kSourceFolder / "tests/bank/full_source.json")}) {
    const TemporaryDirectory directory;
    const auto files = encode(source);
    qs::database::saveDatabase(files, directory.path());
    std::vector<Finding> findings;
    const Source read = readDatabase(directory.path(), findings);
    const auto again = encode(read);
    EXPECT_EQ(again.index, files.index);
    EXPECT_EQ(again.data, files.data);
    EXPECT_EQ(again.provenance, files.provenance);
    EXPECT_THAT(findings, IsEmpty());
    EXPECT_EQ(annotationsOf(read).waivers.size(), source.waivers.size());
  }
}

// What a damaged third file says of values that the database does not have.
TEST(DatabaseSource, KeepsOriginsOfItsValuesOnly) {
  Source source = readSource(kSourceFolder / "tests/bank/full_source.json");
  auto annotations = annotationsOf(source);
  const auto known = annotations.values.size();
  for (const auto& [compound, field] : {std::pair(1, "NoKey"), std::pair(1, "ZC"), std::pair(3, "TC")})
    annotations.values.push_back({compound, field, {"", {}, {}, "", "n"}});
  const TemporaryDirectory directory;
  qs::database::saveDatabase(encodeDatabase(compoundsOf(std::move(source)), annotations), directory.path());
  std::vector<Finding> findings;
  EXPECT_EQ(annotationsOf(readDatabase(directory.path(), findings)).values.size(), known);
  std::string texts;
  for (const Finding& finding : findings) texts += finding.rule + ' ' + finding.compound + ' ' + finding.field + '\n';
  EXPECT_EQ(texts, "not-kept compound 1 (One) NoKey\nnot-kept compound 1 (One) ZC\nnot-kept  TC\n");
}

// A file of others: old shapes, no PRPVOLT, a field twice, and what a source cannot hold.
TEST(DatabaseSource, ListsWhatASourceCannotHold) {
  const auto equation = [](std::int64_t shape, std::int64_t xShape, double tmin = 1.0) {
    return Bytes()
        .int16(shape)
        .reals({1, -32767})
        .reals({tmin, 2, 3, 4})
        .int16(xShape)
        .int16(1)
        .reals({1, 1})
        .zerosTo(76);
  };
  const std::vector<Bytes> fields = {
      fieldDefinition("PName", 6, "String"), fieldDefinition("Family", 2, "Short Integer"),
      fieldDefinition("SRKVC", 8, "Double"), fieldDefinition("COSTALDACEN", 8, "Double"),
      fieldDefinition("TC", 8, "Double"),    fieldDefinition("TC", 8, "Double"),
      fieldDefinition("ZC", 8, "Double"),    fieldDefinition("Colour", 8, "Double"),
      fieldDefinition("UNIFAC", 2, "Group"), fieldDefinition("VP", 2, "Equation"),
      fieldDefinition("LDN", 2, "Equation"), fieldDefinition("HVP", 2, "Equation"),
      fieldDefinition("ST", 2, "Equation"),  fieldDefinition("LVS", 2, "Equation"),
  };
  Bytes data = header(1.0, 78, 0, 0).zerosTo(78);
  data.text("W ", 6, '\0').int16(99).reals({0.5, 7, 1, 2, 1.0 / 0.0, 3});
  data.int16(0).int16(0).int16(4).int16(2);
  data.append(equation(25, 1)).append(equation(99, 1)).append(equation(25, 2)).append(equation(25, 77));
  data.append(equation(25, 1, std::numeric_limits<double>::quiet_NaN())).zerosTo(78 * 12);
  const TemporaryDirectory directory;
  directory.write("purecmp1.idx", indexFile(fields, {indexRecord(5, 0)}, {synonymRecord(5, "other")}));
  directory.write("purecmp1.dat", data);
  std::vector<Finding> findings;
  const Source source = readDatabase(directory.path(), findings);
  std::string texts;
  for (const Finding& finding : findings) texts += finding.field + ": " + finding.message + '\n';
  EXPECT_EQ(texts, R"(Colour: a source cannot hold values under this name, which is no property key
Family: a source cannot hold a family of the number 99
ZC: a source cannot hold a value that is not finite
LDN: a source cannot hold a form of the number 99
HVP: a source cannot hold a correlation in the temperature divided by the molecular weight
ST: a source cannot hold a transformation of the number 77
LVS: a source cannot hold a correlation with numbers that are not finite
: compound 5 (W ), PName: a blank at the end; a build refuses this
)");
  ASSERT_EQ(source.compounds.size(), 1u);
  const auto& compound = source.compounds[0].data;
  EXPECT_EQ(compound.name, "W ");
  EXPECT_EQ(compound.constants, (std::map<qs::Key, double>{{Key::TC, 2}, {Key::SRKVC, 0.5}, {Key::COSTALDACEN, 0.5}}));
  ASSERT_EQ(compound.unifac.size(), 1u);
  EXPECT_EQ(compound.unifac[0].subgroup, 4);
  ASSERT_EQ(compound.correlations.size(), 1u);
  EXPECT_EQ(compound.correlations.at(Key::VP).coefficients, (std::vector<double>{1, 0}));
}

class ForeignDatabase : public CompoundTest {};

// Fields in another order, one twice, with more or fewer coefficients than forms have, and no PRPVOLT.
TEST_F(ForeignDatabase, IsTheSameToHostsWhenItIsBuiltFromItsExport) {
  const auto equation = [](std::int64_t shape, std::initializer_list<double> coefficients) {
    return Bytes()
        .int16(shape)
        .reals(coefficients)
        .reals({200, 400, 0, 1e9})
        .int16(1)
        .int16(1)
        .reals({1, 1})
        .int16(0)
        .int32(0);
  };
  const std::vector<Bytes> fields = {
      fieldDefinition("IGCP", 3, "Equation"), fieldDefinition("IGH", 6, "Equation"),
      fieldDefinition("VP", 3, "Equation"),   fieldDefinition("VP", 7, "Equation"),
      fieldDefinition("ST", 2, "Equation"),   fieldDefinition("SRKVC", 8, "Double"),
      fieldDefinition("PName", 9, "String"),  fieldDefinition("TC", 8, "Double"),
      fieldDefinition("UNIFAC", 2, "Group"),  fieldDefinition("CASN", 4, "String"),
  };
  Bytes data = header(2.0, 78, 0, 0).zerosTo(78);
  data.append(equation(19, {1, 2, 3})).append(equation(2, {1, 2, 3, 4, 5, 6})).append(equation(19, {7, 8, 9}));
  data.append(equation(19, {3, 2, 1, 9, 9, 9, 9}))
      .append(equation(0, {0.5, -32767}))
      .real(0.25)
      .text("foreign", 9, '\0');
  data.real(500).int16(1).int16(2).int16(0).int16(0).text("1-1", 4, '\0').zerosTo(78 * 20);
  const TemporaryDirectory given, built;
  given.write("purecmp1.idx", indexFile(fields, {indexRecord(5, 0)}, {synonymRecord(5, "other")}));
  given.write("purecmp1.dat", data);
  std::vector<Finding> findings;
  qs::database::saveDatabase(encodeDatabase(compoundsOf(readDatabase(given.path(), findings))), built.path());
  EXPECT_THAT(findings, IsEmpty());
  const auto before = newCompound(), after = newCompound();
  ASSERT_EQ(query<ICompoundInitFromVelDB>(before)->Init(qs::Bstr(given.name()).get(), 5), S_OK);
  ASSERT_EQ(query<ICompoundInitFromVelDB>(after)->Init(qs::Bstr(built.name()).get(), 5), S_OK);
  EXPECT_THAT(identityOf(after), testing::StartsWith("foreign   1-1 ; 5 "));
  EXPECT_THAT(identityOf(after), testing::EndsWith("other; 1; 2"));
  int set = 0;
  for (const qs::KeyEntry& key : qs::kKeys) {
    const auto expected = propertyOf(before, key.name), found = propertyOf(after, key.name);
    EXPECT_EQ(found.result, expected.result) << qs::narrow(key.name);
    if (expected.result != S_OK) continue;
    EXPECT_EQ(found.value, expected.value) << qs::narrow(key.name);
    ++set;
  }
  EXPECT_EQ(set, 8);
}

}  // namespace
