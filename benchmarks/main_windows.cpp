// Measures the modules on Windows: getters, evaluation, and late binding against the type library's own Invoke.
#include <array>

#include "benchmarks/evaluation.h"
#include "benchmarks/getters.h"
#include "benchmarks/lines.h"
#include "com/bstr.h"
#include "com/error.h"
#include "com/variant.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace qs::bench {
namespace {

constexpr int kCalls = 20'000;

// VP(300 K, 101.325 kPa, no extrapolation) through IDispatch::Invoke or ITypeInfo::Invoke.
class LateVP {
 public:
  explicit LateVP(IDispatch* object) : object_(object) {
    check(object->GetTypeInfo(0, 0, type_.out()));
    OLECHAR name[] = L"VP";
    LPOLESTR names[] = {name};
    check(object->GetIDsOfNames(IID_NULL, names, 1, 0, &member_));
    // The arguments stand last first.
    V_VT(&arguments_[0]) = VT_BYREF | VT_I4;
    V_I4REF(&arguments_[0]) = &dependencies_;
    V_VT(&arguments_[1]) = VT_I4;
    V_I4(&arguments_[1]) = eNoExtrapolation;
    for (const int i : {2, 3}) V_VT(&arguments_[i]) = VT_R8;
    V_R8(&arguments_[2]) = 101.325;
    V_R8(&arguments_[3]) = 300.0;
  }

  double invoke() {
    check(object_->Invoke(member_, IID_NULL, 0, DISPATCH_PROPERTYGET, &parameters_, &result_, nullptr, nullptr));
    return V_R8(&result_);
  }
  double invokeOfType() {
    check(type_->Invoke(object_, member_, DISPATCH_PROPERTYGET, &parameters_, &result_, nullptr, nullptr));
    return V_R8(&result_);
  }

 private:
  IDispatch* object_;
  ComPtr<ITypeInfo> type_;
  DISPID member_ = 0;
  LONG dependencies_ = 0;
  VARIANT result_{};
  std::array<VARIANT, 4> arguments_{};
  DISPPARAMS parameters_{arguments_.data(), nullptr, 4, 0};
};

// VP of a thousand temperatures in one call, as a script makes it: an array of variants in, two out.
class LateArray {
 public:
  explicit LateArray(IDispatch* object) : object_(object) {
    OLECHAR name[] = L"Evaluate";
    LPOLESTR names[] = {name};
    check(object->GetIDsOfNames(IID_NULL, names, 1, 0, &member_));
    SAFEARRAYBOUND bound{kTemperatures, 0};
    V_VT(temperatures_.address()) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(temperatures_.address()) = SafeArrayCreate(VT_VARIANT, 1, &bound);
    auto* elements = static_cast<VARIANT*>(V_ARRAY(temperatures_.address())->pvData);
    for (ULONG i = 0; i < kTemperatures; ++i) elements[i] = Variant(300.0 + i * 0.1).release();
    V_VT(&arguments_[0]) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&arguments_[0]) = statuses_.address();
    V_VT(&arguments_[1]) = VT_I4;
    V_I4(&arguments_[1]) = eRecommended;
    V_VT(&arguments_[2]) = VT_R8;
    V_R8(&arguments_[2]) = 101.325;
    V_VT(&arguments_[3]) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&arguments_[3]) = temperatures_.address();
    V_VT(&arguments_[4]) = VT_I4;
    V_I4(&arguments_[4]) = eValue;
    V_VT(&arguments_[5]) = VT_BSTR;
    V_BSTR(&arguments_[5]) = name_.get();
  }

  double invoke() {
    Variant values;
    check(object_->Invoke(member_, IID_NULL, 0, DISPATCH_METHOD, &parameters_, values.address(), nullptr, nullptr));
    return V_R8(static_cast<VARIANT*>(V_ARRAY(values.address())->pvData) + kTemperatures - 1);
  }

  static constexpr ULONG kTemperatures = 1'000;

 private:
  IDispatch* object_;
  DISPID member_ = 0;
  const Bstr name_{OLESTR("VP")};
  Variant temperatures_, statuses_;
  std::array<VARIANT, 6> arguments_{};
  DISPPARAMS parameters_{arguments_.data(), nullptr, 6, 0};
};

// The compounds of a list as a script's loops reach them.
class LateList {
 public:
  explicit LateList(IDispatch* list) : list_(list) {}

  void byPosition() {
    for (LONG i = 0; i < kCompounds; ++i) {
      Variant position(i);
      if (!V_DISPATCH(get(DISPID_VALUE, position.address(), 1).address())) throw CQSCOMError(E_FAIL);
    }
  }
  void forEach() {
    Variant made = get(DISPID_NEWENUM, nullptr, 0);
    const auto enumerator = ComPtr<IEnumVARIANT>::from(V_UNKNOWN(made.address()));
    LONG found = 0;
    for (Variant element; enumerator->Next(1, element.address(), nullptr) == S_OK; element = Variant()) ++found;
    if (found != kCompounds) throw CQSCOMError(E_FAIL);
  }

  static constexpr LONG kCompounds = 10'000;

 private:
  Variant get(DISPID member, VARIANT* arguments, UINT count) {
    Variant result;
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    check(list_->Invoke(member, IID_NULL, 0, DISPATCH_PROPERTYGET, &parameters, result.address(), nullptr, nullptr));
    return result;
  }

  ComPtr<IDispatch> list_;
};

void measureLateBinding() {
  const auto compound = host::createInstance<IBasicCompound>(__uuidof(::COQSCompound));
  check(ComPtr<ICompoundPropPut>::from(compound.get())->SetPointProperty(Bstr(L"VP").get(), 1, 3.5));
  LateVP late(compound.get());
  const auto early = [&] {
    LONG dependencies = 0;
    double value = 0.0;
    compound->get_VP(300.0, 101.325, eNoExtrapolation, &dependencies, &value);
    return value;
  };
  if (late.invoke() != 3.5 || late.invokeOfType() != 3.5 || early() != 3.5) throw CQSCOMError(E_FAIL);

  Rounds rounds;
  const auto add = [&rounds](const std::string& name, auto call) {
    rounds.add(name, kCalls, [call] {
      volatile double sum = 0.0;
      for (int i = 0; i < kCalls; ++i) sum = sum + call();
    });
  };
  add("late", [&] { return late.invoke(); });
  add("of the type", [&] { return late.invokeOfType(); });
  add("early", early);
  LateArray many(compound.get());
  if (many.invoke() != 3.5) throw CQSCOMError(E_FAIL);
  rounds.add("array", LateArray::kTemperatures, [&] { many.invoke(); });
  const auto compounds = host::createInstance<ICompoundCollection>(__uuidof(::COQSCompoundCollection));
  for (LONG i = 0; i < LateList::kCompounds; ++i) check(compounds->AddCompound(compound.get()));
  LateList list(compounds.get());
  rounds.add("by position", LateList::kCompounds, [&] { list.byPosition(); });
  rounds.add("for each", LateList::kCompounds, [&] { list.forEach(); });
  rounds.run(15);
  printLine("VP late-bound / the type library's Invoke", rounds.ratio("late", "of the type"), 1.5, "x ", 2);
  std::cout << std::setprecision(1) << "   (" << rounds.nanoseconds("late") << " and "
            << rounds.nanoseconds("of the type") << " ns; early-bound " << rounds.nanoseconds("early") << " ns)\n";
  RoundLines(rounds).ratio("VP of 1,000 temperatures from a script / 1,000 getters", "array", "late", 0.1);
  RoundLines(rounds).ratio("for each of 10,000 compounds / by position", "for each", "by position", 2.0);
}

}  // namespace
}  // namespace qs::bench

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  try {
    qs::host::LoadedModule containers("qscontainers"), hostKit("qshostkit");
    qs::check(containers.registerClass(__uuidof(::COQSCompound)));
    qs::check(containers.registerClass(__uuidof(::COQSCompoundCollection)));
    qs::check(hostKit.registerClass(__uuidof(::HostRealArray)));
    // The logarithm and the power of the Windows C library are slow.
    qs::bench::measureGetters({{{"DIPPR101", 0.4}}});
    qs::bench::measureEvaluation();
    qs::bench::measureLateBinding();
  } catch (const qs::CQSCOMError& error) {
    std::cerr << "qs_bench: result " << std::hex << error.result() << "\n";
    return 1;
  } catch (const std::exception& error) {
    std::cerr << "qs_bench: " << error.what() << "\n";
    return 1;
  }
}
