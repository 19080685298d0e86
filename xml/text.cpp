#include "xml/text.h"

#include <climits>
#include <utility>

#include "platform/number_text.h"
#include "xml/character.h"

namespace qs {
namespace {

// The reference for a character in an attribute value; empty for a character that is written as it is. Blanks
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

}  // namespace

XmlForm::XmlForm(INT flags) : flags_(flags) {
  if ((flags & ~(xmlExactForm | xmlProvenance)) != 0) fail(E_INVALIDARG, {"there is no form ", flags});
}

void XmlText::expect(std::size_t length) {
  constexpr std::size_t kLongest = UINT_MAX / sizeof(OLECHAR) - 64;  // of any string
  if (length <= capacity_ || length > kLongest) return;
  Bstr room = Bstr::adopt(SysAllocStringLen(nullptr, static_cast<UINT>(length)));
  if (!room) return;
  std::copy_n(room_.get(), length_, room.get());
  room_ = std::move(room);
  capacity_ = length;
}

void XmlText::grow(std::size_t count) {
  expect(2 * (length_ + count));
  if (capacity_ - length_ < count) expect(length_ + count);
  if (capacity_ - length_ < count) throw CQSCOMError(E_OUTOFMEMORY);
}

Bstr XmlText::take() {
  BSTR text = room_.release();
  capacity_ = 0;
  const auto length = static_cast<UINT>(std::exchange(length_, 0));
  const bool resized = SysReAllocStringLen(&text, nullptr, length) != 0;
  Bstr result = Bstr::adopt(text);
  if (!resized) throw CQSCOMError(E_OUTOFMEMORY);
  return result;
}

XmlText& XmlText::operator<<(INT number) {
  char digits[kNumberLength];
  append(digits, static_cast<std::size_t>(writeInteger(digits, number) - digits));
  return *this;
}

XmlText& XmlText::operator<<(double number) {
  char digits[kExactNumberLength];
  const char* end = form_.exactNumbers() ? writeExactDouble(digits, number) : writeDouble(digits, number);
  append(digits, static_cast<std::size_t>(end - digits));
  return *this;
}

XmlText& XmlText::value(WideView text) { return form_.escaped() ? escaped(text) : *this << text; }

XmlText& XmlText::escaped(WideView text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const WideView reference = referenceOf(text[i]);
    if (reference.empty() && !isXmlCharacter(text, i))
      fail(E_INVALIDARG, {"a text has the character ", text[i], ", which XML cannot hold"});
    *this << (reference.empty() ? text.substr(i, 1) : reference);
  }
  return *this;
}

}  // namespace qs
