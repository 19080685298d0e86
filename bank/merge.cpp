#include "bank/merge.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "bank/finding.h"

namespace qs::bank {
namespace {

std::string placeOf(const std::filesystem::path& file, const Compound& compound) {
  return utf8(file) + (compound.line > 0 ? ':' + std::to_string(compound.line) : std::string());
}

class Merger {
 public:
  Merger(Source first, SameNumber rule) : merged_(std::move(first)), rule_(rule), files_{merged_.file} {
    for (std::size_t i = 0; i < merged_.compounds.size(); ++i) entries_[merged_.compounds[i].data.number] = {i, 0};
  }

  void add(Source source) {
    addOrigins(source);
    std::erase_if(merged_.identityOrigins, [&](const auto& member) {
      const auto other = source.identityOrigins.find(member.first);
      return other == source.identityOrigins.end() || other->second != member.second;
    });
    addCompounds(source);
    files_.push_back(source.file);
  }

  Source take() { return std::move(merged_); }

 private:
  struct Entry {
    std::size_t compound, file;
  };

  void addOrigins(Source& source) {
    std::map<std::string, std::string> names;  // that the source's origins get
    for (auto& [name, origin] : source.origins) {
      std::string free = name;
      for (int i = 2; merged_.origins.contains(free) && merged_.origins[free] != origin; ++i)
        free = name + '-' + std::to_string(i);
      names[name] = free;
      merged_.origins[std::move(free)] = std::move(origin);
    }
    for (auto& [member, origin] : source.identityOrigins) origin = names[origin];
    for (Compound& compound : source.compounds)
      for (auto& [key, provenance] : compound.provenance)
        if (!provenance.origin.empty()) provenance.origin = names[provenance.origin];
  }

  void addCompounds(Source& source) {
    std::set<LONG> kept, replaced;
    for (Compound& compound : source.compounds) {
      const auto [entry, isNew] =
          entries_.try_emplace(compound.data.number, Entry{merged_.compounds.size(), files_.size()});
      // Of a number that one source has twice, the writer says so.
      if (isNew || entry->second.file == files_.size()) {
        merged_.compounds.push_back(std::move(compound));
        continue;
      }
      Compound& there = merged_.compounds[entry->second.compound];
      if (rule_ == SameNumber::Refuse)
        throw std::runtime_error(placeOf(source.file, compound) + ": " + describe(compound.data) +
                                 " has the number of " + describe(there.data) + " at " +
                                 placeOf(files_[entry->second.file], there) +
                                 "; --keep takes the first, --replace the last");
      (rule_ == SameNumber::Keep ? kept : replaced).insert(compound.data.number);
      if (rule_ == SameNumber::Replace) {
        there = std::move(compound);
        entry->second.file = files_.size();
      }
    }
    std::erase_if(merged_.waivers, [&](const Waiver& waiver) { return replaced.contains(waiver.compound); });
    std::erase_if(source.waivers, [&](const Waiver& waiver) { return kept.contains(waiver.compound); });
    std::ranges::move(source.waivers, std::back_inserter(merged_.waivers));
  }

  Source merged_;
  const SameNumber rule_;
  std::vector<std::filesystem::path> files_;
  std::map<std::int32_t, Entry> entries_;
};

}  // namespace

Source merge(std::vector<Source> sources, SameNumber rule) {
  Merger merger(std::move(sources.at(0)), rule);
  for (auto source = sources.begin() + 1; source != sources.end(); ++source) merger.add(std::move(*source));
  return merger.take();
}

}  // namespace qs::bank
