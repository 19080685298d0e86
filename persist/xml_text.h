// XML text in the making: fragments, values and numbers appended to one growing string.
#pragma once

#include "com/interfaces.h"
#include "platform/text.h"

namespace qs {

// What a text keeps, by the sum of tagXMLFormEnum values. The default form rounds numbers to six digits, writes strings
// as they are, and leaves some data out; any other form leaves nothing out.
class XmlForm {
 public:
  // Throws CQSCOMError(E_INVALIDARG) for a number that is no sum of the values.
  explicit XmlForm(INT flags);

  INT flags() const { return flags_; }
  bool exactNumbers() const { return (flags_ & xmlExactNumbers) != 0; }
  bool escaped() const { return (flags_ & xmlEscaped) != 0; }
  bool complete() const { return flags_ != xmlDefaultForm; }

 private:
  INT flags_;
};

class XmlText {
 public:
  XmlText(XmlForm form, std::size_t expectedLength) : form_(form) { text_.reserve(expectedLength); }

  const XmlForm& form() const { return form_; }
  WideView view() const { return text_; }

  // Markup, as it is.
  XmlText& operator<<(WideView fragment) {
    text_ += fragment;
    return *this;
  }
  XmlText& operator<<(INT number);
  XmlText& operator<<(double number);

  // Text within an attribute value. In the escaped form markup characters, tabs and line ends are written as
  // references, and a character that XML cannot hold throws CQSCOMError(E_INVALIDARG).
  XmlText& value(WideView text);

 private:
  XmlForm form_;
  WideString text_;
};

}  // namespace qs
