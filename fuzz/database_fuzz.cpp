// Arbitrary index and data files, to the reader of databases and, where the first bit is set, through the interfaces
// too. The input is that bit and the index file's length (16 bits, little-endian), the index file, and the data file.
#include <algorithm>
#include <cstring>

#include "com/error.h"
#include "com/not_set.h"
#include "fuzz/exact_form.h"
#include "fuzz/fuzz_target.h"
#include "persist/database_record.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace qs {
namespace {

using namespace database;

// Touches all that is delivered, so that the sanitizers see every byte, and checks what the sink may rely on.
class Toucher final : public RecordSink {
 public:
  explicit Toucher(const Catalogue& catalogue) : fields_(catalogue.fields()) {}

  void shortInteger(const Field& field, std::int16_t) override { requireOwn(field); }
  void longInteger(const Field& field, std::int32_t) override { requireOwn(field); }
  void number(const Field& field, double) override { requireOwn(field); }
  void text(const Field& field, WideView value) override {
    requireOwn(field);
    require(value.size() < kTextLimit && std::count(value.begin(), value.end(), OLECHAR{}) == 0);
  }
  void groups(const Field& field, std::span<const GroupCount> values) override {
    requireOwn(field);
    require(values.size() <= static_cast<std::size_t>(field.size));
    for (const GroupCount& group : values) sum_ = sum_ + group.type + group.count;
  }
  void equation(const Field& field, const EquationField& value) override {
    requireOwn(field);
    require(value.coefficients.size() == static_cast<std::size_t>(field.size));
    for (const double coefficient : value.coefficients) require(coefficient != kEmptyValue);
  }

 private:
  void requireOwn(const Field& field) const {
    require(field.index < fields_.size() && &field == &fields_[field.index]);
  }

  const DBFieldTable& fields_;
  volatile int sum_ = 0;
};

HRESULT readAll(std::span<const std::byte> index, std::span<const std::byte> data) {
  const Catalogue catalogue({index.begin(), index.end()});
  Toucher sink(catalogue);
  for (std::size_t i = 0; i < std::min<std::size_t>(catalogue.indexRecordCount(), 32); ++i) {
    const IndexRecord record = catalogue.indexRecord(i);
    require(catalogue.dataRecordOf(record.compound).has_value());
    readRecord(catalogue, data, record.dataRecord, sink);
    for (const Synonym& synonym : catalogue.synonymsOf(record.compound)) {
      guarded([&] { return require(catalogue.synonymText(synonym).size() < kTextLimit), S_OK; });
    }
  }
  return readRecord(catalogue, data, 0, sink);
}

// Each compound that was filled comes back the same from its exact form.
void readThroughInterfaces(std::string_view index, std::string_view data) {
  test::registerClasses();
  static const test::TemporaryDirectory directory;
  test::writeFile(directory.path() / kIndexFile, index);
  test::writeFile(directory.path() / kDataFile, data);
  const Bstr name(directory.name());
  for (const INT number : {7, 8, 9, 0}) {
    const auto compound = host::createInstance<ICompoundInitFromVelDB>(__uuidof(::COQSCompound));
    const HRESULT hr = compound->Init(name.get(), number);
    require(hr == S_OK || hr == S_FALSE || hr == E_FAIL);
    if (hr != S_OK) continue;
    requireExactForm(compound.get(), __uuidof(::COQSCompound));
    LONG dependencies = 0;
    double value = 0;
    ComPtr<IBasicCompound>::from(compound.get())->get_HVP(300, 100, eNoExtrapolation, &dependencies, &value);
  }
  const auto query = host::createInstance<IQueryLoader>(__uuidof(::COQSCompoundCollection));
  for (const OLECHAR* text : {OLESTR("7-7"), OLESTR("one"), OLESTR("Seven")}) {
    ComPtr<IIntegerArrayDisp> numbers;
    query->GetVelIDs(name.get(), Bstr(OLESTR("CASN")).get(), Bstr(text).get(), numbers.out());
  }
}

constexpr std::uint16_t kThroughInterfaces = 0x8000;

}  // namespace

// A database with a field of every kind, as files of the present version and as old ones.
std::vector<std::string> fuzzSeeds() {
  using namespace test;
  const Bytes index = indexFile(
      {fieldDefinition("PName", 8, "String"), fieldDefinition("TC", 8, "Double"),
       fieldDefinition("Family", 2, "Short Integer"), fieldDefinition("DDBID", 4, "Long Integer"),
       fieldDefinition("UNIFAC", 2, "Group"), fieldDefinition("HVP", 3, "Equation"),
       fieldDefinition("Mine", 8, "Double"), fieldDefinition("Flag", 1, "Byte"), fieldDefinition("Else", 3, "Picture")},
      {indexRecord(7, 0, "seven", "7-7"), indexRecord(8, 1, "eight")},
      {synonymRecord(7, "one"), synonymRecord(7, "two "), synonymRecord(8, "three")});
  std::vector<std::string> seeds;
  for (const std::uint16_t way : {std::uint16_t{0}, kThroughInterfaces})
    for (const double version : {2.0, 1.0}) {
      Bytes data = header(version, 156, 0, 0).zerosTo(156);
      for (const char* name : {"Seven", "Eight"}) {
        data.text(name, 8).real(500.0).int16(3).int32(174).int16(1).int16(2).int16(3).int16(4);
        data.int16(19)
            .reals({1, -32767.0, 3, 200, 400, 0, 1000})
            .int16(2)
            .int16(27)
            .reals({1, 1})
            .zerosTo(data.size() + 6);
        data.real(7.5).integer(1, 1).text("abc", 3).zerosTo(name[0] == 'S' ? 312 : 468);
      }
      std::string& seed = seeds.emplace_back();
      for (const Bytes& part : {Bytes().int16(static_cast<std::int64_t>(index.size() | way)), index, data})
        seed.append(reinterpret_cast<const char*>(part.get().data()), part.size());
    }
  return seeds;
}

}  // namespace qs

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  using namespace qs;
  std::uint16_t indexLength = 0;
  if (size < sizeof indexLength) return 0;
  std::memcpy(&indexLength, input, sizeof indexLength);
  const std::string_view files =
      std::string_view(reinterpret_cast<const char*>(input), size).substr(sizeof indexLength);
  const std::string_view index = files.substr(0, indexLength & ~kThroughInterfaces);
  const std::string_view data = files.substr(index.size());
  guarded([&] { return readAll(std::as_bytes(std::span(index)), std::as_bytes(std::span(data))); });
  if (indexLength & kThroughInterfaces) readThroughInterfaces(index, data);
  return 0;
}
