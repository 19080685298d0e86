// What a host does until it has the first value, timed: qs_bench starts it.
//   qs_first_value DATABASE-DIRECTORY TIME
// TIME is when the process was started, in nanoseconds of the monotonic clock. Prints how long the parts took, in
// nanoseconds: until main, loading the module, creating a compound, filling it, getting a value.
#include <ctime>
#include <iostream>
#include <string>

#include "com/bstr.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace {

long long now() {
  std::timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const long long started = now();
  qs::host::LoadedModule containers("qscontainers");
  containers.registerClass(__uuidof(::COQSCompound));
  const long long loaded = now();
  const auto compound = qs::host::createInstance<IBasicCompound>(__uuidof(::COQSCompound));
  const long long created = now();
  const std::string directory = argv[1];
  const HRESULT filled = qs::ComPtr<ICompoundInitFromVelDB>::from(compound.get())
                             ->Init(qs::Bstr(qs::WideString(directory.begin(), directory.end())).get(), 19);
  const long long full = now();
  LONG dependencies = 0;
  double value = 0;
  const HRESULT got = compound->get_VP(373.15, 101.325, eNoExtrapolation, &dependencies, &value);
  const long long end = now();
  if (filled != S_OK || got != S_OK) return 1;
  std::cout << started - std::stoll(argv[2]) << ' ' << loaded - started << ' ' << created - loaded << ' '
            << full - created << ' ' << end - full << '\n';
}
