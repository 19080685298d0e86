// Arguments that name banks, compounds, keys and results. What does not exist throws std::runtime_error with what is
// near it.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::tools {

inline constexpr const char* kBankHelp = "A database's directory, or a compound source in JSON";
inline constexpr const char* kCompoundHelp = "A number, name, synonym or CAS number";

// A database or a source in JSON. What cannot be read of it becomes findings; nothing at all is an error.
bank::Source openBank(const std::string& place, std::vector<bank::Finding>& findings);

// The same; `err` is told how many findings there are.
bank::Source openBank(const std::string& place, std::ostream& err);

// The same, all of it: a fault of a source is an error. `err` is told what a database has and a source cannot hold.
bank::Source openWhole(const std::string& place, std::ostream& err);

// The one compound with a number, name, synonym or CAS number.
const bank::Compound& compoundCalled(const bank::Source& bank, const std::string& text);

Key keyCalled(const std::string& name);

// Writes what a command makes to a file, in place of one that is there; to `out` where the file has no name.
void writeResult(const std::string& text, const std::string& file, std::ostream& out);

}  // namespace qs::tools
