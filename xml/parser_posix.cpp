#include <expat.h>

#include <climits>
#include <memory>

#include "com/error.h"
#include "xml/parser.h"

namespace qs {
namespace {

// The parser and the receiver of one document, as expat's handlers receive them, and what a handler failed with.
struct Parsing {
  XML_Parser parser;
  XmlEvents& events;
  HRESULT result = S_OK;

  static Parsing& from(void* user) { return *static_cast<Parsing*>(user); }
  void reachLine() {
    if (events.line) *events.line = static_cast<int>(XML_GetCurrentLineNumber(parser));
  }
  void stopUnless(HRESULT handled) {
    if (SUCCEEDED(handled)) return;
    result = handled;
    XML_StopParser(parser, XML_FALSE);
  }
};

void onStart(void* user, const XML_Char* name, const XML_Char** attributes) {
  Parsing& parsing = Parsing::from(user);
  parsing.reachLine();
  parsing.events.attributes(attributes);
  parsing.stopUnless(parsing.events.startElement(std::string_view(name)));
}

void onEnd(void* user, const XML_Char* name) {
  Parsing& parsing = Parsing::from(user);
  parsing.stopUnless(parsing.events.endElement(std::string_view(name)));
}

void onText(void* user, const XML_Char* text, int length) {
  Parsing& parsing = Parsing::from(user);
  parsing.stopUnless(parsing.events.text(std::string_view(text, static_cast<std::size_t>(length))));
}

void onComment(void* user, const XML_Char*) {
  Parsing& parsing = Parsing::from(user);
  parsing.stopUnless(parsing.events.comment());
}

void onInstruction(void* user, const XML_Char* target, const XML_Char* text) {
  Parsing& parsing = Parsing::from(user);
  // A conversion may run out of memory in a handler, which must not throw.
  parsing.stopUnless(contained([&] { return parsing.events.instruction(widen(target), widen(text)); }));
}

void onDocumentType(void* user, const XML_Char*, const XML_Char*, const XML_Char*, int) {
  Parsing::from(user).stopUnless(because(E_FAIL, {"there is a document type, which is refused"}));
}

// `encoding` overrides the declared one; null uses that.
bool parse(std::string_view bytes, const XML_Char* encoding, XmlEvents& events) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(encoding), XML_ParserFree);
  if (!parser) throw CQSCOMError(E_OUTOFMEMORY);
  Parsing parsing{parser.get(), events};
  XML_SetUserData(parser.get(), &parsing);
  XML_SetElementHandler(parser.get(), onStart, onEnd);
  XML_SetCharacterDataHandler(parser.get(), onText);
  XML_SetCommentHandler(parser.get(), onComment);
  XML_SetProcessingInstructionHandler(parser.get(), onInstruction);
  XML_SetStartDoctypeDeclHandler(parser.get(), onDocumentType);

  constexpr std::size_t kPiece = std::size_t{1} << 30;
  static_assert(kPiece <= INT_MAX);
  for (;;) {
    const std::string_view piece = bytes.substr(0, kPiece);
    bytes.remove_prefix(piece.size());
    if (XML_Parse(parser.get(), piece.data(), static_cast<int>(piece.size()), bytes.empty()) != XML_STATUS_OK) {
      parsing.reachLine();
      const XML_Error error = XML_GetErrorCode(parser.get());
      if (error == XML_ERROR_NO_MEMORY) throw CQSCOMError(E_OUTOFMEMORY);
      const auto line = XML_GetCurrentLineNumber(parser.get());
      check(also(parsing.result, {" (line ", line, ")"}));
      because(E_FAIL, {"the text is not well-formed: ", XML_ErrorString(error), " (line ", line, ")"});
      return false;
    }
    if (bytes.empty()) return true;
  }
}

}  // namespace

bool parseXml(WideView text, XmlEvents& events) { return parse(narrow(text), "UTF-8", events); }

bool parseXml(std::span<const std::byte> bytes, XmlEvents& events) {
  return parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, nullptr, events);
}

}  // namespace qs
