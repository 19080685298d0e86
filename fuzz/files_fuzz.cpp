// Both files of a database through the interfaces. The input is the index file's length (16 bits, little-endian), the
// index file, and the data file. Each compound that was filled comes back the same from
// its exact form.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "fuzz/exact_form.h"
#include "fuzz/fuzz_target.h"
#include "tests/support/database_builder.h"

namespace qs {
namespace {

using namespace test;

void write(const std::filesystem::path& path, const char* data, std::size_t size) {
  std::ofstream(path, std::ios::binary).write(data, static_cast<std::streamsize>(size));
}

void read(const Bstr& directory) {
  for (const INT number : {7, 8, 9, 0}) {
    const auto compound = host::createInstance<ICompoundInitFromVelDB>(__uuidof(::COQSCompound));
    const HRESULT hr = compound->Init(directory.get(), number);
    require(hr == S_OK || hr == S_FALSE || hr == E_FAIL);
    if (hr != S_OK) continue;
    requireExactForm(compound.get(), __uuidof(::COQSCompound));
    const auto values = ComPtr<IBasicCompound>::from(compound.get());
    LONG dependencies = 0;
    double value = 0;
    values->get_HVP(300, 100, eNoExtrapolation, &dependencies, &value);
  }
  const auto query = host::createInstance<IQueryLoader>(__uuidof(::COQSCompoundCollection));
  for (const OLECHAR* text : {OLESTR("7-7"), OLESTR("one"), OLESTR("Seven")}) {
    ComPtr<IIntegerArrayDisp> numbers;
    query->GetVelIDs(directory.get(), Bstr(OLESTR("CASN")).get(), Bstr(text).get(), numbers.out());
  }
}

}  // namespace

std::vector<std::string> fuzzSeeds() {
  const Bytes index =
      indexFile({fieldDefinition("PName", 8, "String"), fieldDefinition("TC", 8, "Double"),
                 fieldDefinition("Family", 2, "Short Integer"), fieldDefinition("DDBID", 4, "Long Integer"),
                 fieldDefinition("UNIFAC", 2, "Group"), fieldDefinition("HVP", 3, "Equation"),
                 fieldDefinition("Mine", 8, "Double"), fieldDefinition("Else", 3, "Picture")},
                {indexRecord(7, 0, "seven", "7-7"), indexRecord(8, 1, "eight")},
                {synonymRecord(7, "one"), synonymRecord(7, "two "), synonymRecord(8, "three")});
  std::vector<std::string> seeds;
  for (const double version : {2.0, 1.0}) {
    Bytes data = header(version, 156, 0, 0).zerosTo(156);
    for (const char* name : {"Seven", "Eight"}) {
      data.text(name, 8).real(500.0).int16(3).int32(174).int16(1).int16(2).int16(3).int16(4);
      data.int16(19)
          .int16(0)
          .int16(1)
          .int16(1)
          .reals({1, 2, 3, 200, 400, 0, 1000, 1, 1})
          .real(7.5)
          .zerosTo(data.size() + 3);
    }
    std::string seed;
    for (const Bytes& part : {Bytes().int16(static_cast<std::int64_t>(index.size())), index, data.zerosTo(468)})
      seed.append(reinterpret_cast<const char*>(part.get().data()), part.size());
    seeds.push_back(seed);
  }
  return seeds;
}

}  // namespace qs

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  using namespace qs;
  std::uint16_t indexLength = 0;
  if (size < sizeof indexLength) return 0;
  test::registerClasses();
  static const test::TemporaryDirectory directory;
  static const Bstr name(directory.name());
  std::memcpy(&indexLength, input, sizeof indexLength);
  const char* files = reinterpret_cast<const char*>(input) + sizeof indexLength;
  size -= sizeof indexLength;
  const std::size_t split = std::min<std::size_t>(indexLength, size);
  write(directory.path() / "purecmp1.idx", files, split);
  write(directory.path() / "purecmp1.dat", files + split, size - split);
  read(name);
  return 0;
}
