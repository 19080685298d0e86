// A function of an interface as late-bound callers use it: its arguments are converted, and what it gives back comes
// back (Windows only; it calls through the type library).
//
// An out-parameter fills the variable that the caller gives for it by reference: a variant with its own type, a number,
// a boolean or a text by conversion, where DISP_E_OVERFLOW answers a number that does not fit and no variable is
// changed. A variable that takes no such value is DISP_E_TYPEMISMATCH, before the call. A value given in an output's
// place is passed over. Out-parameters left out at the end are returned: a single one as the result, several as an
// array in their order, after the return value where there is one. What the function leaves unwritten reads as the
// empty value -32767 (a string as null, an object as none). A function that returns nothing else answers True for S_OK
// and False for S_FALSE; a failure raises the caller's exception with its result code.
//
// Arguments are converted as VariantChangeType does, but for a byte True is 1, and arrays become the host's array
// objects. Arguments beyond those of a property that gives an object go to that object's default member.
#pragma once

#include <vector>

#include "automation/dispatch.h"

namespace qs {

class LateFunction {
 public:
  // From a function of an interface's virtual table. Throws CQSCOMError(E_NOTIMPL) for parameters of types that the
  // system's interfaces do not have.
  LateFunction(ITypeInfo& type, const FUNCDESC& function);

  // Whether a call with the flags of IDispatch::Invoke means it. A put of an object is also one by reference.
  bool answers(WORD flags) const;

  // Whether the caller gives the value of a put, as it must, under its own name.
  static bool isPut(const DISPPARAMS& given) {
    return given.cNamedArgs >= 1 && given.cArgs >= 1 && given.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
  }

  // The places that arguments have in it.
  std::size_t inputs() const { return inputs_; }

  // How many arguments a caller gives, by position, for which it has no place.
  UINT argumentsBeyond(const DISPPARAMS& given) const;

  // Whether it is a getter of an object whose default member such arguments are for.
  bool leadsToObject(const DISPPARAMS& given) const;

  // Raises nothing. `object` points to the interface.
  HRESULT call(IDispatch* object, const Invocation& call) const noexcept;

 private:
  friend class LateCall;

  struct Parameter {
    VARTYPE type = VT_EMPTY;  // of the value, without VT_BYREF
    bool out = false;         // passed as the address of a value that the function writes
    bool result = false;      // the return value
    IID iid{};                // of an interface pointer that is not IDispatch or IUnknown; else null
  };

  static Parameter parameterOf(ITypeInfo& type, const ELEMDESC& description);

  WORD kind_;  // an INVOKEKIND
  SHORT slot_;
  std::vector<Parameter> parameters_;
  std::size_t inputs_ = 0;  // parameters but for the return value
};

}  // namespace qs
