// What the tests of property objects share: strings as 8-bit text and equations by shape.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "props/curve.h"
#include "tests/support/components.h"

namespace qs {

// The text of a string that a call gave out, freed here; "(null)" for none.
inline std::string taken(BSTR text) {
  if (!text) return "(null)";
  std::string bytes = narrow(viewOf(text));
  SysFreeString(text);
  return bytes;
}

inline std::string stored(const CQSAbstractProp& property) {
  BSTR text = nullptr;
  EXPECT_EQ(property.Store(&text), S_OK);
  return taken(text);
}

inline void recall(CQSAbstractProp& property, std::string_view text) {
  EXPECT_EQ(property.Recall(Bstr(widen(text)).get()), S_OK);
}

inline std::unique_ptr<CQSAbstractProp> equation(LONG shape) {
  CQSAbstractProp* created = nullptr;
  EXPECT_EQ(CreateEquationProp(shape, &created), S_OK) << shape;
  return std::unique_ptr<CQSAbstractProp>(created);
}

// What an evaluation answers and leaves in its out-parameters.
struct Evaluation {
  HRESULT result;
  LONG dependencies;
  double value;

  bool operator==(const Evaluation&) const = default;
};
constexpr LONG kUnwrittenLong = 77;
constexpr double kUnwritten = 4242.5;

inline Evaluation evaluate(const CQSAbstractProp& property, double T = 300.0, double P = 101.325) {
  Evaluation out{S_OK, kUnwrittenLong, kUnwritten};
  out.result = property.GetValue(T, P, eNoExtrapolation, &out.dependencies, &out.value);
  return out;
}

}  // namespace qs
