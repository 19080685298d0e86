// What `qsdb doctor` finds about the installation. Each operating system has its own examination: doctor_windows.cpp
// and doctor_posix.cpp.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "interfaces/interfaces.h"

namespace qs::tools {

// A class that hosts need and its module; first the classes that others need to be created.
struct NeededClass {
  const char* name;
  const CLSID* clsid;
  const char* module;
};
inline const NeededClass kNeededClasses[] = {
    {"array of integers", &__uuidof(::HostIntegerArray), "qshostkit"},
    {"array of reals", &__uuidof(::HostRealArray), "qshostkit"},
    {"matrix of reals", &__uuidof(::HostRealMatrix), "qshostkit"},
    {"COQSCompound", &__uuidof(::COQSCompound), "qscontainers"},
    {"COQSCompoundCollection", &__uuidof(::COQSCompoundCollection), "qscontainers"},
    {"COQSPhase", &__uuidof(::COQSPhase), "qscontainers"},
    {"COQSPhaseCollection", &__uuidof(::COQSPhaseCollection), "qscontainers"},
};

// The findings, line by line, and what to do about the faults; in UTF-8.
struct Report {
  std::vector<std::string> lines, remedies;
  int faults = 0;

  void tell(std::string line) { lines.push_back("   " + std::move(line)); }
  // A remedy for several faults is listed once.
  void complain(const std::string& fault, const std::string& remedy) {
    lines.push_back("!  " + fault);
    ++faults;
    if (std::ranges::find(remedies, remedy) == remedies.end()) remedies.push_back(remedy);
  }
};

Report examineInstallation();

}  // namespace qs::tools
