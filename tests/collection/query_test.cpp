// Compound numbers from a database by the text of a field or a synonym.
#include "tests/support/collections.h"
#include "tests/support/database_builder.h"

namespace qs::test {
namespace {

class CollectionQueryTest : public CollectionTest {
 protected:
  static Bytes dataRecord(std::string_view name, std::string_view cas, int ppds, double weight) {
    return Bytes().text(name, 20).text(cas, 12).int32(ppds).real(weight).zerosTo(78);
  }

  // Four compounds, not in the order of their numbers; the number 5 stands twice.
  void SetUp() override {
    CollectionTest::SetUp();
    database_.write(
        "purecmp1.idx",
        indexFile({fieldDefinition("PName", 20, "String"), fieldDefinition("CASN", 12, "String"),
                   fieldDefinition("PPDSID", 4, "Long Integer"), fieldDefinition("MW", 8, "Double")},
                  {indexRecord(9, 0), indexRecord(5, 1), indexRecord(7, 2), indexRecord(5, 3)},
                  {synonymRecord(5, "Spirit"), synonymRecord(5, "Solvent"), synonymRecord(9, "SOLVENT  ")}));
    Bytes data = header(2.0, 78, 4, 4).zerosTo(78);
    data.append(dataRecord("Methanol", "67-56-1", 12, 32.04));
    data.append(dataRecord("Ethanol", "64-17-5", 120, 46.07));
    data.append(dataRecord("methanol", "AA-1", 12, 32.04));
    data.append(dataRecord("Water", "64-17-5", 1, 18.02));
    database_.write("purecmp1.dat", data);
  }

  // "failed", "none" or the numbers.
  std::string ask(const OLECHAR* field, const OLECHAR* text) {
    ComPtr<IIntegerArrayDisp> numbers;
    const HRESULT result =
        query<IQueryLoader>(newCollection())
            ->GetVelIDs(Bstr(database_.name()).get(), Bstr(field).get(), Bstr(text).get(), numbers.out());
    EXPECT_EQ(result == S_OK, static_cast<bool>(numbers));
    if (FAILED(result)) return "failed";
    if (result != S_OK) return "none";
    std::string list;
    for (const LONG number : valuesOf(numbers.get())) list += std::to_string(number) + " ";
    return list;
  }

  TemporaryDirectory database_;
};

TEST_F(CollectionQueryTest, FindsAllCompoundsInTheOrderOfTheIndex) {
  const struct {
    const OLECHAR *field, *text;
    const char* numbers;
  } rows[] = {
      {OLESTR("CASN"), OLESTR("67-56-1"), "9 "},     {OLESTR("CASN"), OLESTR("64-17-5"), "5 "},
      {OLESTR("CASN"), OLESTR("67-56-10"), "none"},  {OLESTR("CASN"), OLESTR("67-56"), "none"},
      {OLESTR("CASN"), OLESTR("aa-1"), "none"},      {OLESTR("CASN"), OLESTR("AA-1"), "7 "},
      {OLESTR("PName"), OLESTR("METHANOL"), "9 7 "}, {OLESTR("PName"), OLESTR("Water"), "none"},
      {OLESTR("PName"), OLESTR("solvent"), "9 5 "},  {OLESTR("CName"), OLESTR("spirit"), "5 "},
      {OLESTR("Synonym"), OLESTR("sPIRIT"), "5 "},   {OLESTR("Synonym"), OLESTR("Methanol"), "none"},
      {OLESTR("PPDSID"), OLESTR("12"), "9 7 "},      {OLESTR("PPDSID"), OLESTR("12x"), "none"},
      {OLESTR("PPDSID"), OLESTR(""), "none"},        {OLESTR("MW"), OLESTR("3.204e1"), "9 7 "},
      {OLESTR("Nothing"), OLESTR("12"), "none"},     {OLESTR(""), OLESTR(""), "none"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(ask(row.field, row.text), row.numbers) << narrow(row.field) << narrow(row.text);
}

TEST_F(CollectionQueryTest, NullTextsMatchNothingAndMissingFilesFail) {
  const auto loader = query<IQueryLoader>(newCollection());
  const Bstr path(database_.name()), text(OLESTR("PName"));
  ComPtr<IIntegerArrayDisp> numbers;
  EXPECT_EQ(loader->GetVelIDs(path.get(), nullptr, text.get(), numbers.out()), S_FALSE);
  EXPECT_EQ(loader->GetVelIDs(path.get(), text.get(), nullptr, numbers.out()), S_FALSE);
  EXPECT_EQ(loader->GetVelIDs(nullptr, text.get(), text.get(), numbers.out()), E_FAIL);
  database_.remove("purecmp1.dat");
  EXPECT_EQ(ask(OLESTR("CASN"), OLESTR("67-56-1")), "failed");
  database_.remove("purecmp1.idx");
  EXPECT_EQ(ask(OLESTR("Synonym"), OLESTR("Spirit")), "failed");
}

}  // namespace
}  // namespace qs::test
