// Measures the modules against bounds, each beside a yardstick of its own in the same run, and prints a line per
// target.
//   qs_bench DATABASE-DIRECTORY [options of Google Benchmark]
// The directory holds the database whose compounds are weighed. Exits with 0 whether or not the bounds are kept.
#include <benchmark/benchmark.h>

#include <iomanip>
#include <iostream>
#include <map>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/bench.h"
#include "benchmarks/compounds.h"
#include "benchmarks/evaluation.h"
#include "benchmarks/getters.h"
#include "benchmarks/heap.h"
#include "benchmarks/lines.h"
#include "hostkit/module_loader.h"

namespace qs::bench {
namespace {

// A bound on the time of a benchmark: `factor` times that of another and, when it is given, `extra` nanoseconds. Where
// it is given, the measured value is the time over `factor` times the yardstick; otherwise it is their ratio.
struct Target {
  std::string title;
  std::string subject;
  std::string yardstick;
  double factor;
  double extra = 0.0;
};

const Target kTargets[] = {
    {"get Compound, over an empty call", "get Compound", "empty get Compound", 1.0, 10.0},
    {"get Compound of a view, over a list's", "get Compound of a view", "get Compound", 1.0, 10.0},
    {"GetBasicCompound, over an empty call", "GetBasicCompound", "empty GetBasicCompound", 1.0, 10.0},
    {"GetBasicCompound of a view, over a list's", "GetBasicCompound of a view", "GetBasicCompound", 1.0, 10.0},
    {"adding and releasing 1,000,000 slots / memmove", "add and release slots", "memmove of the slots", 0.5},
    {"moving an entry over 100,000 / memmove", "move an entry", "memmove of the entries", 0.8},
    {"getter of a phase's real, over an empty call", "get a real", "empty get a real", 1.0, 1.0},
    {"put of a phase's real, over an empty call", "put a real", "empty put a real", 1.0, 1.0},
    {"LnFugacity put and got / copying one array", "LnFugacity round trip", "copy an array", 2.0},
    {"composition put and got / copying one array", "composition round trip", "copy an array", 2.0},
    {"ResetCollection, by compound, 1,000 / 100", "reset 1000", "reset 100", 1.2},
    {"CopyProperties, by compound, 1,000 / 100", "copy 1000", "copy 100", 1.2},
    {"finalizing 21 phases / making their 63 arrays", "finalize 21 phases", "make 63 arrays", 2.0},
};

// Keeps the median time of each benchmark, in nanoseconds: of the processor, which other programs on the machine
// disturb least, or as the benchmark itself takes it.
class Medians final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) throw std::runtime_error(run.run_name.str() + ": " + run.error_message);
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
        nanoseconds_[run.run_name.function_name] = time(run);
    }
  }

  // Nothing when the caller's options left it out.
  std::optional<double> of(const std::string& name) const {
    const auto found = nanoseconds_.find(name);
    return found == nanoseconds_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  static double time(const Run& run) {
    const bool ownTime = run.run_name.time_type == "manual_time";
    return (ownTime ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime()) /
           benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
  }

  std::map<std::string, double> nanoseconds_;
};

// The printed lines; those of times end with both medians.
class Lines {
 public:
  void print(const Target& target, const Medians& medians) {
    const auto subject = medians.of(target.subject);
    const auto yardstick = medians.of(target.yardstick);
    if (!subject || !yardstick) return;
    if (target.extra > 0.0) {
      print(target.title, *subject - target.factor * *yardstick, target.extra, "ns", 2);
      printBoth({*subject, *yardstick}, "ns");
    } else {
      print({target.title, {*subject, *yardstick}, target.factor, "ns"});
    }
  }
  void print(const Comparison& comparison) {
    print(comparison.title, comparison.pair.ratio(), comparison.bound, "x ", 2);
    printBoth(comparison.pair, comparison.unit);
  }
  void printCount(const std::string& title, std::size_t measured, std::size_t bound, const std::string& unit) {
    print(title, static_cast<double>(measured), static_cast<double>(bound), unit, 0);
    std::cout << "\n";
  }

  void add(int shortCount) { shortCount_ += shortCount; }
  int shortCount() const { return shortCount_; }

 private:
  void print(const std::string& title, double measured, double bound, const std::string& unit, int digits) {
    shortCount_ += !printLine(title, measured, bound, unit, digits);
  }

  static void printBoth(const Pair& pair, const std::string& unit) {
    std::cout << "   (" << std::setprecision(1) << pair.subject << " and " << pair.yardstick << ' ' << unit << ")\n";
  }

  int shortCount_ = 0;
};

// Whether the caller's options choose what has a name.
bool wanted(const std::string& name) {
  const std::string filter = benchmark::GetBenchmarkFilter();
  return filter.empty() || filter == "all" || std::regex_search(name, std::regex(filter));
}

void measure(const std::filesystem::path& program, const std::string& database) {
  host::LoadedModule containers("qscontainers"), hostKit("qshostkit");
  containers.registerClass(__uuidof(::COQSCompound));
  containers.registerClass(__uuidof(::COQSCompoundCollection));
  containers.registerClass(__uuidof(::COQSPhase));
  containers.registerClass(__uuidof(::COQSPhaseCollection));
  hostKit.registerClass(__uuidof(::HostRealArray));
  hostKit.registerClass(__uuidof(::HostIntegerArray));
  hostKit.registerClass(__uuidof(::XMLParser));

  const std::size_t emptyBytes = bytesOfEmptyCompound();
  const std::size_t largestBytes = bytesOfLargestCompound(database);

  addCollections();
  addPhases();
  Medians medians;
  benchmark::RunSpecifiedBenchmarks(&medians);
  benchmark::ClearRegisteredBenchmarks();

  Lines lines;
  if (wanted("getters")) lines.add(measureGetters({{{"DIPPR101", 2.3}, {"DIPPR106", 2.1}, {"DIPPR107", 1.4}}}));
  if (wanted("evaluation")) lines.add(measureEvaluation());
  for (const Target& target : kTargets) lines.print(target, medians);
  for (const Comparison& comparison : compareXml(database, wanted)) lines.print(comparison);
  for (const Comparison& comparison : compareDatabases(wanted)) lines.print(comparison);
  for (const Comparison& comparison : compareBanks(wanted)) lines.print(comparison);
  printStarts(program.parent_path() / "qs_first_value", database);
  lines.printCount("memory of an empty compound", emptyBytes, 2048, "B ");
  lines.printCount("memory of the bundled database's largest compound", largestBytes, 16384, "B ");
  lines.printCount("allocations of another ResetCollection", blocksOfReset(), 0, "  ");
  lines.printCount("allocations of another CopyProperties / its arrays'", blocksOfPhaseCopy(), blocksOfArrayCopies(),
                   "  ");
  std::cout << lines.shortCount() << " short\n";
}

}  // namespace

ComPtr<IBasicCompound> newCompound() { return newObject<IBasicCompound>(__uuidof(::COQSCompound)); }
ComPtr<ICompoundCollection> newCollection() {
  return newObject<ICompoundCollection>(__uuidof(::COQSCompoundCollection));
}
ComPtr<IBasicPhase> newPhase() { return newObject<IBasicPhase>(__uuidof(::COQSPhase)); }
ComPtr<IPhaseCollection> newPhaseCollection() { return newObject<IPhaseCollection>(__uuidof(::COQSPhaseCollection)); }

}  // namespace qs::bench

int main(int argc, char** argv) {
  // Defaults for Google Benchmark; the caller's options come later and win.
  std::vector<std::string> arguments = {argv[0], "--benchmark_repetitions=15", "--benchmark_min_time=0.05",
                                        "--benchmark_enable_random_interleaving=true"};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  if (count != 2) {
    std::cerr << "usage: qs_bench DATABASE-DIRECTORY [options of Google Benchmark]\n";
    return 2;
  }
  try {
    qs::bench::measure(pointers[0], pointers[1]);
  } catch (const std::exception& error) {
    std::cerr << "qs_bench: " << error.what() << "\n";
    return 1;
  }
}
