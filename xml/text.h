// Builds XML text: appends fragments, values and numbers to one string.
#pragma once

#include <algorithm>

#include "com/bstr.h"
#include "interfaces/interfaces.h"

namespace qs {

// What a text keeps, by the sum of tagXMLFormEnum values. The default form rounds numbers to six digits, writes strings
// as they are, and omits some data; xmlProvenance adds the sources of values to it or another form. Any other form
// omits nothing.
class XmlForm {
 public:
  // Throws CQSCOMError(E_INVALIDARG) for a number that is no sum of the values.
  explicit XmlForm(INT flags);

  INT flags() const { return flags_; }
  bool exactNumbers() const { return (flags_ & xmlExactNumbers) != 0; }
  bool escaped() const { return (flags_ & xmlEscaped) != 0; }
  bool complete() const { return (flags_ & xmlExactForm) != 0; }
  bool provenance() const { return (flags_ & xmlProvenance) != 0; }

 private:
  INT flags_;
};

// The text grows in the string that `take` returns, so that a long text is neither copied at the end nor held twice.
class XmlText {
 public:
  XmlText(XmlForm form, std::size_t expectedLength) : form_(form) { expect(expectedLength); }

  const XmlForm& form() const { return form_; }
  std::size_t length() const { return length_; }

  // Reserves memory for a text of a length; does nothing when there is not enough.
  void expect(std::size_t length);

  // Returns the text and is empty then. Throws CQSCOMError(E_OUTOFMEMORY), as all that follow do.
  Bstr take();

  // Markup, as it is.
  XmlText& operator<<(WideView fragment) {
    append(fragment.data(), fragment.size());
    return *this;
  }
  XmlText& operator<<(INT number);
  XmlText& operator<<(double number);

  // Text within an attribute value, which the escaped form writes as `escaped` does.
  XmlText& value(WideView text);

  // Markup characters, tabs and line ends as references. A character that XML cannot hold throws
  // CQSCOMError(E_INVALIDARG).
  XmlText& escaped(WideView text);

  // An attribute with the text before its value, which ends with the quotation mark. A form that omits no data has no
  // attribute for a string that is null.
  XmlText& attribute(WideView opening, const Bstr& content) {
    return form_.complete() && !content ? *this : (*this << opening).value(content.view()) << OLESTR("\"");
  }

 private:
  template <class Character>
  void append(const Character* characters, std::size_t count) {
    if (count > capacity_ - length_) grow(count);
    std::copy_n(characters, count, room_.get() + length_);
    length_ += count;
  }
  void grow(std::size_t count);

  XmlForm form_;
  Bstr room_;
  std::size_t capacity_ = 0;
  std::size_t length_ = 0;
};

}  // namespace qs
