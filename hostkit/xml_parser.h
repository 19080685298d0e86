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

  // An attribute of the element that starts next.
  HRESULT attribute(WideView name, WideView value) noexcept;
  HRESULT startElement(WideView name) noexcept;
  HRESULT endElement(WideView name) noexcept;
  HRESULT text(WideView characters) noexcept;
  HRESULT comment() noexcept;
  // The instruction's text comes as an attribute under the target's name.
  HRESULT instruction(WideView target, WideView text) noexcept;

 private:
  template <class Call>
  HRESULT hand(Call&& call) noexcept;
  AttributeSet& attributes();

  XMLParserClient& client_;
  ComPtr<TaggedAttributes> attributes_;
  bool collecting_ = false;
  HRESULT result_ = S_OK;
};

// Parse a text, or a file's bytes in whatever encoding they declare, until its end or the feed's first failure; false
// for what is no well-formed document. Document types are refused where the parser tells of them: a few lines can stand
// for gigabytes. xml_parser_expat.cpp and xml_parser_sax.cpp implement them. Throw CQSCOMError when there is no parser.
bool parseXml(WideView text, EventFeed& feed);
bool parseXml(std::span<const std::byte> bytes, EventFeed& feed);

// Results: what the client fails with; E_FAIL, after Error of the client, for what is no well-formed document; E_FAIL
// for a file that cannot be read; E_INVALIDARG for a client that is none.
class XmlParser final : public Coclass<XmlParser, IXMLParser> {
 public:
  STDMETHODIMP ParseText(BSTR text, IDispatch* client) noexcept override;
  STDMETHODIMP ParseFile(BSTR path, IDispatch* client) noexcept override;
};

}  // namespace qs::hostkit
