#include "tools/bank_arguments.h"

#include <ostream>
#include <stdexcept>

#include "bank/compound_text.h"
#include "bank/database_source.h"
#include "bank/lookup.h"
#include "bank/names.h"
#include "bank/text_file.h"
#include "platform/text.h"

namespace qs::tools {

bank::Source openBank(const std::string& place, std::vector<bank::Finding>& findings) {
  bank::Source source = bank::readSourceOrDatabase(bank::pathOf(place), findings);
  if (source.compounds.empty() && !findings.empty()) throw std::runtime_error(bank::textOf(findings.front()));
  return source;
}

bank::Source openBank(const std::string& place, std::ostream& err) {
  std::vector<bank::Finding> findings;
  bank::Source source = openBank(place, findings);
  if (!findings.empty())
    err << "qsdb: " << place << ": not all of it can be read, as `qsdb check` says: " << findings.size()
        << " findings\n";
  return source;
}

bank::Source openWhole(const std::string& place, std::ostream& err) {
  std::vector<bank::Finding> findings;
  bank::Source source = bank::readSourceOrDatabase(bank::pathOf(place), findings);
  for (const bank::Finding& finding : findings) {
    if (finding.severity == bank::Severity::Error) throw std::runtime_error(bank::textOf(finding));
    err << bank::textOf(finding) << '\n';
  }
  return source;
}

const bank::Compound& compoundCalled(const bank::Source& bank, const std::string& text) {
  const auto found = bank::compoundsNamed(bank, text);
  if (found.size() == 1) return *found.front();
  const auto& candidates = found.empty() ? bank::compoundsLike(bank, text) : found;
  std::string message = (found.empty() ? "no compound is called \"" : "several compounds are called \"") + text + '"';
  if (!candidates.empty()) message += (found.empty() ? "; these are like it:\n" : ":\n") + bank::listText(candidates);
  while (message.ends_with('\n')) message.pop_back();
  throw std::runtime_error(message);
}

Key keyCalled(const std::string& name) {
  if (const auto key = findKey(widen(name))) return *key;
  throw std::runtime_error(bank::unknownKeyText(name));
}

void writeResult(const std::string& text, const std::string& file, std::ostream& out) {
  if (file.empty())
    out << text;
  else
    bank::replaceText(bank::pathOf(file), text);
}

}  // namespace qs::tools
