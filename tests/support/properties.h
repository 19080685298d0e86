// What the tests of property objects share: strings as 8-bit text, equations by shape, a component to delegate to.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "props/curve.h"
#include "tests/support/host_object.h"

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

// An external component: the value is the sum of its arguments; references are counted and never delete it.
struct FakeComponent : test::HostProperty {
  HRESULT result = S_OK;

  STDMETHODIMP GetProperty(double T, double P, tagExtrapolationEnum e, LONG* pDependencies,
                           double* pVal) noexcept override {
    *pDependencies = 3;
    *pVal = T + P + static_cast<int>(e);
    return result;
  }
  STDMETHODIMP Store(BSTR* pVal) noexcept override {
    if (SUCCEEDED(result)) *pVal = Bstr(OLESTR("k=1")).release();
    return result;
  }
};

}  // namespace qs
