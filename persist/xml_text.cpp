#include "persist/xml_text.h"

#include "com/error.h"
#include "com/number_text.h"

namespace qs {
namespace {

// The reference that stands for a character within an attribute value; empty for one that stands for itself. Blanks
// other than the space are written as references because parsers turn them into spaces.
constexpr WideView referenceOf(OLECHAR c) {
  switch (c) {
    case OLESTR('&'):
      return OLESTR("&amp;");
    case OLESTR('<'):
      return OLESTR("&lt;");
    case OLESTR('>'):
      return OLESTR("&gt;");
    case OLESTR('"'):
      return OLESTR("&quot;");
    case OLESTR('\t'):
      return OLESTR("&#9;");
    case OLESTR('\n'):
      return OLESTR("&#10;");
    case OLESTR('\r'):
      return OLESTR("&#13;");
    default:
      return {};
  }
}

constexpr bool isHighSurrogate(OLECHAR c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool isLowSurrogate(OLECHAR c) { return c >= 0xDC00 && c <= 0xDFFF; }

// Whether XML can hold the character at a position.
bool isCharacter(WideView text, std::size_t position) {
  const OLECHAR c = text[position];
  if (isHighSurrogate(c)) return position + 1 < text.size() && isLowSurrogate(text[position + 1]);
  if (isLowSurrogate(c)) return position > 0 && isHighSurrogate(text[position - 1]);
  return c >= 0x20 && c != 0xFFFE && c != 0xFFFF;
}

}  // namespace

XmlForm::XmlForm(INT flags) : flags_(flags) {
  if ((flags & ~INT{xmlExactForm}) != 0) throw CQSCOMError(E_INVALIDARG);
}

XmlText& XmlText::operator<<(INT number) {
  appendInteger(text_, number);
  return *this;
}

XmlText& XmlText::operator<<(double number) {
  if (form_.exactNumbers())
    appendExactDouble(text_, number);
  else
    appendDouble(text_, number);
  return *this;
}

XmlText& XmlText::value(WideView text) {
  if (!form_.escaped()) return *this << text;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const WideView reference = referenceOf(text[i]);
    if (reference.empty() && !isCharacter(text, i)) throw CQSCOMError(E_INVALIDARG);
    if (reference.empty())
      text_ += text[i];
    else
      text_ += reference;
  }
  return *this;
}

}  // namespace qs
