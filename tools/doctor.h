// What `qsdb doctor` finds out about the installation. The examination differs between the operating systems, hence
// doctor_windows.cpp and doctor_posix.cpp.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "interfaces/interfaces.h"

namespace qs::tools {

// A class that hosts need, and the module that brings it; first those that others need to be created.
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

// What was found, line by line, and what to do about the faults among it; all in UTF-8.
struct Report {
  std::vector<std::string> lines, remedies;
  int faults = 0;

  void tell(std::string line) { lines.push_back("   " + std::move(line)); }
  // A remedy of several faults stands once.
  void complain(const std::string& fault, const std::string& remedy) {
    lines.push_back("!  " + fault);
    ++faults;
    if (std::ranges::find(remedies, remedy) == remedies.end()) remedies.push_back(remedy);
  }
};

Report examineInstallation();

}  // namespace qs::tools
