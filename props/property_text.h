// The text of a property's content: items Key(value), which property objects store themselves as and XML text holds.
// What is appended goes to any text that takes strings, integers and reals with <<, and strings of others with value().
#pragma once

#include <cstddef>
#include <optional>

#include "com/bstr.h"
#include "platform/number_text.h"
#include "props/property.h"

namespace qs {

// The text that property objects store: numbers have six digits, and strings of others are what the system code page
// holds of them.
class PropertyText {
 public:
  PropertyText& operator<<(WideView text) {
    text_ += text;
    return *this;
  }
  PropertyText& operator<<(INT number) {
    appendInteger(text_, number);
    return *this;
  }
  PropertyText& operator<<(double number) {
    appendDouble(text_, number);
    return *this;
  }
  PropertyText& value(WideView text) { return *this << widen(narrow(text)); }

  const WideString& text() const { return text_; }

 private:
  WideString text_;
};

// The text in brackets after the first occurrence of `key`, up to the first closing bracket, within `text`. Nothing
// when the key is missing, or its first occurrence is not followed by a bracket that is closed. Keys are not
// delimited: an occurrence within a longer word counts.
std::optional<WideView> ReadKeyValue(WideView key, WideView text);

inline constexpr WideView kVoidText = OLESTR("Void");

// An item's key and its bracket, after a blank where it is not the first.
struct Opening {
  WideView text;

  constexpr WideView key() const {
    const WideView key = text.substr(0, text.size() - 1);
    return key.substr(key.starts_with(OLESTR(' ')) ? 1 : 0);
  }
};

// Two items of an equation, with the operations that get and set them.
template <class T>
struct ItemPair {
  Opening first, second;
  HRESULT (CQSAbstractProp::*get)(T*, T*) const;
  HRESULT (CQSAbstractProp::*set)(T, T);
};
inline constexpr ItemPair<double> kRangeItems[] = {
    {{OLESTR("Tmin(")}, {OLESTR(" Tmax(")}, &CQSAbstractProp::GetTRange, &CQSAbstractProp::SetTRange},
    {{OLESTR(" Pmin(")}, {OLESTR(" Pmax(")}, &CQSAbstractProp::GetPRange, &CQSAbstractProp::SetPRange},
};
inline constexpr ItemPair<LONG> kShapeItems[] = {
    {{OLESTR(" Xshape(")}, {OLESTR(" Yshape(")}, &CQSAbstractProp::GetXYShape, &CQSAbstractProp::SetXYShape},
};
inline constexpr ItemPair<double> kTransformationItems[] = {
    {{OLESTR(" Xnorm(")}, {OLESTR(" Ynorm(")}, &CQSAbstractProp::GetXYNorm, &CQSAbstractProp::SetXYNorm},
    {{OLESTR(" Xpow(")}, {OLESTR(" Ypow(")}, &CQSAbstractProp::GetXYPow, &CQSAbstractProp::SetXYPow},
    {{OLESTR(" A(")}, {OLESTR(" B(")}, &CQSAbstractProp::GetAB, &CQSAbstractProp::SetAB},
};
inline constexpr Opening kCoefficientCount{OLESTR(" nParams(")};
inline constexpr Opening kCoefficients{OLESTR(" Values(")};
inline constexpr Opening kPointValue{OLESTR("Value(")};

template <class Text>
void appendItem(Text& text, Opening opening, double value) {
  text << opening.text << value << OLESTR(")");
}
template <class Text>
void appendItem(Text& text, Opening opening, LONG value) {
  text << opening.text << INT{value} << OLESTR(")");
}

template <class Text, class T, std::size_t size>
void appendPairs(Text& text, const CQSAbstractProp& equation, const ItemPair<T> (&pairs)[size]) {
  for (const ItemPair<T>& pair : pairs) {
    T first{};
    T second{};
    (equation.*pair.get)(&first, &second);
    appendItem(text, pair.first, first);
    appendItem(text, pair.second, second);
  }
}

template <class Text>
void appendEquation(Text& text, const CQSAbstractProp& equation) {
  appendPairs(text, equation, kRangeItems);
  LONG count = 0;
  equation.GetNumbOfParameters(&count);
  appendItem(text, kCoefficientCount, count);
  text << kCoefficients.text;
  for (LONG i = 0; i < count; ++i) {
    if (i > 0) text << OLESTR(",");
    double coefficient = kEmptyValue;
    equation.GetParameter(i, &coefficient);
    text << coefficient;
  }
  text << OLESTR(")");
  appendPairs(text, equation, kShapeItems);
  appendPairs(text, equation, kTransformationItems);
}

// Class name and content of an external component: Key(class name) ComContent(content).
struct ComponentText {
  std::optional<WideView> className;  // missing when the text names no class
  WideView content;
};
inline constexpr WideView kClassName = OLESTR("ClassName");  // the keys of class names in use
inline constexpr WideView kClassId = OLESTR("ClassID");
inline constexpr WideView kComponentContent = OLESTR("ComContent(");

template <class Text>
void appendComponent(Text& text, WideView key, const ComponentText& component) {
  if (component.className) {
    text << key << OLESTR("(");
    text.value(*component.className) << OLESTR(") ");
  }
  text << kComponentContent;
  text.value(component.content) << OLESTR(")");
}

// The parts of a text, whose content may hold brackets.
ComponentText readComponent(WideView key, WideView text);

// Whether readComponent finds a class name again that was written into a text.
bool isReadable(WideView className);

}  // namespace qs
