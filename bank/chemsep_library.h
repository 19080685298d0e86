// The XML form of ChemSep's pure-component libraries: a list of compounds, each of elements with attributes.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qs::bank {

// What an element has but for its text, which has no meaning in these files.
struct LibraryElement {
  std::string name;
  int line = 0;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<LibraryElement> content;

  // Null where there is none.
  const std::string* attribute(std::string_view attributeName) const;
  const LibraryElement* find(std::string_view elementName) const;  // the first one
};

// Reads a file and hands over one element after the other of those that the root holds; only one is in memory besides
// the text. Returns the title of the library. Throws std::runtime_error, with the line and, within a compound, with its
// name and the element, for text that is no such file: not well-formed, with a document type, nested deeply.
std::string readLibrary(const std::filesystem::path& file, const std::function<void(const LibraryElement&)>& receive);

}  // namespace qs::bank
