// The pages of a report: a bank for people to look at in a browser, without a network.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::bank {

// Source and findings outlive the pages.
class ReportPages {
 public:
  ReportPages(const Source& source, std::span<const Finding> findings);

  // Everything on one page. `done` is told how many compounds are ready.
  std::string onePage(const std::function<void(std::size_t)>& done) const;

  // The pages of a folder, which link to each other by the names below.
  std::string indexPage() const;
  std::string matrixPage() const;
  std::string compoundPage(std::size_t place) const;

  static constexpr const char* kIndexName = "index.html";
  static constexpr const char* kMatrixName = "matrix.html";
  std::string nameOfPage(std::size_t place) const { return ids_[place] + ".html"; }

  // What each page of a report has near its beginning.
  static constexpr std::string_view kMark = "<meta name=\"generator\" content=\"qsdb report\">";

 private:
  class Writer;

  const Source& source_;
  std::vector<Key> keys_;                                                     // that some compound has
  std::vector<std::string> ids_;                                              // of the compounds
  std::map<std::string, std::size_t, std::less<>> originNumbers_;             // of origins and of names without one
  std::map<std::string, std::vector<const Finding*>, std::less<>> findings_;  // by compound; "" for others
};

}  // namespace qs::bank
