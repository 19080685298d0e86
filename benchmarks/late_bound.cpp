// Measures late binding against the type library's own Invoke (Windows only) and prints the lines that qs_bench prints.
#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <vector>

#include "benchmarks/lines.h"
#include "com/bstr.h"
#include "com/error.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace qs::bench {
namespace {

constexpr int kRepetitions = 15;
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

// The median time of a call of each function in ns; they take turns.
std::vector<double> mediansOf(const std::vector<std::function<double()>>& functions) {
  std::vector<std::vector<double>> times(functions.size());
  volatile double sum = 0.0;
  for (int repetition = 0; repetition < kRepetitions; ++repetition)
    for (std::size_t i = 0; i < functions.size(); ++i) {
      const auto start = std::chrono::steady_clock::now();
      for (int call = 0; call < kCalls; ++call) sum = sum + functions[i]();
      const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
      times[i].push_back(elapsed.count() / kCalls);
    }
  std::vector<double> medians;
  for (std::vector<double>& each : times) {
    std::ranges::nth_element(each, each.begin() + kRepetitions / 2);
    medians.push_back(each[kRepetitions / 2]);
  }
  return medians;
}

void measure() {
  host::LoadedModule containers("qscontainers");
  check(containers.registerClass(__uuidof(::COQSCompound)));
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

  const auto medians = mediansOf({[&] { return late.invoke(); }, [&] { return late.invokeOfType(); }, early});
  printLine("VP late-bound / the type library's Invoke", medians[0] / medians[1], 1.5, "x ", 2);
  std::cout << std::setprecision(1) << "   (" << medians[0] << " and " << medians[1] << " ns; early-bound "
            << medians[2] << " ns)\n";
}

}  // namespace
}  // namespace qs::bench

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  try {
    qs::bench::measure();
  } catch (const qs::CQSCOMError& error) {
    std::cerr << "late_bound_bench: result " << std::hex << error.result() << "\n";
    return 1;
  } catch (const std::exception& error) {
    std::cerr << "late_bound_bench: " << error.what() << "\n";
    return 1;
  }
}
