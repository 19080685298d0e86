#include <array>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/error.h"
#include "com/host_arrays.h"
#include "com/late_function.h"

namespace qs {
namespace {

constexpr LONG kEmpty = -32767;
// Stand where a function may write a small value that cannot be -32767: no function writes these.
constexpr BYTE kUnwrittenByte = 0xEE;
constexpr VARIANT_BOOL kUnwrittenBool = 0x7EEE;

class Variant {
 public:
  Variant() = default;
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() {
    if (ownsMemory()) VariantClear(&value_);
  }

  VARIANT* get() { return &value_; }
  VARIANT* operator->() { return &value_; }

 private:
  // Numbers do not, nor what is referred to.
  bool ownsMemory() const { return V_VT(&value_) >= VT_BSTR && !(V_VT(&value_) & VT_BYREF); }

  VARIANT value_{};
};

// The value that a caller's variant holds, behind any reference to another variant.
VARIANT* behind(VARIANT* given) {
  return V_VT(given) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(given) ? V_VARIANTREF(given) : given;
}

bool isMissing(const VARIANT* given) {
  return !given || (V_VT(given) == VT_ERROR && V_ERROR(given) == DISP_E_PARAMNOTFOUND);
}

HRESULT typeMismatchUnless(HRESULT converted) { return SUCCEEDED(converted) ? S_OK : DISP_E_TYPEMISMATCH; }

double numberFrom(VARIANT* element) {
  Variant number;
  check(typeMismatchUnless(VariantChangeType(number.get(), element, 0, VT_R8)));
  return V_R8(number.get());
}

// The elements of an array of one dimension.
std::vector<double> elementsOf(SAFEARRAY* array) {
  if (!array || SafeArrayGetDim(array) != 1) throw CQSCOMError(DISP_E_TYPEMISMATCH);
  VARTYPE type = VT_EMPTY;
  LONG first = 0;
  LONG last = -1;
  check(SafeArrayGetVartype(array, &type));
  check(SafeArrayGetLBound(array, 1, &first));
  check(SafeArrayGetUBound(array, 1, &last));
  std::vector<double> elements;
  for (LONG i = first; i <= last; ++i) {
    Variant element;
    void* place = type == VT_VARIANT ? static_cast<void*>(element.get()) : &element->llVal;
    check(SafeArrayGetElement(array, &i, place));
    if (type != VT_VARIANT) element->vt = type;
    elements.push_back(numberFrom(element.get()));
  }
  return elements;
}

// A property of a script's object; false when it has none of that name.
bool readMember(IDispatch* object, const WideString& name, Variant& value) {
  WideString copy = name;
  LPOLESTR names[] = {copy.data()};
  DISPID id = 0;
  DISPPARAMS none{};
  return SUCCEEDED(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)) &&
         SUCCEEDED(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value.get(), nullptr,
                                  nullptr));
}

// The elements of a script's own array, an object with `length` and members named by number.
std::vector<double> elementsOf(IDispatch* scriptArray) {
  Variant length;
  if (!scriptArray || !readMember(scriptArray, L"length", length)) throw CQSCOMError(DISP_E_TYPEMISMATCH);
  const double size = numberFrom(length.get());
  std::vector<double> elements;
  for (LONG i = 0; i < size; ++i) {
    Variant element;
    if (!readMember(scriptArray, std::to_wstring(i), element)) throw CQSCOMError(DISP_E_TYPEMISMATCH);
    elements.push_back(numberFrom(element.get()));
  }
  return elements;
}

// An array object of the host's class, where a function takes one and the caller has plain elements; of reals, where
// any object will do.
ComPtr<IDispatch> arrayObject(REFIID iid, const std::vector<double>& elements) {
  if (IsEqualGUID(iid, __uuidof(IRealArrayDisp)) || IsEqualGUID(iid, __uuidof(IDispatch)))
    return ComPtr<IDispatch>(newRealArray(elements).get());
  if (!IsEqualGUID(iid, __uuidof(IIntegerArrayDisp))) throw CQSCOMError(DISP_E_TYPEMISMATCH);
  std::vector<LONG> integers;
  for (const double element : elements) {
    const auto integer = static_cast<LONG>(element);
    if (!(element > -2147483649.0 && element < 2147483648.0) || integer != element)
      throw CQSCOMError(DISP_E_TYPEMISMATCH);
    integers.push_back(integer);
  }
  return ComPtr<IDispatch>(newIntegerArray(integers).get());
}

// The pointer of an interface from what the caller gives: an object that has it, nothing, or plain elements.
void convertToInterface(VARIANT* given, VARTYPE type, REFIID iid, Variant& converted) {
  void* found = nullptr;
  if (V_VT(given) & VT_ARRAY) {
    SAFEARRAY* array = V_VT(given) & VT_BYREF ? *V_ARRAYREF(given) : V_ARRAY(given);
    check(arrayObject(iid, elementsOf(array))->QueryInterface(iid, &found));
  } else if (V_VT(given) != VT_EMPTY && V_VT(given) != VT_NULL) {
    Variant object;
    check(typeMismatchUnless(VariantChangeType(object.get(), given, 0, VT_UNKNOWN)));
    IUnknown* unknown = V_UNKNOWN(object.get());
    const auto dispatch = ComPtr<IDispatch>::from(unknown);
    Variant length;
    const bool scriptArray =
        IsEqualGUID(iid, __uuidof(IDispatch)) && dispatch && readMember(dispatch.get(), L"length", length);
    if (unknown && (scriptArray || FAILED(unknown->QueryInterface(iid, &found))))
      check(arrayObject(iid, elementsOf(dispatch.get()))->QueryInterface(iid, &found));
  }
  V_VT(converted.get()) = type;
  V_UNKNOWN(converted.get()) = static_cast<IUnknown*>(found);
}

void setEmpty(VARIANT* storage, VARTYPE type) {
  V_VT(storage) = type;
  switch (type) {
    case VT_R8:
      V_R8(storage) = kEmpty;
      break;
    case VT_I4:
      V_I4(storage) = kEmpty;
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
  V_I4(storage) = kEmpty;
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

LateFunction::LateFunction(ITypeInfo& type, const FUNCDESC& function)
    : kind_(static_cast<WORD>(function.invkind)), slot_(function.oVft) {
  for (SHORT i = 0; i < function.cParams; ++i) parameters_.push_back(parameterOf(type, function.lprgelemdescParam[i]));
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
                                        static_cast<UINT>(count()), types_.data(), passed_.data(), answer.get());
    if (FAILED(called)) return called;
    const HRESULT result = V_ERROR(answer.get());
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
  static constexpr std::size_t kMost = 16;

  std::size_t count() const { return function_.parameters_.size(); }
  const LateFunction::Parameter& parameter(std::size_t i) const { return function_.parameters_[i]; }

  // Which of the caller's arguments stands for which parameter. They come last first, named ones in front.
  void place() {
    const DISPPARAMS& given = *call_.parameters;
    if (given.cNamedArgs > given.cArgs) throw CQSCOMError(DISP_E_BADPARAMCOUNT);
    std::size_t last = count();
    while (last > 0 && parameter(last - 1).result) --last;
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

  void prepare(std::size_t i) {
    const LateFunction::Parameter& wanted = parameter(i);
    passed_[i] = arguments_[i].get();
    types_[i] = wanted.type;
    if (wanted.out) {
      setEmpty(storage_[i].get(), wanted.type);
      types_[i] = static_cast<VARTYPE>(VT_BYREF | wanted.type);
      V_VT(arguments_[i].get()) = types_[i];
      V_BYREF(arguments_[i].get()) = &storage_[i]->llVal;
      if (wanted.type == VT_VARIANT) {
        VariantInit(storage_[i].get());
        V_BYREF(arguments_[i].get()) = storage_[i].get();
      }
      return;
    }
    if (isMissing(given_[i])) throw CQSCOMError(DISP_E_PARAMNOTOPTIONAL);
    VARIANT* given = behind(given_[i]);
    if (V_VT(given) == wanted.type && (wanted.type == VT_R8 || wanted.type == VT_I4)) {
      *arguments_[i].get() = *given;
      return;
    }
    const HRESULT converted = guarded([&] {
      if (!IsEqualGUID(wanted.iid, GUID{}) && wanted.type != VT_I4)
        convertToInterface(given, wanted.type, wanted.iid, arguments_[i]);
      else if (wanted.type == VT_VARIANT)
        check(VariantCopyInd(arguments_[i].get(), given));
      else
        check(VariantChangeType(arguments_[i].get(), given, 0, wanted.type));
      return S_OK;
    });
    if (SUCCEEDED(converted)) return;
    if (call_.argumentError) *call_.argumentError = call_.parameters->cArgs - 1 - static_cast<UINT>(i);
    throw CQSCOMError(converted);
  }

  // Puts every output where the caller wants it.
  void giveBack(HRESULT result) {
    std::array<VARIANT*, kMost> returned;
    std::size_t returnedCount = 0;
    for (std::size_t i = 0; i < count(); ++i)
      if (parameter(i).result) returned[returnedCount++] = storage_[i].get();
    for (std::size_t i = 0; i < count(); ++i) {
      if (!parameter(i).out) continue;
      settleUnwritten(storage_[i].get());
      if (parameter(i).result) continue;
      if (isMissing(given_[i]))
        returned[returnedCount++] = storage_[i].get();
      else
        store(storage_[i].get(), given_[i]);
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

  // A by-reference variant receives the output; any other argument in its place was not meant to.
  static void store(VARIANT* output, VARIANT* given) {
    if (V_VT(given) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(given)) {
      VariantClear(V_VARIANTREF(given));
      move(output, V_VARIANTREF(given));
    } else if (V_VT(given) == (VT_BYREF | V_VT(output)) && V_BYREF(given)) {
      storeTyped(output, given);
    }
  }

  static void storeTyped(VARIANT* output, VARIANT* given) {
    switch (V_VT(output)) {
      case VT_R8:
        *V_R8REF(given) = V_R8(output);
        break;
      case VT_I4:
        *V_I4REF(given) = V_I4(output);
        break;
      case VT_UI1:
        *V_UI1REF(given) = V_UI1(output);
        break;
      case VT_BOOL:
        *V_BOOLREF(given) = V_BOOL(output);
        break;
      case VT_BSTR:
        SysFreeString(*V_BSTRREF(given));
        *V_BSTRREF(given) = V_BSTR(output);
        VariantInit(output);
        break;
      case VT_DISPATCH:
      case VT_UNKNOWN:
        if (*V_UNKNOWNREF(given)) (*V_UNKNOWNREF(given))->Release();
        *V_UNKNOWNREF(given) = V_UNKNOWN(output);
        VariantInit(output);
        break;
      default:
        break;
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
  std::array<VARTYPE, kMost> types_{};
  std::array<VARIANTARG*, kMost> passed_{};
};

HRESULT LateFunction::call(IDispatch* object, const Invocation& call) const noexcept {
  return guarded([&] {
    if (!call.parameters) return E_INVALIDARG;
    return LateCall(*this, call).run(object);
  });
}

}  // namespace qs
