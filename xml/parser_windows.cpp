#include "xml/parser.h"

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/error.h"
// The system's header comes after those that say how to include it.
#include <msxml2.h>

namespace qs {
namespace {

constexpr CLSID kReaderClass = {0x88d96a0c, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
constexpr IID kReader = {0xa4f96ed0, 0xf829, 0x476e, {0x81, 0xc0, 0xcd, 0xc7, 0xbd, 0x2a, 0x08, 0x02}};
constexpr IID kContentHandler = {0x1545cdfa, 0x9e4e, 0x4497, {0xa8, 0xa4, 0x2b, 0xf7, 0xd0, 0x11, 0x2c, 0x44}};
constexpr IID kLexicalHandler = {0x7f85d5f5, 0x47a8, 0x4497, {0xbd, 0xa5, 0x84, 0xba, 0x04, 0x81, 0x9e, 0xa6}};

WideView viewOf(const wchar_t* text, int length) {
  return text && length > 0 ? WideView(text, static_cast<std::size_t>(length)) : WideView();
}

// Passes the reader's events on. Lives on the stack of one parse.
class Handler final : public ISAXContentHandler, public ISAXLexicalHandler {
 public:
  explicit Handler(XmlEvents& events) : events_(events) {}

  void reachLine() {
    if (locator_ && events_.line) locator_->getLineNumber(&*events_.line);
  }
  // After a parse that failed: what is wrong, unless the receiver has said it, and where.
  void sayWhy() {
    int line = 0;
    if (locator_) locator_->getLineNumber(&line);
    if (SUCCEEDED(refusal_)) because(refusal_ = E_FAIL, {"the text is not well-formed"});
    also(refusal_, {" (line ", line, ")"});
  }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    *out = nullptr;
    if (IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, kContentHandler))
      *out = static_cast<ISAXContentHandler*>(this);
    else if (IsEqualGUID(iid, kLexicalHandler))
      *out = static_cast<ISAXLexicalHandler*>(this);
    return *out ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }

  STDMETHODIMP startElement(const wchar_t*, int, const wchar_t*, int, const wchar_t* name, int length,
                            ISAXAttributes* attributes) noexcept override {
    reachLine();
    int count = 0;
    if (const HRESULT hr = attributes->getLength(&count); FAILED(hr)) return hr;
    for (int i = 0; i < count; ++i) {
      const wchar_t* tag = nullptr;
      const wchar_t* value = nullptr;
      int tagLength = 0;
      int valueLength = 0;
      if (const HRESULT hr = attributes->getQName(i, &tag, &tagLength); FAILED(hr)) return hr;
      if (const HRESULT hr = attributes->getValue(i, &value, &valueLength); FAILED(hr)) return hr;
      events_.attribute(viewOf(tag, tagLength), viewOf(value, valueLength));
    }
    return passed(events_.startElement(viewOf(name, length)));
  }
  STDMETHODIMP endElement(const wchar_t*, int, const wchar_t*, int, const wchar_t* name, int length) noexcept override {
    return passed(events_.endElement(viewOf(name, length)));
  }
  STDMETHODIMP characters(const wchar_t* text, int length) noexcept override {
    return passed(events_.text(viewOf(text, length)));
  }
  STDMETHODIMP ignorableWhitespace(const wchar_t* text, int length) noexcept override {
    return passed(events_.text(viewOf(text, length)));
  }
  STDMETHODIMP processingInstruction(const wchar_t* target, int targetLength, const wchar_t* text,
                                     int length) noexcept override {
    return passed(events_.instruction(viewOf(target, targetLength), viewOf(text, length)));
  }
  STDMETHODIMP comment(const wchar_t*, int) noexcept override { return passed(events_.comment()); }
  STDMETHODIMP startDTD(const wchar_t*, int, const wchar_t*, int, const wchar_t*, int) noexcept override {
    return passed(because(E_FAIL, {"there is a document type, which is refused"}));
  }

  STDMETHODIMP putDocumentLocator(ISAXLocator* locator) noexcept override {
    locator_ = ComPtr<ISAXLocator>(locator);
    return S_OK;
  }
  STDMETHODIMP startDocument() noexcept override { return S_OK; }
  STDMETHODIMP endDocument() noexcept override { return S_OK; }
  STDMETHODIMP startPrefixMapping(const wchar_t*, int, const wchar_t*, int) noexcept override { return S_OK; }
  STDMETHODIMP endPrefixMapping(const wchar_t*, int) noexcept override { return S_OK; }
  STDMETHODIMP skippedEntity(const wchar_t*, int) noexcept override { return S_OK; }
  STDMETHODIMP endDTD() noexcept override { return S_OK; }
  STDMETHODIMP startEntity(const wchar_t*, int) noexcept override { return S_OK; }
  STDMETHODIMP endEntity(const wchar_t*, int) noexcept override { return S_OK; }
  STDMETHODIMP startCDATA() noexcept override { return S_OK; }
  STDMETHODIMP endCDATA() noexcept override { return S_OK; }

 private:
  HRESULT passed(HRESULT result) {
    if (FAILED(result)) refusal_ = result;
    return result;
  }

  XmlEvents& events_;
  ComPtr<ISAXLocator> locator_;
  HRESULT refusal_ = S_OK;
};

// The text with UTF-16 as its declared encoding, because the reader would use any other.
Bstr inItsEncoding(WideView text) {
  if (!text.starts_with(OLESTR("<?xml")) || text.find_first_of(OLESTR(" \t\r\n")) != 5) return Bstr(text);
  const WideView declaration = text.substr(0, text.find(OLESTR("?>")));
  const std::size_t quote = declaration.find_first_of(OLESTR("'\""), declaration.find(OLESTR("encoding")));
  const std::size_t end = quote == WideView::npos ? quote : declaration.find(declaration[quote], quote + 1);
  if (end == WideView::npos) return Bstr(text);
  return Bstr(WideString(text.substr(0, quote + 1)).append(OLESTR("UTF-16")).append(text.substr(end)));
}

bool parse(const VARIANT& source, XmlEvents& events) {
  ComPtr<ISAXXMLReader> reader;
  check(CoCreateInstance(kReaderClass, nullptr, CLSCTX_INPROC_SERVER, kReader, reader.outAny()));
  Handler handler(events);
  check(reader->putContentHandler(&handler));
  VARIANT lexical;
  V_VT(&lexical) = VT_UNKNOWN;
  V_UNKNOWN(&lexical) = static_cast<ISAXLexicalHandler*>(&handler);
  check(reader->putProperty(L"http://xml.org/sax/properties/lexical-handler", lexical));
  const HRESULT parsed = reader->parse(source);
  reader->putContentHandler(nullptr);
  if (FAILED(parsed)) {
    handler.reachLine();
    handler.sayWhy();
  }
  return succeeded(parsed);
}

}  // namespace

bool parseXml(WideView text, XmlEvents& events) {
  const Bstr copy = inItsEncoding(text);
  VARIANT source;
  V_VT(&source) = VT_BSTR;
  V_BSTR(&source) = copy.get();
  return parse(source, events);
}

bool parseXml(std::span<const std::byte> bytes, XmlEvents& events) {
  ComPtr<IStream> stream;
  check(CreateStreamOnHGlobal(nullptr, TRUE, stream.out()));
  check(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
  check(stream->Seek({}, STREAM_SEEK_SET, nullptr));
  VARIANT source;
  V_VT(&source) = VT_UNKNOWN;
  V_UNKNOWN(&source) = stream.get();
  return parse(source, events);
}

}  // namespace qs
