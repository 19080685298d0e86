#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "benchmarks/bench.h"

namespace qs::bench {
namespace {

constexpr std::array<const char*, 5> kParts = {"to main", "load the module", "create", "Init", "get"};

// In nanoseconds.
using Parts = std::array<double, kParts.size()>;

Parts runOnce(const std::string& program, const std::string& database) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(fdopen(ends[0], "r"), &std::fclose);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  std::string arguments[] = {program, database, std::to_string(now.tv_sec * 1'000'000'000LL + now.tv_nsec)};
  char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
  pid_t child = 0;
  const int failed = posix_spawn(&child, program.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  Parts parts{};
  bool complete = failed == 0;
  for (double& part : parts) complete = complete && std::fscanf(output.get(), "%lf", &part) == 1;
  if (failed == 0) waitpid(child, nullptr, 0);
  if (!complete) throw std::runtime_error(program + " has no value");
  return parts;
}

}  // namespace

void printStarts(const std::filesystem::path& program, const std::filesystem::path& database) {
  for (int run = 1; run <= 10; ++run) {
    const Parts parts = runOnce(program.string(), database.string());
    if (run != 1 && run != 10) continue;
    double sum = 0.0;
    for (const double part : parts) sum += part;
    std::cout << std::left << std::setw(50) << "start of a process to the first value, run " + std::to_string(run)
              << std::right << std::fixed << std::setprecision(0) << std::setw(8) << sum / 1000 << " us   (";
    for (std::size_t i = 0; i < parts.size(); ++i)
      std::cout << (i > 0 ? ", " : "") << kParts[i] << ' ' << std::setprecision(1) << parts[i] / 1000;
    std::cout << ")\n";
  }
}

}  // namespace qs::bench
