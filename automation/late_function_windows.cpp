#include "automation/late_function.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "automation/script_values.h"
#include "com/com_ptr.h"
#include "com/error.h"
#include "com/locked_array.h"
#include "com/not_set.h"
#include "com/variant.h"

namespace qs {
namespace {

// Mark outputs too small for -32767 as not written: no function writes these values.
constexpr BYTE kUnwrittenByte = 0xEE;
constexpr VARIANT_BOOL kUnwrittenBool = 0x7EEE;

// What arguments that a caller leaves out stand for, by the names of their parameters.
struct Fallback {
  std::wstring_view parameter;
  double value;
};
constexpr Fallback kFallbacks[] = {
    {L"dPres", 101.325}, {L"eExtrapolationMethod", eNoExtrapolation}, {L"ePolicy", eNotSetOutside}};
constexpr std::wstring_view kDependencyWord = L"pDependencies";

bool isMissing(const VARIANT* given) {
  return !given || (V_VT(given) == VT_ERROR && V_ERROR(given) == DISP_E_PARAMNOTFOUND);
}

bool isObject(VARTYPE type) { return type == VT_DISPATCH || type == VT_UNKNOWN; }

// The type of the variable that a caller gives for an output, VT_VARIANT among them; VT_EMPTY when it is no reference.
VARTYPE variableType(const VARIANT* given) {
  return given && (V_VT(given) & VT_BYREF) && V_BYREF(given) ? static_cast<VARTYPE>(V_VT(given) & ~VT_BYREF)
                                                             : VARTYPE{VT_EMPTY};
}

// Whether a variable of a type takes outputs of another.
bool takes(VARTYPE variable, VARTYPE output) {
  if (variable == VT_VARIANT || variable == output) return true;
  return valueSize(variable) && (output == VT_VARIANT || isObject(variable) == isObject(output));
}

// Converts a value in place as VariantChangeType does, but True as a byte is 1.
void convert(VARIANT* value, VARTYPE type) {
  if (V_VT(value) == type) return;
  if (isObject(type) && isObject(V_VT(value)) && !V_UNKNOWN(value)) {
    V_VT(value) = type;
    return;
  }
  if (type == VT_UI1 && V_VT(value) == VT_BOOL) {
    V_BOOL(value) = V_BOOL(value) ? 1 : 0;
    V_VT(value) = VT_I2;
  }
  // VariantChangeType may take a negative 32-bit integer for a large one.
  if ((type == VT_UI4 || type == VT_UINT) && V_VT(value) == VT_I4) {
    V_R8(value) = V_I4(value);
    V_VT(value) = VT_R8;
  }
  check(VariantChangeType(value, value, 0, type));
}

void setEmpty(VARIANT* storage, VARTYPE type) {
  V_VT(storage) = type;
  switch (type) {
    case VT_R8:
      V_R8(storage) = kEmptyValue;
      break;
    case VT_I4:
      V_I4(storage) = kEmptyInteger;
      break;
    case VT_UI1:
      V_UI1(storage) = kUnwrittenByte;
      break;
    case VT_BOOL:
      V_BOOL(storage) = kUnwrittenBool;
      break;
    default:  // strings and interfaces: null
      V_BYREF(storage) = nullptr;
  }
}

// A small value that the function did not write.
void settleUnwritten(VARIANT* storage) {
  const bool unwritten = (V_VT(storage) == VT_UI1 && V_UI1(storage) == kUnwrittenByte) ||
                         (V_VT(storage) == VT_BOOL && V_BOOL(storage) == kUnwrittenBool);
  if (!unwritten) return;
  V_VT(storage) = VT_I4;
  V_I4(storage) = kEmptyInteger;
}

void move(VARIANT* from, VARIANT* to) {
  *to = *from;
  VariantInit(from);
}

}  // namespace

LateFunction::Parameter LateFunction::parameterOf(ITypeInfo& type, const ELEMDESC& description) {
  Parameter parameter;
  parameter.out = description.paramdesc.wParamFlags & (PARAMFLAG_FOUT | PARAMFLAG_FRETVAL);
  parameter.result = description.paramdesc.wParamFlags & PARAMFLAG_FRETVAL;

  const TYPEDESC* value = &description.tdesc;
  if (parameter.out) {
    if (value->vt != VT_PTR) throw CQSCOMError(E_NOTIMPL);
    value = value->lptdesc;
  }
  const bool pointer = value->vt == VT_PTR;
  if (pointer) value = value->lptdesc;
  parameter.type = value->vt == VT_INT ? VARTYPE{VT_I4} : value->vt;
  if (parameter.type == VT_USERDEFINED) {
    ComPtr<ITypeInfo> referred;
    check(type.GetRefTypeInfo(value->hreftype, referred.out()));
    TYPEATTR* attributes = nullptr;
    check(referred->GetTypeAttr(&attributes));
    const TYPEKIND kind = attributes->typekind;
    parameter.iid = attributes->guid;
    referred->ReleaseTypeAttr(attributes);
    parameter.type = kind == TKIND_ENUM ? VARTYPE{VT_I4} : VARTYPE{VT_DISPATCH};
    if (pointer == (kind == TKIND_ENUM)) throw CQSCOMError(E_NOTIMPL);
  } else if (parameter.type == VT_DISPATCH) {
    parameter.iid = __uuidof(IDispatch);
  } else if (parameter.type == VT_UNKNOWN) {
    parameter.iid = __uuidof(IUnknown);
  } else if (pointer) {
    throw CQSCOMError(E_NOTIMPL);
  }
  return parameter;
}

LateFunction::LateFunction(ITypeInfo& type, const FUNCDESC& function, std::span<const std::wstring> names)
    : kind_(static_cast<WORD>(function.invkind)), slot_(function.oVft) {
  for (SHORT i = 0; i < function.cParams; ++i) {
    Parameter& parameter = parameters_.emplace_back(parameterOf(type, function.lprgelemdescParam[i]));
    if (static_cast<std::size_t>(i) >= names.size()) continue;
    const std::wstring& name = names[static_cast<std::size_t>(i)];
    const auto* fallback = std::ranges::find(kFallbacks, name, &Fallback::parameter);
    if (fallback != std::end(kFallbacks)) parameter.fallback = fallback->value;
    parameter.isDependencyWord = i > 0 && name == kDependencyWord;
  }
  while (inputs_ < parameters_.size() && !parameters_[inputs_].result) ++inputs_;
}

bool LateFunction::answers(WORD flags) const {
  if (kind_ & flags) return true;
  return (flags & DISPATCH_PROPERTYPUTREF) && kind_ == INVOKE_PROPERTYPUT && isObject(parameters_.back().type);
}

UINT LateFunction::argumentsBeyond(const DISPPARAMS& given) const {
  // A put names its value. Other names are those of this function's own arguments.
  const bool puts = isPut(given);
  if (given.cNamedArgs > (puts ? 1u : 0u)) return 0;
  const auto places = static_cast<UINT>(inputs_) - (puts && kind_ == INVOKE_PROPERTYPUT ? 1 : 0);
  const UINT positional = given.cArgs - given.cNamedArgs;
  return positional > places ? positional - places : 0;
}

bool LateFunction::leadsToObject(const DISPPARAMS& given) const {
  return kind_ == INVOKE_PROPERTYGET && inputs_ < parameters_.size() && parameters_.back().type == VT_DISPATCH &&
         argumentsBeyond(given);
}

// The arguments of one call.
class LateCall {
 public:
  LateCall(const LateFunction& function, const Invocation& call) : function_(function), call_(call) {
    if (count() > kMost) throw CQSCOMError(E_NOTIMPL);
  }

  HRESULT run(IDispatch* object) {
    place();
    for (std::size_t i = 0; i < count(); ++i) prepare(i);
    Variant answer;
    const HRESULT called = DispCallFunc(object, static_cast<ULONG_PTR>(function_.slot_), CC_STDCALL, VT_ERROR,
                                        static_cast<UINT>(count()), types_.data(), passed_.data(), answer.address());
    lentArrays_.clear();  // an output may take the place of an array
    if (FAILED(called)) return called;
    const HRESULT result = V_ERROR(answer.address());
    if (FAILED(result)) {
      if (call_.exception) {
        *call_.exception = EXCEPINFO{};
        call_.exception->scode = result;
      }
      return DISP_E_EXCEPTION;
    }
    giveBack(result);
    return S_OK;
  }

 private:
  static constexpr std::size_t kMost = 17;

  std::size_t count() const { return function_.parameters_.size(); }
  const LateFunction::Parameter& parameter(std::size_t i) const { return function_.parameters_[i]; }

  // Finds the caller's argument for each parameter. Arguments come last first, named ones in front.
  void place() {
    const DISPPARAMS& given = *call_.parameters;
    if (given.cNamedArgs > given.cArgs) throw CQSCOMError(DISP_E_BADPARAMCOUNT);
    const std::size_t last = function_.inputs_;
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
      const DISPID name = given.rgdispidNamedArgs[i];
      const std::size_t position = name == DISPID_PROPERTYPUT ? last - 1 : static_cast<std::size_t>(name);
      if (name != DISPID_PROPERTYPUT && (name < 0 || position >= last)) throw CQSCOMError(DISP_E_PARAMNOTFOUND);
      if (last == 0 || given_[position]) throw CQSCOMError(DISP_E_BADPARAMCOUNT);
      given_[position] = &given.rgvarg[i];
    }
    const std::size_t positional = given.cArgs - given.cNamedArgs;
    for (std::size_t i = 0; i < positional; ++i) {
      if (i >= last || given_[i]) throw CQSCOMError(DISP_E_BADPARAMCOUNT);
      given_[i] = &given.rgvarg[given.cArgs - 1 - i];
    }
  }

  // Throws the failure of an argument's conversion and sets the number of that argument for the caller.
  template <class Conversion>
  void converting(std::size_t i, Conversion&& conversion) {
    const HRESULT hr = contained([&] {
      conversion();
      return S_OK;
    });
    if (SUCCEEDED(hr)) return;
    if (call_.argumentError) *call_.argumentError = static_cast<UINT>(given_[i] - call_.parameters->rgvarg);
    throw CQSCOMError(hr);
  }

  void prepare(std::size_t i) {
    const LateFunction::Parameter& wanted = parameter(i);
    passed_[i] = arguments_[i].address();
    types_[i] = wanted.type;
    if (wanted.out) {
      const VARTYPE variable = variableType(given_[i]);
      converting(i, [&] {
        if (variable != VT_EMPTY && !takes(variable, wanted.type)) throw CQSCOMError(DISP_E_TYPEMISMATCH);
      });
      setEmpty(storage_[i].address(), wanted.type);
      types_[i] = static_cast<VARTYPE>(VT_BYREF | wanted.type);
      V_VT(arguments_[i].address()) = types_[i];
      V_BYREF(arguments_[i].address()) = &storage_[i].address()->llVal;
      if (wanted.type == VT_VARIANT) {
        VariantInit(storage_[i].address());
        V_BYREF(arguments_[i].address()) = storage_[i].address();
      }
      return;
    }
    VARIANT* argument = arguments_[i].address();
    if (isMissing(given_[i])) {
      if (!wanted.fallback) throw CQSCOMError(DISP_E_PARAMNOTOPTIONAL);
      *argument = Variant(*wanted.fallback).release();
      return convert(argument, wanted.type);
    }
    const VARIANT& given = behind(*given_[i]);
    if (V_VT(&given) == wanted.type && (wanted.type == VT_R8 || wanted.type == VT_I4)) {
      *argument = given;
      return;
    }
    if (wanted.type == VT_VARIANT && (V_VT(&given) & VT_ARRAY) && lend(i, given)) return;
    converting(i, [&] {
      if (isObject(wanted.type)) {
        void* found = nullptr;
        interfaceFrom(given, wanted.iid, &found);
        V_VT(argument) = wanted.type;
        V_UNKNOWN(argument) = static_cast<IUnknown*>(found);
        return;
      }
      check(VariantCopyInd(argument, const_cast<VARIANT*>(&given)));
      if (wanted.type != VT_VARIANT) convert(argument, wanted.type);
    });
  }

  // Passes the caller's own array, which nobody can free or resize during the call. False where it is no array that can
  // be locked.
  bool lend(std::size_t i, const VARIANT& given) {
    if ((V_VT(&given) & VT_BYREF) && !V_BYREF(&given)) return false;
    SAFEARRAY* array = V_VT(&given) & VT_BYREF ? *V_ARRAYREF(&given) : V_ARRAY(&given);
    if (!array) return false;
    converting(i, [&] { lentArrays_.push_back(std::make_unique<LockedArray>(array)); });
    VariantInit(&lent_[i]);
    V_VT(&lent_[i]) = static_cast<VARTYPE>(V_VT(&given) & ~VT_BYREF);
    V_ARRAY(&lent_[i]) = array;
    passed_[i] = &lent_[i];
    return true;
  }

  // Stores all outputs where the caller wants them, after all of them were converted.
  void giveBack(HRESULT result) {
    std::array<VARIANT*, kMost> returned;
    std::size_t returnedCount = 0;
    for (std::size_t i = 0; i < count(); ++i)
      if (parameter(i).result) returned[returnedCount++] = storage_[i].address();
    for (std::size_t i = 0; i < count(); ++i)
      if (parameter(i).out) {
        settleUnwritten(storage_[i].address());
        const VARTYPE variable = variableType(given_[i]);
        if (variable != VT_EMPTY && variable != VT_VARIANT)
          converting(i, [&] { convert(storage_[i].address(), variable); });
      }
    for (std::size_t i = 0; i < count(); ++i) {
      if (!parameter(i).out || parameter(i).result) continue;
      if (isMissing(given_[i])) {
        if (!parameter(i).isDependencyWord || !isMissing(given_[i - 1]))
          returned[returnedCount++] = storage_[i].address();
      } else
        store(storage_[i].address(), given_[i]);
    }
    if (!call_.result) return;
    VariantInit(call_.result);
    if (returnedCount == 1) {
      move(returned[0], call_.result);
    } else if (returnedCount > 1) {
      returnArray({returned.data(), returnedCount});
    } else if (function_.kind_ == INVOKE_FUNC) {
      V_VT(call_.result) = VT_BOOL;
      V_BOOL(call_.result) = result == S_OK ? VARIANT_TRUE : VARIANT_FALSE;
    }
  }

  // A reference receives the output; any other argument in its place is ignored.
  static void store(VARIANT* output, VARIANT* given) {
    const VARTYPE variable = variableType(given);
    if (variable == VT_EMPTY) return;
    if (variable == VT_VARIANT) {
      VariantClear(V_VARIANTREF(given));
      move(output, V_VARIANTREF(given));
    } else if (variable == VT_DECIMAL) {
      *V_DECIMALREF(given) = V_DECIMAL(output);
    } else {
      // Swaps output and variable, so that the storage frees what the variable held.
      std::byte old[sizeof(double)];
      const std::size_t size = valueSize(variable);
      std::memcpy(old, V_BYREF(given), size);
      std::memcpy(V_BYREF(given), &output->llVal, size);
      std::memcpy(&output->llVal, old, size);
    }
  }

  void returnArray(std::span<VARIANT* const> elements) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(elements.size()));
    if (!array) throw CQSCOMError(E_OUTOFMEMORY);
    auto* place = static_cast<VARIANT*>(array->pvData);
    for (VARIANT* element : elements) move(element, place++);
    V_VT(call_.result) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(call_.result) = array;
  }

  const LateFunction& function_;
  const Invocation& call_;
  std::array<VARIANT*, kMost> given_{};
  std::array<Variant, kMost> arguments_;
  std::array<Variant, kMost> storage_;  // what out-parameters point to
  std::array<VARIANT, kMost> lent_;     // what belongs to the caller
  std::vector<std::unique_ptr<LockedArray>> lentArrays_;
  std::array<VARTYPE, kMost> types_{};
  std::array<VARIANTARG*, kMost> passed_{};
};

HRESULT LateFunction::call(IDispatch* object, const Invocation& call) const noexcept {
  return contained([&] {
    if (!call.parameters) return E_INVALIDARG;
    const DISPPARAMS& given = *call.parameters;
    if (!leadsToObject(given)) return LateCall(*this, call).run(object);

    // The arguments come last first: those of the property are at the end.
    const auto own = static_cast<UINT>(inputs_);
    const UINT further = given.cArgs - own;
    DISPPARAMS first{given.rgvarg + further, nullptr, own, 0};
    DISPPARAMS rest{given.rgvarg, given.rgdispidNamedArgs, further, given.cNamedArgs};
    Variant holder;
    const Invocation get{call.member, DISPATCH_PROPERTYGET, &first, holder.address(), call.exception, nullptr};
    if (const HRESULT hr = LateCall(*this, get).run(object); FAILED(hr)) return hr;
    if (!V_DISPATCH(holder.address())) return DISP_E_MEMBERNOTFOUND;
    return V_DISPATCH(holder.address())
        ->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, call.flags, &rest, call.result, call.exception,
                 call.argumentError);
  });
}

}  // namespace qs
