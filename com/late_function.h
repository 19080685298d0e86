// A function of an interface as late-bound callers use it: its arguments are converted, and what it gives back comes
// back (Windows only; it calls through the type library).
//
// An out-parameter fills the by-reference variant that the caller gives for it, with its own type; a value given in its
// place is passed over. Out-parameters left out at the end are returned: a single one as the result, several as an
// array in their order, after the return value where there is one. What the function leaves unwritten reads as the
// empty value -32767 (a string as null, an object as none). A function that returns nothing else answers True for S_OK
// and False for S_FALSE; a failure raises the caller's exception with its result code.
#pragma once

#include <vector>

#include "com/dispatch.h"

namespace qs {

class LateFunction {
 public:
  // From a function of an interface's virtual table. Throws CQSCOMError(E_NOTIMPL) for parameters of types that the
  // system's interfaces do not have.
  LateFunction(ITypeInfo& type, const FUNCDESC& function);

  bool answers(WORD flags) const { return kind_ & flags; }

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
};

}  // namespace qs
