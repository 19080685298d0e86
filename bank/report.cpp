#include "bank/report.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "bank/report_pages.h"
#include "bank/text_file.h"

namespace qs::bank {
namespace {

using std::filesystem::path;

path withEnding(path place, const char* ending) {
  place += ending;
  return place;
}

// Whether there is nothing that a report may not replace.
bool isFree(const path& folder) {
  std::error_code ignored;
  if (!std::filesystem::exists(folder, ignored) || std::filesystem::is_empty(folder, ignored)) return true;
  std::ifstream file(folder / ReportPages::kIndexName, std::ios::binary);
  std::string head(500, '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  return head.find(ReportPages::kMark) != std::string::npos;
}

// A folder that is made under another name and then takes the place of an earlier report.
class ReportFolder {
 public:
  explicit ReportFolder(const path& place)
      : place_(place), made_(withEnding(place, ".new")), old_(withEnding(place, ".old")) {
    for (const path& folder : {place_, made_, old_})
      if (!isFree(folder)) throw std::runtime_error(utf8(folder) + ": is there already and is no report");
    std::error_code error;
    remove(made_);
    std::filesystem::create_directories(made_, error);
    if (error) throw std::runtime_error(utf8(made_) + ": cannot be made: " + error.message());
  }
  ReportFolder(const ReportFolder&) = delete;
  ReportFolder& operator=(const ReportFolder&) = delete;
  ~ReportFolder() { remove(made_); }

  void add(const std::string& name, const std::string& page) const { writeText(made_ / name, page); }

  void replace() const {
    remove(old_);
    std::error_code ignored;
    const bool isThere = std::filesystem::exists(place_, ignored);
    if (isThere) renameTo(place_, old_);
    try {
      renameTo(made_, place_);
    } catch (const std::runtime_error&) {
      if (isThere) renameTo(old_, place_);
      throw;
    }
    remove(old_);
  }

 private:
  static void remove(const path& folder) {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  const path place_, made_, old_;
};

}  // namespace

path saveReport(const Source& source, std::span<const Finding> findings, const path& file,
                const std::function<void(std::size_t)>& done) {
  const ReportPages pages(source, findings);
  const std::size_t count = source.compounds.size();
  if (count <= kMostOnOnePage) {
    replaceText(file, pages.onePage(done));
    return file;
  }
  const path named = file.has_filename() ? file : file.parent_path();
  const path place = named.extension() == ".html" ? path(named).replace_extension() : named;
  const ReportFolder folder(place);
  folder.add(ReportPages::kIndexName, pages.indexPage());
  folder.add(ReportPages::kMatrixName, pages.matrixPage());
  for (std::size_t i = 0; i < count; ++i) {
    folder.add(pages.nameOfPage(i), pages.compoundPage(i));
    done(i + 1);
  }
  folder.replace();
  return place / ReportPages::kIndexName;
}

}  // namespace qs::bank
