// Measures the modules on Windows: getters, and late binding against the type library's own Invoke.
#include <array>

#include "benchmarks/getters.h"
#include "benchmarks/lines.h"
#include "benchmarks/rounds.h"
#include "com/bstr.h"
#include "com/error.h"
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
  rounds.run(15);
  printLine("VP late-bound / the type library's Invoke", rounds.ratio("late", "of the type"), 1.5, "x ", 2);
  std::cout << std::setprecision(1) << "   (" << rounds.nanoseconds("late") << " and "
            << rounds.nanoseconds("of the type") << " ns; early-bound " << rounds.nanoseconds("early") << " ns)\n";
}

}  // namespace
}  // namespace qs::bench

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  try {
    qs::host::LoadedModule containers("qscontainers"), hostKit("qshostkit");
    qs::check(containers.registerClass(__uuidof(::COQSCompound)));
    qs::check(hostKit.registerClass(__uuidof(::HostRealArray)));
    // The logarithm and the power of the Windows C library are slow.
    qs::bench::measureGetters({{{"DIPPR101", 0.4}}});
    qs::bench::measureLateBinding();
  } catch (const qs::CQSCOMError& error) {
    std::cerr << "qs_bench: result " << std::hex << error.result() << "\n";
    return 1;
  } catch (const std::exception& error) {
    std::cerr << "qs_bench: " << error.what() << "\n";
    return 1;
  }
}
