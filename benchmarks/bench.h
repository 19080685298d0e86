// What each file of the program measures. Benchmarks are registered under the names that main.cpp's table of targets
// refers to; all use the classes through the loaded modules, which must be registered before.
#pragma once

#include <cstddef>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "benchmarks/pairs.h"
#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace qs::bench {

// Throw std::runtime_error when the class is not there.
ComPtr<IBasicCompound> newCompound();
ComPtr<ICompoundCollection> newCollection();
ComPtr<IBasicPhase> newPhase();
ComPtr<IPhaseCollection> newPhaseCollection();

// What the calling thread has used of a processor, in seconds.
inline double processorTime() {
  std::timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// xml.cpp: comparisons of a compound of the bundled database as XML, of those whose names are wanted:
//   "store"          its text, and the text's fragments and numbers put into one string
//   "store 10000"    time per compound when a collection of so many is stored, and one of 100
//   "read"           a new compound from its text, and the parser alone over the same text
std::vector<Comparison> compareXml(const std::filesystem::path& database,
                                   const std::function<bool(const std::string&)>& wanted);

// database.cpp: databases of compounds as large as usual, in a temporary directory, and comparisons over them, of those
// whose names are wanted:
//   "Init"                   one compound, and the bytes of its data record through stdio
//   "fill 10000"             time per compound when all of 10,000 are filled, and all of 1,000
//   "fill collection"        the same for 10,000, when the compounds are those of a collection and when not
//   "first Init"             with no other object alive, and the bytes of the index file through stdio
//   "Init in a new thread"   its first one, and the next one of a thread that has filled others
//   "GetVelIDs"              by a name, and the bytes of both files through stdio
//   "threads' memory"        when 16 threads each have filled a compound, and when one has
std::vector<Comparison> compareDatabases(const std::function<bool(const std::string&)>& wanted);

// bank.cpp: comparisons of work on 10,000 compounds of a data bank with that on 1,000, per compound, of those whose
// names are wanted:
//   "import chemsep", "import csv"   to the text of a source
//   "check bank", "report bank"      of a source in memory
//   "build bank"                     from the text of a source
std::vector<Comparison> compareBanks(const std::function<bool(const std::string&)>& wanted);

// start.cpp: prints how long a program takes to its first value from a database, with its parts, when it runs for the
// first and for the tenth time.
void printStarts(const std::filesystem::path& program, const std::filesystem::path& database);

// collection.cpp: "get Compound" and "GetBasicCompound" with the release of what they give, both also "of a view" and
// "empty"; "add and release slots" and "move an entry", and the "memmove of the" slots or entries that they consist of.
void addCollections();

// phase.cpp, phases of 100 compounds where no number is given, and the plain calls on arrays that each consists of:
//   "get a real", "put a real"                            also "empty"
//   "LnFugacity round trip", "composition round trip"     put and get; "copy an array" by its own Copy
//   "reset 100", "reset 1000", "copy 100", "copy 1000"    9 phases or one, of as many compounds; for equal numbers in
//   all "finalize 21 phases"                                  "make 63 arrays", sized and filled
void addPhases();
// Allocations when a collection of phases is reset and when a phase is copied, not for the first time; the host's own
// when three arrays of as many elements are copied.
std::size_t blocksOfReset();
std::size_t blocksOfPhaseCopy();
std::size_t blocksOfArrayCopies();

// Bytes that a compound holds: without content, and as the largest of all that are filled from a database.
std::size_t bytesOfEmptyCompound();
std::size_t bytesOfLargestCompound(const std::filesystem::path& database);

}  // namespace qs::bench
