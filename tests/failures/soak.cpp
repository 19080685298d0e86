// qs_soak SECONDS THREADS KIB: every scenario again and again, in threads that each own their objects and share one
// database. Fails when an object is left, or when memory has grown by more than KIB in the second half of the time.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <iostream>
#include <thread>

#include "tests/failures/scenario_data.h"

namespace {

using namespace qs::test;
using Clock = std::chrono::steady_clock;

void repeat(const ScenarioData& data, Clock::time_point end, std::atomic<long>& runs) {
  while (Clock::now() < end)
    for (const Scenario& scenario : data.scenarios) {
      Call call(data.texts);
      for (const Step& step : scenario.steps) call.run(step);
      ++runs;
    }
}

// In KiB.
long residentMemory() {
  long total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return std::cerr << "usage: qs_soak SECONDS THREADS KIB\n", EXIT_FAILURE;
  const auto seconds = std::chrono::duration<double>(std::stod(argv[1]));
  const ScenarioData data;
  std::atomic<long> runs = 0;
  const auto begin = Clock::now();
  const auto at = [&](double part) { return begin + std::chrono::duration_cast<Clock::duration>(part * seconds); };
  std::vector<std::thread> threads;
  for (int i = std::stoi(argv[2]); i > 0; --i) threads.emplace_back([&] { repeat(data, at(1), runs); });
  std::this_thread::sleep_until(at(0.5));
  const long half = residentMemory();
  std::this_thread::sleep_until(at(0.98));
  const long whole = residentMemory();
  for (std::thread& thread : threads) thread.join();
  std::cout << runs << " scenarios in " << seconds.count() << " s and " << threads.size() << " threads; memory " << half
            << " KiB at half of the time, " << whole << " KiB at the end\n";
  return nothingAlive() && whole <= half + std::stol(argv[3]) ? EXIT_SUCCESS : EXIT_FAILURE;
}
