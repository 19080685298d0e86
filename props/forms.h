// The forms of correlation equations as data.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "interfaces/interfaces.h"
#include "platform/text.h"

namespace qs {

struct EquationForm {
  LONG shape;          // a tagEquationShapeEnum
  WideView className;  // as GetClassName returns it
  WideView formula;    // as GetForm returns it
  LONG coefficients;
  LONG exponent;           // the coefficient that is a power of something else; negative for none
  std::string_view scale;  // the coefficients that take a factor of Y, as props/forms.def has them
};

// Coefficients by the letters of the formulas.
namespace letter {
enum : LONG { None = -1, A, B, C, D, E, F, G };
}

// Each form at the place of its shape number, then the empty form, PropCurveVoid.
inline constexpr auto kEquationForms = std::to_array<EquationForm>({
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) \
  {PropCurve##name, OLESTR("PropCurve" #name), OLESTR(formula), coefficients, letter::exponent, scale},
#include "props/forms.def"
    {PropCurveVoid, OLESTR("PropCurveVoid"), OLESTR(""), 0, letter::None, ""},
});
inline constexpr std::size_t kFormCount = kEquationForms.size() - 1;

inline constexpr LONG kMostCoefficients =
    std::max_element(kEquationForms.begin(), kEquationForms.end(), [](const EquationForm& a, const EquationForm& b) {
      return a.coefficients < b.coefficients;
    })->coefficients;

// The form of a shape number, or of a class name; null when there is none.
constexpr const EquationForm* findForm(LONG shape) {
  if (shape == PropCurveVoid) return &kEquationForms.back();
  return shape >= 0 && shape < LONG{kFormCount} ? &kEquationForms[static_cast<std::size_t>(shape)] : nullptr;
}
constexpr const EquationForm* findForm(WideView className) {
  const auto found = std::find_if(kEquationForms.begin(), kEquationForms.end(),
                                  [className](const EquationForm& form) { return form.className == className; });
  return found == kEquationForms.end() ? nullptr : &*found;
}

// The numbers have no gap, and no name occurs twice.
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...)            \
  static_assert(PropCurve##name == number && kEquationForms[number].shape == number); \
  static_assert(findForm(OLESTR("PropCurve" #name)) == &kEquationForms[number]);
#include "props/forms.def"

}  // namespace qs
