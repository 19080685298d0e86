// Parses XML with expat or, on Windows, with the system's parser.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "platform/text.h"

namespace qs {

// Receives what a parser finds, in the order of the text, up to the first call that fails. Text is wide on Windows, and
// in UTF-8 elsewhere.
class XmlEvents {
 public:
  // The attributes of the element that starts next: one after the other, or all as the parser holds them, names and
  // values in turn up to a null.
  virtual HRESULT attribute(WideView name, WideView value) noexcept = 0;
  virtual HRESULT attributes(const char* const* all) noexcept = 0;

  virtual HRESULT startElement(WideView name) noexcept = 0;
  virtual HRESULT startElement(std::string_view name) noexcept = 0;
  virtual HRESULT endElement(WideView name) noexcept = 0;
  virtual HRESULT endElement(std::string_view name) noexcept = 0;
  virtual HRESULT text(WideView characters) noexcept = 0;
  virtual HRESULT text(std::string_view characters) noexcept = 0;
  virtual HRESULT comment() noexcept = 0;
  virtual HRESULT instruction(WideView target, WideView text) noexcept = 0;

  // Where it has a value, the parser writes here the line of each element's start, and of what makes it fail.
  std::optional<int> line;

 protected:
  ~XmlEvents() = default;
};

// Parse a text, whose declared encoding is ignored, or a file's bytes in the encoding that they declare, up to the end
// or the first event that fails. False for a document that is not well-formed, with what is wrong said of E_FAIL.
// Document types are refused where the parser reports them, because a few lines can expand to gigabytes. Throw
// CQSCOMError when there is no parser, and E_OUTOFMEMORY when it runs out of memory.
bool parseXml(WideView text, XmlEvents& events);
bool parseXml(std::span<const std::byte> bytes, XmlEvents& events);

}  // namespace qs
