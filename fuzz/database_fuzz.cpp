// Feeds arbitrary index and data files to the database reader. The input is the index file's length (16 bits,
// little-endian), the index file, and the data file.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "com/error.h"
#include "com/not_set.h"
#include "fuzz/fuzz_target.h"
#include "persist/database_record.h"
#include "tests/support/database_builder.h"

namespace {

using namespace qs;
using namespace qs::database;

// Touches all that is delivered, so that the sanitizers see every byte, and checks what the sink may rely on.
class Toucher final : public RecordSink {
 public:
  explicit Toucher(const Catalogue& catalogue) : fields_(catalogue.fields()) {}

  void shortInteger(const Field& field, std::int16_t) override { expectOwn(field); }
  void longInteger(const Field& field, std::int32_t) override { expectOwn(field); }
  void number(const Field& field, double) override { expectOwn(field); }
  void text(const Field& field, WideView value) override {
    expectOwn(field);
    expect(value.size() < kTextLimit && std::count(value.begin(), value.end(), OLECHAR{}) == 0);
  }
  void groups(const Field& field, std::span<const GroupCount> values) override {
    expectOwn(field);
    expect(values.size() <= static_cast<std::size_t>(field.size));
    for (const GroupCount& group : values) sum_ = sum_ + group.type + group.count;
  }
  void equation(const Field& field, const EquationField& value) override {
    expectOwn(field);
    expect(value.coefficients.size() == static_cast<std::size_t>(field.size));
    for (const double coefficient : value.coefficients) expect(coefficient != kEmptyValue);
  }

 private:
  static void expect(bool kept) {
    if (!kept) std::abort();
  }
  void expectOwn(const Field& field) const { expect(field.index < fields_.size() && &field == &fields_[field.index]); }

  const DBFieldTable& fields_;
  volatile int sum_ = 0;
};

HRESULT readAll(std::span<const std::byte> index, std::span<const std::byte> data) {
  const Catalogue catalogue({index.begin(), index.end()});
  Toucher sink(catalogue);
  for (std::size_t i = 0; i < std::min<std::size_t>(catalogue.indexRecordCount(), 32); ++i) {
    const IndexRecord record = catalogue.indexRecord(i);
    if (!catalogue.dataRecordOf(record.compound)) std::abort();
    readRecord(catalogue, data, record.dataRecord, sink);
    for (const Synonym& synonym : catalogue.synonymsOf(record.compound)) {
      guarded([&] { return catalogue.synonymText(synonym).size() < kTextLimit ? S_OK : (std::abort(), E_FAIL); });
    }
  }
  return readRecord(catalogue, data, 0, sink);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  std::uint16_t indexLength = 0;
  if (size < sizeof indexLength) return 0;
  std::memcpy(&indexLength, input, sizeof indexLength);
  const auto files = std::as_bytes(std::span(input, size)).subspan(sizeof indexLength);
  const std::size_t split = std::min<std::size_t>(indexLength, files.size());
  guarded([&] { return readAll(files.first(split), files.subspan(split)); });
  return 0;
}

// A database with a field of every kind, as a file of the present version and as an old one.
std::vector<std::string> qs::fuzzSeeds() {
  using namespace qs::test;
  const Bytes index =
      indexFile({fieldDefinition("PName", 8, "String"), fieldDefinition("MW", 8, "Double"),
                 fieldDefinition("Family", 2, "Short Integer"), fieldDefinition("DDBID", 4, "Long Integer"),
                 fieldDefinition("UNIFAC", 2, "Group"), fieldDefinition("HVP", 3, "Equation"),
                 fieldDefinition("Flag", 1, "Byte"), fieldDefinition("Else", 3, "Picture")},
                {indexRecord(7, 0, "seven"), indexRecord(8, 1, "eight")},
                {synonymRecord(7, "one"), synonymRecord(7, "two"), synonymRecord(8, "three")});
  std::vector<std::string> seeds;
  for (const double version : {2.0, 1.0}) {
    Bytes data = header(version, 78, 0, 0).zerosTo(78);
    data.text("Seven", 8).real(18.0).int16(3).int32(174).int16(1).int16(2).int16(3).int16(4);
    data.int16(19).reals({1.0, -32767.0, 3.0, 200.0, 400.0, 1.0, 1000.0}).int16(2).int16(27).reals({1.0, 1.0});
    data.int16(0).int16(0).int16(0).integer(1, 1).text("abc", 3);
    Bytes input;
    input.int16(static_cast<std::int64_t>(index.size())).append(index).append(data);
    seeds.emplace_back(reinterpret_cast<const char*>(input.get().data()), input.size());
  }
  return seeds;
}
