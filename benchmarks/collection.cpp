#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "benchmarks/bench.h"
#include "benchmarks/empty_objects.h"
#include "com/error.h"
#include "com/host_arrays.h"
#include "hostkit/module_loader.h"

namespace qs::bench {
namespace {

using Collection = ComPtr<ICompoundCollection>;

constexpr INT kCompounds = 1'000;
constexpr INT kManySlots = 1'000'000;
constexpr INT kManyEntries = 100'000;

// A view of every other compound, backwards.
Collection everyOther(const Collection& parent) {
  std::vector<LONG> positions;
  for (LONG i = kCompounds - 1; i >= 0; i -= 2) positions.push_back(i);
  Collection view;
  check(ComPtr<ISubCompList>::from(parent.get())->CreateSubCompList(newIntegerArray(positions).get(), view.out()));
  return view;
}

// Gets compounds at changing positions and releases them; an empty collection gives none.
template <class I>
void addGet(const std::string& name, const Collection& collection, INT count,
            HRESULT (STDMETHODCALLTYPE ICompoundCollection::*get)(INT, I**)) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    ICompoundCollection* object = collection.get();
    INT index = 0;
    for (auto _ : state) {
      I* compound = nullptr;
      (object->*get)(index, &compound);
      if (compound) compound->Release();
      benchmark::DoNotOptimize(compound);
      index = (index + 7) % count;
    }
  });
}

template <class I>
void addGets(const std::string& name, HRESULT (STDMETHODCALLTYPE ICompoundCollection::*get)(INT, I**)) {
  const auto collection = newCollection();
  for (INT i = 0; i < kCompounds; ++i) check(collection->AddCompound(newCompound().get()));
  addGet("empty " + name, Collection(emptyCollection()), kCompounds, get);
  addGet(name, collection, kCompounds, get);
  addGet(name + " of a view", everyOther(collection), kCompounds / 2, get);
}

void addMemmove(const std::string& name, std::size_t bytes) {
  benchmark::RegisterBenchmark(name.c_str(), [bytes](benchmark::State& state) {
    const std::vector<std::byte> from(bytes);
    std::vector<std::byte> to(bytes);
    for (auto _ : state) {
      std::memmove(to.data(), from.data(), bytes);
      benchmark::ClobberMemory();
    }
  });
}

}  // namespace

void addCollections() {
  addGets("get Compound", &ICompoundCollection::get_Compound);
  addGets("GetBasicCompound", &ICompoundCollection::GetBasicCompound);

  benchmark::RegisterBenchmark("add and release slots", [](benchmark::State& state) {
    const auto collection = newCollection();
    for (auto _ : state) {
      check(collection->put_NumberOfCompounds(kManySlots));
      check(collection->put_NumberOfCompounds(0));
    }
  });
  addMemmove("memmove of the slots", kManySlots * sizeof(IBasicCompound*));

  benchmark::RegisterBenchmark("move an entry", [](benchmark::State& state) {
    const auto collection = newCollection();
    const auto compound = newCompound();
    for (INT i = 0; i < kManyEntries; ++i) check(collection->AddCompound(compound.get()));
    const auto order = ComPtr<ICompoundManipulation>::from(collection.get());
    bool toEnd = false;
    for (auto _ : state) {
      toEnd = !toEnd;
      order->MoveCompound(toEnd ? 0 : kManyEntries - 1, toEnd ? kManyEntries : 0);
    }
  });
  addMemmove("memmove of the entries", kManyEntries * sizeof(IBasicCompound*));
}

}  // namespace qs::bench
