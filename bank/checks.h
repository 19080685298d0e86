// Examines the values of a source or a database; docs/checks.md describes each rule.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::bank {

class Subject;
class Findings;

struct Rule {
  std::string_view name;
  Severity severity;
  std::string_view reason;
  // How it is examined, one of the two; neither for rules of those who read a file.
  void (*ofCompound)(const Subject&, Findings&) = nullptr;
  void (*ofBank)(const Source&, Findings&) = nullptr;
};

std::span<const Rule> rules();

// What the rules find, in the order of the compounds and of lines; with the source's waivers. `done` is told how many
// compounds have been examined.
std::vector<Finding> check(
    const Source& source, const std::function<void(std::size_t)>& done = [](std::size_t) {});

}  // namespace qs::bank
