// Parses an XML text or file and calls an XMLParserClient for each event, in the order of the text.
#pragma once

#include <span>

#include "com/com_ptr.h"
#include "hostkit/attribute_set.h"

namespace qs::hostkit {

// Passes events to a client, up to the first call that fails.
class EventFeed {
 public:
  explicit EventFeed(XMLParserClient& client) : client_(client) {}

  // The first failure of the client, or of the memory for an event; otherwise S_OK.
  HRESULT result() const { return result_; }
  // Whether the client failed.
  bool isRefused() const { return refused_; }

  // An attribute of the element that starts next.
  HRESULT attribute(WideView name, WideView value) noexcept;
  HRESULT startElement(WideView name) noexcept;
  HRESULT endElement(WideView name) noexcept;
  HRESULT text(WideView characters) noexcept;
  HRESULT comment() noexcept;
  // The instruction's text comes as an attribute under the target's name.
  HRESULT instruction(WideView target, WideView text) noexcept;

 private:
  // Makes an event, which hands it to the client.
  template <class Make>
  HRESULT make(Make&& event) noexcept;
  template <class Call>
  HRESULT hand(Call&& call);
  AttributeSet& attributes();

  XMLParserClient& client_;
  ComPtr<TaggedAttributes> attributes_;
  bool collecting_ = false;
  HRESULT result_ = S_OK;
  bool refused_ = false;
};

// Parse a text, whose declared encoding is ignored, or a file's bytes in the encoding that they declare, up to the end
// or the feed's first failure. False for a document that is not well-formed. Document types are refused where the
// parser reports them, because a few lines can expand to gigabytes. Throw CQSCOMError when there is no parser, and
// E_OUTOFMEMORY when it runs out of memory. Implemented in xml_parser_posix.cpp and xml_parser_windows.cpp.
bool parseXml(WideView text, EventFeed& feed);
bool parseXml(std::span<const std::byte> bytes, EventFeed& feed);

// Returns the client's failure. Calls the client's Error and returns E_FAIL for a document that is not well-formed, and
// E_OUTOFMEMORY. Without any call to the client: E_FAIL for a file that cannot be read, E_INVALIDARG for an object that
// is no client, and for a text that is null, has characters that XML forbids, or has a document type.
class XmlParser final : public Coclass<XmlParser, IXMLParser> {
 public:
  STDMETHODIMP ParseText(BSTR text, IDispatch* client) noexcept override;
  STDMETHODIMP ParseFile(BSTR path, IDispatch* client) noexcept override;
};

}  // namespace qs::hostkit
