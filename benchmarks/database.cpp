#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <future>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <span>
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

void fill(ICompoundInitFromVelDB* compound, BSTR directory, INT number) {
  if (compound->Init(directory, number) != S_OK)
    throw std::runtime_error("compound " + std::to_string(number) + " cannot be filled");
}
void fill(IBasicCompound* compound, BSTR directory, INT number) {
  fill(ComPtr<ICompoundInitFromVelDB>::from(compound).get(), directory, number);
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

// The processor's time for a call, in nanoseconds.
template <class Call>
double timeOf(Call&& call) {
  const double start = processorTime();
  call();
  return (processorTime() - start) * 1e9;
}

// What a call returns in a thread of its own, which has opened nothing before.
template <class Call>
auto inNewThread(Call&& call) {
  return std::async(std::launch::async, std::forward<Call>(call)).get();
}

// Filling one compound again and again, held against reading the bytes of the data records.
Pair initPair(const Database& database) {
  constexpr std::size_t kCompounds = 500;
  const auto compound = newCompound();
  const auto loader = ComPtr<ICompoundInitFromVelDB>::from(compound.get());
  const auto catalogue = openCatalogue(viewOf(database.directory.get()));
  std::vector<std::byte> buffer(catalogue->recordBytes());
  std::vector<std::uint64_t> offsets;
  for (const INT number : database.numbers)
    offsets.push_back((static_cast<std::uint64_t>(catalogue->dataRecordOf(number).value()) + 1) * kRecordLength);
  std::size_t next = 0;
  const auto timeOfEach = [&](const auto& call) {
    return timeOf([&] {
             for (std::size_t i = 0; i < kCompounds; ++i) call((next + i) % offsets.size());
           }) /
           kCompounds;
  };
  return inTurns(
      101,
      [&] {
        next += kCompounds;
        return timeOfEach([&](std::size_t i) { fill(loader.get(), database.directory.get(), database.numbers[i]); });
      },
      [&] { return timeOfEach([&](std::size_t i) { readBytes(database.dataPath, offsets[i], buffer); }); });
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

// Time per compound when every compound of a database is filled so many times.
template <class Store>
double fillAll(const Database& database, int times = 1) {
  double time = 0.0;
  for (int i = 0; i < times; ++i) {
    Store store;
    time += timeOf([&] {
      for (const INT number : database.numbers) {
        auto compound = newCompound();
        fill(compound.get(), database.directory.get(), number);
        store.add(std::move(compound));
      }
    });
  }
  return time / (times * static_cast<double>(database.numbers.size()));
}

// The first filling in a process, which reads the index, held against reading its bytes.
Pair firstInitPair(const Database& database) {
  return inTurns(
      31,
      [&] {
        return inNewThread([&] {
          const auto compound = newCompound();
          return timeOf([&] { fill(compound.get(), database.directory.get(), 1); });
        });
      },
      [&] {
        return inNewThread([&] {
          return timeOf([&] {
            const auto size = static_cast<std::size_t>(std::filesystem::file_size(database.indexPath));
            const auto buffer = std::make_unique_for_overwrite<std::byte[]>(size);
            readBytes(database.indexPath, 0, {buffer.get(), size});
            benchmark::DoNotOptimize(buffer.get());
          });
        });
      });
}

// The first filling in a thread, held against the next one in a thread that has filled others.
Pair secondThreadPair(const Database& database) {
  std::size_t next = 0;
  const auto fillNext = [&] {
    const auto compound = newCompound();
    const INT number = database.numbers[next++ % database.numbers.size()];
    return timeOf([&] { fill(compound.get(), database.directory.get(), number); });
  };
  const auto used = newCompound();
  fill(used.get(), database.directory.get(), 1);
  return inTurns(
      501, [&] { return inNewThread(fillNext); }, fillNext);
}

// A query by name, held against reading both files once.
Pair queryPair(const Database& database) {
  const auto query = ComPtr<IQueryLoader>::from(newCollection().get());
  const Bstr field(OLESTR("PName")), name(OLESTR("compound 4711"));
  std::vector<std::byte> buffer(std::size_t{1} << 18);
  return inTurns(
      15,
      [&] {
        ComPtr<IIntegerArrayDisp> numbers;
        const double time =
            timeOf([&] { check(query->GetVelIDs(database.directory.get(), field.get(), name.get(), numbers.out())); });
        LONG number = 0;
        if (!numbers || numbers->get_IthValue(0, &number) != S_OK || number != 4711)
          throw std::runtime_error("a compound is not found by its name");
        return time;
      },
      [&] {
        return timeOf([&] {
          for (const std::string& path : {database.indexPath, database.dataPath}) {
            const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
            if (!file) throw std::runtime_error("cannot open " + path);
            while (std::fread(buffer.data(), 1, buffer.size(), file.get()) == buffer.size()) benchmark::ClobberMemory();
          }
        });
      });
}

// Bytes that the process holds more while so many threads each have filled a compound that they keep.
std::size_t bytesOfThreads(const Database& database, std::size_t count) {
  const heap::Count counted;
  std::promise<void> end;
  const std::shared_future<void> ended = end.get_future();
  std::vector<std::thread> threads;
  // One after the other, since one at a time is counted.
  for (std::size_t i = 0; i < count; ++i) {
    std::promise<void> filled;
    threads.emplace_back([&] {
      const auto compound = newCompound();
      fill(compound.get(), database.directory.get(), database.numbers[i]);
      filled.set_value();
      ended.wait();
    });
    filled.get_future().get();
  }
  const std::size_t bytes = counted.bytes();
  end.set_value();
  for (std::thread& thread : threads) thread.join();
  return bytes;
}

struct Files {
  test::TemporaryDirectory directory;
  Database small = writeDatabase(directory.path() / "small", 1'000);
  Database large = writeDatabase(directory.path() / "large", 10'000);
  Database largest = writeDatabase(directory.path() / "largest", 100'000);
};

}  // namespace

std::vector<Comparison> compareDatabases(const std::function<bool(const std::string&)>& wanted) {
  std::optional<Files> files;
  std::vector<Comparison> made;
  const auto add = [&](const char* name, const char* title, double bound, const std::function<Pair()>& pair,
                       const char* unit = "ns") {
    if (!wanted(name)) return;
    if (!files) {
      files.emplace();
      // Later files are younger than the time for which they would be read twice.
      std::this_thread::sleep_for(std::chrono::seconds(3));
    }
    made.push_back({title, pair(), bound, unit});
  };
  add("Init", "Init from 10,000 compounds / reading its record", 2.2, [&] { return initPair(files->large); });
  add("fill 10000", "filling one of 10,000 / one of 1,000", 1.2, [&] {
    return inTurns(
        15, [&] { return fillAll<InVector>(files->large); }, [&] { return fillAll<InVector>(files->small, 10); });
  });
  add("fill collection", "filling a collection / one compound after another", 1.1, [&] {
    return inTurns(
        15, [&] { return fillAll<InCollection>(files->large); }, [&] { return fillAll<InVector>(files->large); });
  });
  add("first Init", "first Init of a process / reading the index", 5.0, [&] { return firstInitPair(files->large); });
  add("Init in a new thread", "first Init of a second thread / next of the first", 2.0,
      [&] { return secondThreadPair(files->largest); });
  add("GetVelIDs", "GetVelIDs over 100,000 / reading both files once", 3.0, [&] { return queryPair(files->largest); });
  add(
      "threads' memory", "memory of 16 threads over 100,000 / of one", 1.1,
      [&] {
        const auto one = static_cast<double>(bytesOfThreads(files->largest, 1));
        return Pair{static_cast<double>(bytesOfThreads(files->largest, 16)), one};
      },
      "B");
  return made;
}

std::size_t bytesOfEmptyCompound() {
  newCompound();  // what the module allocates once
  const heap::Count count;
  const auto compound = newCompound();
  return count.bytes();
}

std::size_t bytesOfLargestCompound(const std::filesystem::path& database) {
  const Bstr directory(database.string<OLECHAR>());
  const auto keepsCatalogue = newCompound();
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
