// Feeds the events of an XML text or file to any XMLParserClient, in the order of the text.
#pragma once

#include <span>

#include "com/com_ptr.h"
#include "hostkit/attribute_set.h"

namespace qs::hostkit {

// Hands events on to a client. After the first call that fails nothing more is handed on.
class EventFeed {
 public:
  explicit EventFeed(XMLParserClient& client) : client_(client) {}

  // The first failure of the client, or of the memory for an event; otherwise S_OK.
  HRESULT result() const { return result_; }
  // Whether that was the client's.
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

// Parse a text, of which a declared encoding says nothing, or a file's bytes in whatever encoding they declare, until
// its end or the feed's first failure; false for what is no well-formed document. Document types are refused where the
// parser tells of them: a few lines can stand for gigabytes. xml_parser_posix.cpp and xml_parser_windows.cpp implement
// them. Throw CQSCOMError when there is no parser, and E_OUTOFMEMORY when it runs out of memory.
bool parseXml(WideView text, EventFeed& feed);
bool parseXml(std::span<const std::byte> bytes, EventFeed& feed);

// Results: what the client fails with; after Error of the client, E_FAIL for what is no well-formed document, and
// E_OUTOFMEMORY. Without a word to the client, E_FAIL for a file that cannot be read, and E_INVALIDARG for a client
// that is none and for a text that is null, holds what XML cannot hold, or has a document type.
class XmlParser final : public Coclass<XmlParser, IXMLParser> {
 public:
  STDMETHODIMP ParseText(BSTR text, IDispatch* client) noexcept override;
  STDMETHODIMP ParseFile(BSTR path, IDispatch* client) noexcept override;
};

}  // namespace qs::hostkit
