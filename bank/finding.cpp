#include "bank/finding.h"

namespace qs::bank {

std::string textOf(const Finding& finding) {
  std::string text = finding.file;
  if (finding.line > 0) text += ':' + std::to_string(finding.line);
  text += ": " + finding.compound;
  if (!finding.compound.empty() && !finding.field.empty()) text += ", ";
  text += finding.field;
  if (!finding.compound.empty() || !finding.field.empty()) text += ": ";
  return text + finding.message;
}

std::string utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::filesystem::path pathOf(std::string_view utf8) { return std::u8string(utf8.begin(), utf8.end()); }

}  // namespace qs::bank
