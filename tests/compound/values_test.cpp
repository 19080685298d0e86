// Values and ranges of the fixed keys through the typed getters.
#include <functional>

#include "props/key_table.h"
#include "tests/support/compounds.h"

namespace qs::test {
namespace {

using CompoundValues = CompoundTest;

// What stands in the outputs before a call.
constexpr LONG kOldDependencies = 77;
constexpr double kOld = 123.5;

struct Reading {
  HRESULT result = S_OK;
  LONG dependencies = kOldDependencies;
  double value = kOld;
  bool operator==(const Reading&) const = default;
};
struct Range {
  HRESULT result = S_OK;
  double tMin = kOld, tMax = kOld, pMin = kOld, pMax = kOld;
  bool operator==(const Range&) const = default;
};

template <class I, class Method>
Reading read(IUnknown* compound, Method method) {
  Reading out;
  out.result =
      (ComPtr<I>::from(compound).get()->*method)(350.0, 200.0, eNoExtrapolation, &out.dependencies, &out.value);
  return out;
}
template <class I, class Method>
Range readRange(IUnknown* compound, Method method) {
  Range out;
  out.result = (ComPtr<I>::from(compound).get()->*method)(&out.tMin, &out.tMax, &out.pMin, &out.pMax);
  return out;
}

// Every typed getter, each through the interface that documents it.
struct Getter {
  const char* key;
  const char* interfaceName;
  Reading (*value)(IUnknown* compound);
  Range (*range)(IUnknown* compound);  // null where the interface has none
};
#define READ_VALUE(key, I) [](IUnknown* compound) { return read<I>(compound, &I::get_##key); }
#define READ_RANGE(key, I) [](IUnknown* compound) { return readRange<I>(compound, &I::get_##key##TPRange); }
const Getter kGetters[] = {
#define FIXED_KEY(key, help, interface_name, dispid) \
  {#key, #interface_name, READ_VALUE(key, interface_name), READ_RANGE(key, interface_name)},
#define FIXED_KEY_ALSO(key, interface_name, dispid) {#key, #interface_name, READ_VALUE(key, interface_name), nullptr},
#include "props/keys.def"
};
#undef READ_VALUE
#undef READ_RANGE

TEST_F(CompoundValues, EachGetterReadsItsOwnKeyAloneAtTheStateAskedFor) {
  const auto coefficients = reals({1.0, 2.0, 0.5});
  const Range noRange{S_FALSE, kEmpty, kEmpty, kEmpty, kEmpty};
  for (const Getter& getter : kGetters) {
    SCOPED_TRACE(std::string(getter.interfaceName) + "::" + getter.key);
    const auto compound = newCompound();
    const auto put = query<ICompoundPropPut>(compound);
    const Bstr key(widen(getter.key));
    const auto expect = [&](const Reading& value, const Range& range) {
      EXPECT_EQ(getter.value(compound.get()), value);
      if (getter.range) {
        EXPECT_EQ(getter.range(compound.get()), range);
      }
    };
    expect({S_FALSE}, {S_FALSE});
    ASSERT_EQ(put->SetPointProperty(key.get(), 1, 500.0), S_OK);
    expect({S_OK, 0, 500.0}, noRange);
    for (const Getter& other : kGetters)
      EXPECT_EQ(other.value(compound.get()).result, std::string(other.key) == getter.key ? S_OK : S_FALSE) << other.key;
    ASSERT_EQ(put->SetPointProperty(key.get(), 1, kEmpty), S_OK);
    expect({S_FALSE, 0, kEmpty}, noRange);
    ASSERT_EQ(put->SetVoidProperty(key.get(), 1), S_OK);
    expect({S_FALSE, 0, kEmpty}, noRange);
    ASSERT_EQ(put->SetEquationProperty(key.get(), 1, PropCurvePOLY2, 200.0, 400.0, 1.0, 1000.0, coefficients.get()),
              S_OK);
    expect({S_OK, 1, 1.0 + 2.0 * 350.0 + 0.5 * 350.0 * 350.0}, {S_OK, 200.0, 400.0, 1.0, 1000.0});
  }
}

TEST_F(CompoundValues, TwoValuesAtOnceNeedBothAndUseTheStandardState) {
  const auto compound = newCompound();
  const auto put = query<ICompoundPropPut>(compound);
  const auto viscosity = query<ICompoundViscosity>(compound);
  const auto uniquac = query<ICompoundUNIQUAC1>(compound);
  const struct {
    Bstr first, second;
    std::function<HRESULT(double*, double*)> read;
  } pairs[] = {{Bstr(OLESTR("THETAA")), Bstr(OLESTR("THETAB")),
                [&](double* a, double* b) { return viscosity->get_ViscosityThetas(a, b); }},
               {Bstr(OLESTR("UNIQUACR")), Bstr(OLESTR("UNIQUACQ")),
                [&](double* r, double* q) { return uniquac->get_UNIQUAC1Parameters(r, q); }}};
  for (const auto& pair : pairs) {
    double first = kOld, second = kOld;
    const auto expect = [&](HRESULT result, double firstValue, double secondValue) {
      EXPECT_EQ(pair.read(&first, &second), result);
      EXPECT_EQ(first, firstValue);
      EXPECT_EQ(second, secondValue);
    };
    put->SetPointProperty(pair.first.get(), 1, 1.5);
    expect(S_FALSE, kOld, kOld);
    put->SetEquationProperty(pair.second.get(), 1, PropCurvePOLY2, 1, 2, 1, 2, reals({0.0, 1.0, 0.0}).get());
    expect(S_OK, 1.5, 298.15);
    put->SetPointProperty(pair.first.get(), 1, kEmpty);
    expect(S_FALSE, kEmpty, 298.15);
  }
}

}  // namespace
}  // namespace qs::test
