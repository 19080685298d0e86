#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <future>
#include <memory>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/bench.h"
#include "benchmarks/heap.h"
#include "com/bstr.h"
#include "com/error.h"
#include "persist/database_writer.h"
#include "persist/shared_catalogues.h"
#include "tests/support/database_builder.h"

namespace qs::bench {
namespace {

using namespace database;

constexpr Key kConstants[] = {Key::MW,   Key::TC,  Key::PC, Key::VC, Key::ACEN,   Key::NBP,   Key::SLDN,
                              Key::DM,   Key::RG,  Key::MP, Key::RI, Key::HFUS,   Key::FP,    Key::FLML,
                              Key::FLMU, Key::AIT, Key::ZC, Key::SP, Key::IGHF25, Key::IGGF25};

// A compound with 20 constants, 6 correlations, 3 synonyms and 2 groups.
CompoundData compoundNumber(std::int32_t number) {
  CompoundData compound;
  compound.number = number;
  const std::string tail = std::to_string(number);
  compound.name = "Compound " + tail;
  compound.iupacName = "2-methyl-compound-" + tail;
  compound.formula = "C6H14";
  compound.cas = tail + "-00-0";
  compound.family = eHydrocarbon;
  compound.nonCondensable = false;
  compound.dipprId = compound.ddbId = number;
  compound.unifac = {{1, 2}, {2, 4}};
  for (const char* prefix : {"isocompound ", "methyl compound ", "trade name "}) {
    compound.synonyms.push_back(prefix + tail);
  }
  for (const Key key : kConstants) compound.constants[key] = 100.0 + number + static_cast<int>(key);
  compound.correlations = {
      {Key::VP, {PropCurveDIPPR101, {73.649, -7258.2, -7.3037, 4.1653e-6, 2.0}, 273.16, 647.096}},
      {Key::LVS, {PropCurveDIPPR101, {-52.843, 3703.6, 5.866, -5.879e-29, 10.0}, 273.16, 646.15}},
      {Key::LDN, {PropCurveVELDB7, {58.256, 0.26457, 425.17, 0.27138}, 134.86, 425.16}},
      {Key::HVP, {PropCurveDIPPR106, {36258.0, 0.83741, -0.83676, 0.41526, -0.007606, 425.12}, 134.86, 425.12}},
      {Key::LCP, {PropCurveVELDB1, {276.37, -2.0901, 8.125e-3, -1.4116e-5, 9.3701e-9}, 273.16, 533.15}},
      {Key::IGH, {PropCurveVELDB3, {1.0, 33.0, 1e-3, 1e-6, 1e-9, 1e-12, 10.0}, 50.0, 1500.0}},
  };
  return compound;
}

struct Database {
  Bstr directory;
  std::string indexPath, dataPath;
  std::vector<INT> numbers;  // of its compounds
};

Database writeDatabase(const std::filesystem::path& directory, std::int32_t count) {
  std::vector<CompoundData> compounds;
  for (std::int32_t number = 1; number <= count; ++number) compounds.push_back(compoundNumber(number));
  saveDatabase(encodeDatabase(compounds), directory);
  Database written{Bstr(directory.string<OLECHAR>()), (directory / kIndexFile).string(),
                   (directory / kDataFile).string(), std::vector<INT>(compounds.size())};
  std::iota(written.numbers.begin(), written.numbers.end(), 1);
  std::ranges::shuffle(written.numbers, std::mt19937());
  return written;
}

void fill(IBasicCompound* compound, BSTR directory, INT number) {
  if (ComPtr<ICompoundInitFromVelDB>::from(compound)->Init(directory, number) != S_OK)
    throw std::runtime_error("compound " + std::to_string(number) + " cannot be filled");
}

// Fills a compound twice, with so much time between that the thread's catalogue needs no further proof.
void warmUp(const Database& database) {
  const auto compound = newCompound();
  fill(compound.get(), database.directory.get(), 1);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  fill(compound.get(), database.directory.get(), 1);
}

// Opens a file, reads from an offset and closes it, as plainly as the C library can.
void readBytes(const std::string& path, std::uint64_t offset, std::span<std::byte> buffer) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) throw std::runtime_error("cannot open " + path);
  const bool positioned = offset == 0 || std::fseek(file, static_cast<std::int64_t>(offset), SEEK_SET) == 0;
  const bool complete = positioned && std::fread(buffer.data(), 1, buffer.size(), file) == buffer.size();
  std::fclose(file);
  if (!complete) throw std::runtime_error("cannot read " + path);
}

void initBenchmark(benchmark::State& state, const Database& database) {
  warmUp(database);
  const auto compound = newCompound();
  const auto loader = ComPtr<ICompoundInitFromVelDB>::from(compound.get());
  std::size_t i = 0;
  HRESULT worst = S_OK;
  for (auto _ : state) {
    worst |= loader->Init(database.directory.get(), database.numbers[i++ % database.numbers.size()]);
  }
  if (worst != S_OK) throw std::runtime_error("not every compound can be filled");
}

void readRecordBenchmark(benchmark::State& state, const Database& database) {
  const auto catalogue = openCatalogue(viewOf(database.directory.get()));
  std::vector<std::byte> buffer(catalogue->recordBytes());
  std::vector<std::uint64_t> offsets;
  for (const INT number : database.numbers) {
    offsets.push_back((static_cast<std::uint64_t>(catalogue->dataRecordOf(number).value()) + 1) * kRecordLength);
  }
  std::size_t i = 0;
  for (auto _ : state) readBytes(database.dataPath, offsets[i++ % offsets.size()], buffer);
}

// Where compounds live side by side until all are filled.
struct InVector {
  std::vector<ComPtr<IBasicCompound>> compounds;
  void add(ComPtr<IBasicCompound> compound) { compounds.push_back(std::move(compound)); }
};
struct InCollection {
  ComPtr<ICompoundCollection> compounds = newCollection();
  void add(const ComPtr<IBasicCompound>& compound) { check(compounds->AddCompound(compound.get())); }
};

// Time per compound.
template <class Store>
void fillBenchmark(benchmark::State& state, const Database& database) {
  warmUp(database);
  for (auto _ : state) {
    Store store;
    const auto start = processorTime();
    for (const INT number : database.numbers) {
      auto compound = newCompound();
      fill(compound.get(), database.directory.get(), number);
      store.add(std::move(compound));
    }
    const double elapsed = processorTime() - start;
    state.SetIterationTime(elapsed / static_cast<double>(database.numbers.size()));
  }
}

// Times a function in a thread of its own, which has read nothing before.
void inNewThread(benchmark::State& state, const std::function<void()>& function) {
  for (auto _ : state) {
    const double elapsed = std::async(std::launch::async, [&function] {
                             const auto start = processorTime();
                             function();
                             return processorTime() - start;
                           }).get();
    state.SetIterationTime(elapsed);
  }
}

}  // namespace

struct Databases::Files {
  test::TemporaryDirectory directory;
  Database large = writeDatabase(directory.path() / "large", 10'000);
  Database small = writeDatabase(directory.path() / "small", 1'000);
};

Databases::Databases() : files_(std::make_unique<Files>()) {}
Databases::~Databases() = default;

void Databases::addBenchmarks() {
  const Database& large = files_->large;
  const Database& small = files_->small;
  using benchmark::RegisterBenchmark;
  RegisterBenchmark("Init", [&large](benchmark::State& state) { initBenchmark(state, large); });
  RegisterBenchmark("read record", [&large](benchmark::State& state) { readRecordBenchmark(state, large); });
  RegisterBenchmark("fill 10000", [&large](benchmark::State& state) { fillBenchmark<InVector>(state, large); })
      ->UseManualTime()
      ->Iterations(2);
  RegisterBenchmark("fill collection", [&large](benchmark::State& state) { fillBenchmark<InCollection>(state, large); })
      ->UseManualTime()
      ->Iterations(2);
  RegisterBenchmark("fill 1000", [&small](benchmark::State& state) { fillBenchmark<InVector>(state, small); })
      ->UseManualTime()
      ->Iterations(20);
  RegisterBenchmark("Init in a new thread", [&large](benchmark::State& state) {
    const auto compound = newCompound();
    inNewThread(state, [&] { fill(compound.get(), large.directory.get(), 1); });
  })->UseManualTime();
  RegisterBenchmark("read index", [&large](benchmark::State& state) {
    inNewThread(state, [&] {
      const auto size = static_cast<std::size_t>(std::filesystem::file_size(large.indexPath));
      const auto buffer = std::make_unique_for_overwrite<std::byte[]>(size);
      readBytes(large.indexPath, 0, {buffer.get(), size});
      benchmark::DoNotOptimize(buffer.get());
    });
  })->UseManualTime();
}

std::size_t bytesOfEmptyCompound() {
  newCompound();  // what the module allocates once
  const heap::Count count;
  const auto compound = newCompound();
  return count.bytes();
}

std::size_t bytesOfLargestCompound(const std::filesystem::path& database) {
  const Bstr directory(database.string<OLECHAR>());
  const auto catalogue = openCatalogue(viewOf(directory.get()));
  std::size_t largest = 0;
  for (std::size_t i = 0; i < catalogue->indexRecordCount(); ++i) {
    const INT number = catalogue->indexRecord(i).compound;
    fill(newCompound().get(), directory.get(), number);  // what the thread keeps of the database
    const heap::Count count;
    const auto compound = newCompound();
    fill(compound.get(), directory.get(), number);
    largest = std::max(largest, count.bytes());
  }
  return largest;
}

}  // namespace qs::bench
