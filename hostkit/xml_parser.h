// Parses an XML text or file and calls an XMLParserClient for each event, in the order of the text.
#pragma once

#include <climits>
#include <cstring>
#include <span>

#include "com/com_ptr.h"
#include "com/component.h"
#include "hostkit/attribute_set.h"
#include "xml/parser.h"

namespace qs::hostkit {

// A text for a call that only reads it, in memory that the next text uses again.
class EventText {
 public:
  template <class Text>
  BSTR hold(Text text) {
    if (text.size() > kLongest) throw CQSCOMError(E_OUTOFMEMORY);
    if (const std::size_t size = kPrefix + text.size() + 1; size > memory_.size()) memory_.resize(size);
    OLECHAR* const start = memory_.data() + kPrefix;
    OLECHAR* const end = writeWide(text, start);
    *end = 0;
    const auto bytes = static_cast<UINT>(static_cast<std::size_t>(end - start) * sizeof(OLECHAR));
    std::memcpy(memory_.data(), &bytes, sizeof bytes);
    return start;
  }

 private:
  static constexpr std::size_t kLongest = UINT_MAX / sizeof(OLECHAR);
  static constexpr std::size_t kPrefix = sizeof(UINT) / sizeof(OLECHAR);

  std::vector<OLECHAR> memory_;  // as of a BSTR: the length in bytes, the text, a zero
};

// Passes events to a client, up to the first call that fails. Text is wide, or of 8 bits and widened.
class EventFeed final : public XmlEvents {
 public:
  explicit EventFeed(XMLParserClient& client) : client_(client) {}

  // The first failure of the client, or of the memory for an event; otherwise S_OK.
  HRESULT result() const { return result_; }
  // Whether the client failed.
  bool isRefused() const { return refused_; }

  HRESULT attribute(WideView name, WideView value) noexcept override {
    return make([&] {
      attributes().add(WideString(name), WideString(value));
      return S_OK;
    });
  }
  HRESULT attributes(const char* const* all) noexcept override {
    return make([&] {
      attributes().show(all);
      return S_OK;
    });
  }
  HRESULT startElement(WideView name) noexcept override { return start(name); }
  HRESULT startElement(std::string_view name) noexcept override { return start(name); }
  HRESULT endElement(WideView name) noexcept override { return end(name); }
  HRESULT endElement(std::string_view name) noexcept override { return end(name); }
  HRESULT text(WideView characters) noexcept override { return handText(characters); }
  HRESULT text(std::string_view characters) noexcept override { return handText(characters); }
  HRESULT comment() noexcept override {
    return make([&] { return hand([&] { return client_.Comment(); }); });
  }
  // The text comes as an attribute under the target's name.
  HRESULT instruction(WideView target, WideView text) noexcept override {
    return make([&] {
      attributes().add(WideString(target), WideString(text));
      return handWithAttributes(
          [&, tag = text_.hold(target)](TaggedAttributes* all) { return client_.ProcessElement(tag, all); });
    });
  }

 private:
  // Makes an event, which hands it to the client.
  template <class Make>
  HRESULT make(Make&& event) noexcept {
    if (SUCCEEDED(result_))
      if (const HRESULT made = contained(std::forward<Make>(event)); FAILED(made)) result_ = made;
    return result_;
  }
  template <class Call>
  HRESULT hand(Call&& call) {
    const HRESULT answer = contained(std::forward<Call>(call));
    refused_ = FAILED(answer);
    return refused_ ? because(&client_, answer, {"the reader"}) : answer;
  }

  template <class Text>
  HRESULT start(Text name) noexcept {
    return make([&] {
      return handWithAttributes(
          [&, tag = text_.hold(name)](TaggedAttributes* all) { return client_.StartElement(tag, all); });
    });
  }
  template <class Text>
  HRESULT end(Text name) noexcept {
    return make([&] { return hand([&, tag = text_.hold(name)] { return client_.EndElement(tag); }); });
  }
  template <class Text>
  HRESULT handText(Text characters) noexcept {
    return make([&] { return hand([&, data = text_.hold(characters)] { return client_.CharacterData(data); }); });
  }
  template <class Call>
  HRESULT handWithAttributes(Call&& call) {
    AttributeSet& all = attributes();
    const HRESULT answer = hand([&] { return call(&all); });
    release(all);
    return answer;
  }

  // The set of the element that starts next.
  AttributeSet& attributes() {
    if (!attributes_) attributes_ = AttributeSet::make<TaggedAttributes>();
    return *static_cast<AttributeSet*>(attributes_.get());
  }
  // Empties the set for the next element, or leaves it to a client that has kept it.
  void release(AttributeSet& all);

  XMLParserClient& client_;
  ComPtr<TaggedAttributes> attributes_;
  EventText text_;
  HRESULT result_ = S_OK;
  bool refused_ = false;
};

// Returns the client's failure. Calls the client's Error and returns E_FAIL for a document that is not well-formed, and
// E_OUTOFMEMORY. Without any call to the client: E_FAIL for a file that cannot be read, E_INVALIDARG for an object that
// is no client, and for a text that is null, has characters that XML forbids, or has a document type.
class XmlParser final : public Coclass<XmlParser, IXMLParser> {
 public:
  STDMETHODIMP ParseText(BSTR text, IDispatch* client) noexcept override;
  STDMETHODIMP ParseFile(BSTR path, IDispatch* client) noexcept override;
};

}  // namespace qs::hostkit
