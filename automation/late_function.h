// A function of an interface as late-bound callers use it: converts the arguments, calls, and returns the outputs
// (Windows only; it calls through the type library).
//
// An out-parameter fills the variable that the caller gives for it by reference. A variant gets the output's own type;
// a number, a boolean or a text is converted. The result is DISP_E_OVERFLOW for a number that does not fit, and then no
// variable is changed; DISP_E_TYPEMISMATCH, before the call, for a variable that cannot take the value. A value given
// in an output's place is ignored. Out-parameters omitted at the end are returned: one as the result, several as an
// array in their order, after the return value where there is one. What the function does not write reads as the empty
// value -32767 (a string as null, an object as none). A function without outputs returns True for S_OK and False for
// S_FALSE. A failure raises the caller's exception with its result code.
//
// A pressure, an extrapolation method or a policy that the caller leaves out is 101.325 kPa, none, and not set outside
// the range. A caller that gives no extrapolation method wants no dependency word either: it gets the number alone.
//
// Arguments are converted as VariantChangeType does, with two exceptions: True as a byte is 1, and arrays become the
// host's array objects. Arguments beyond those of a property that returns an object go to that object's default
// member.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "automation/dispatch.h"

namespace qs {

class LateFunction {
 public:
  // From a function of an interface's virtual table; `names` are those of the parameters. Throws CQSCOMError(E_NOTIMPL)
  // for parameters of types that the system's interfaces do not have.
  LateFunction(ITypeInfo& type, const FUNCDESC& function, std::span<const std::wstring> names);

  // Whether a call with the flags of IDispatch::Invoke means this function. A put of an object is also one by
  // reference.
  bool answers(WORD flags) const;

  // Whether the caller gives the value of a put under its own name, as it must.
  static bool isPut(const DISPPARAMS& given) {
    return given.cNamedArgs >= 1 && given.cArgs >= 1 && given.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
  }

  // The number of arguments that it takes.
  std::size_t inputs() const { return inputs_; }

  // How many arguments a caller gives by position beyond those that it takes.
  UINT argumentsBeyond(const DISPPARAMS& given) const;

  // Whether it is a getter of an object whose default member takes those arguments.
  bool leadsToObject(const DISPPARAMS& given) const;

  // `object` points to the interface.
  HRESULT call(IDispatch* object, const Invocation& call) const noexcept;

 private:
  friend class LateCall;

  struct Parameter {
    VARTYPE type = VT_EMPTY;              // of the value, without VT_BYREF
    bool out = false;                     // passed as the address of a value that the function writes
    bool result = false;                  // the return value
    IID iid{};                            // of an interface pointer that is not IDispatch or IUnknown; else null
    std::optional<double> fallback = {};  // where the caller leaves it out
    bool isDependencyWord = false;        // behind the extrapolation method
  };

  static Parameter parameterOf(ITypeInfo& type, const ELEMDESC& description);

  WORD kind_;  // an INVOKEKIND
  SHORT slot_;
  std::vector<Parameter> parameters_;
  std::size_t inputs_ = 0;  // parameters but for the return value
};

}  // namespace qs
