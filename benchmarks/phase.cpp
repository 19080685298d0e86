#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "benchmarks/bench.h"
#include "benchmarks/empty_objects.h"
#include "benchmarks/heap.h"
#include "com/error.h"
#include "com/host_arrays.h"

namespace qs::bench {
namespace {

using Phase = ComPtr<IBasicPhase>;
using Array = ComPtr<IRealArrayDisp>;

constexpr INT kCompounds = 100;
constexpr INT kMany = 1'000;
constexpr INT kEquilibriumPhases = 9;
constexpr INT kFeeds = 10;
constexpr int kArrays = 3 * (kEquilibriumPhases + kFeeds + 2);

ComPtr<ICompoundCollection> compounds(INT count) {
  auto collection = newCollection();
  check(collection->put_NumberOfCompounds(count));
  return collection;
}

Array arrayOf(INT count) { return newRealArray(std::vector<double>(static_cast<std::size_t>(count), 0.5)); }

// A phase with every array set.
Phase phaseOf(INT count) {
  auto phase = newPhase();
  const Array values = arrayOf(count);
  check(phase->Finalize(compounds(count).get()));
  check(phase->put_MolarComposition(values.get()));
  check(phase->put_LnFugacity(values.get()));
  check(phase->put_LnFugacityCoeff(values.get()));
  return phase;
}

ComPtr<IPhaseCollection> phasesOf(INT count) {
  auto phases = newPhaseCollection();
  check(phases->Finalize(compounds(count).get(), kEquilibriumPhases, kFeeds));
  return phases;
}

void addScalar(const std::string& prefix, const Phase& phase) {
  benchmark::RegisterBenchmark((prefix + "get a real").c_str(), [phase](benchmark::State& state) {
    for (auto _ : state) {
      double value = 0;
      phase->get_Temperature(&value);
      benchmark::DoNotOptimize(value);
    }
  });
  benchmark::RegisterBenchmark((prefix + "put a real").c_str(), [phase](benchmark::State& state) {
    double value = 300;
    for (auto _ : state) phase->put_Temperature(value += 1);
  });
}

template <class Got, class Given>
void addRoundTrip(const std::string& name, HRESULT (STDMETHODCALLTYPE IBasicPhase::*put)(Given*),
                  HRESULT (STDMETHODCALLTYPE IBasicPhase::*get)(Got**)) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    const Phase phase = phaseOf(kCompounds);
    const Array given = arrayOf(kCompounds);
    for (auto _ : state) {
      ComPtr<Got> got;
      check((phase.get()->*put)(given.get()));
      check((phase.get()->*get)(got.out()));
      benchmark::DoNotOptimize(got.get());
    }
  });
}

// As many resets and copies of few compounds as make up those of many.
void addLinear(INT count) {
  const std::string number = std::to_string(count);
  benchmark::RegisterBenchmark(("reset " + number).c_str(), [=](benchmark::State& state) {
    const auto phases = phasesOf(count);
    for (auto _ : state)
      for (INT done = 0; done < kMany; done += count) check(phases->ResetCollection(0));
  });
  benchmark::RegisterBenchmark(("copy " + number).c_str(), [=](benchmark::State& state) {
    const Phase source = phaseOf(count), copy = newPhase();
    for (auto _ : state)
      for (INT done = 0; done < kMany; done += count) check(copy->CopyProperties(source.get()));
  });
}

}  // namespace

void addPhases() {
  addScalar("empty ", Phase(emptyPhase()));
  addScalar("", newPhase());

  addRoundTrip("LnFugacity round trip", &IBasicPhase::put_LnFugacity, &IBasicPhase::get_LnFugacity);
  addRoundTrip("composition round trip", &IBasicPhase::put_MolarComposition, &IBasicPhase::get_MolarComposition);
  benchmark::RegisterBenchmark("copy an array", [](benchmark::State& state) {
    const Array given = arrayOf(kCompounds), kept = arrayOf(kCompounds);
    for (auto _ : state) check(kept->Copy(given.get()));
  });

  addLinear(kCompounds);
  addLinear(kMany);

  benchmark::RegisterBenchmark("finalize 21 phases", [](benchmark::State& state) {
    const auto phases = newPhaseCollection();
    const auto collection = compounds(kCompounds);
    for (auto _ : state) check(phases->Finalize(collection.get(), kEquilibriumPhases, kFeeds));
  });
  benchmark::RegisterBenchmark("make 63 arrays", [](benchmark::State& state) {
    const std::vector<double> values(kCompounds, -32767.0);
    std::vector<Array> arrays(kArrays);
    for (auto _ : state)
      for (Array& array : arrays) array = newRealArray(values);
  });
}

std::size_t blocksOfReset() {
  const auto phases = phasesOf(kCompounds);
  check(phases->ResetCollection(0));
  const heap::Count count;
  check(phases->ResetCollection(0));
  return count.blocks();
}

std::size_t blocksOfPhaseCopy() {
  const Phase source = phaseOf(kCompounds), copy = newPhase();
  check(copy->CopyProperties(source.get()));
  const heap::Count count;
  check(copy->CopyProperties(source.get()));
  return count.blocks();
}

std::size_t blocksOfArrayCopies() {
  const Array given = arrayOf(kCompounds), kept = arrayOf(kCompounds);
  const heap::Count count;
  for (int i = 0; i < 3; ++i) check(kept->Copy(given.get()));
  return count.blocks();
}

}  // namespace qs::bench
