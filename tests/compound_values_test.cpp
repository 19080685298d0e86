// Values and ranges of the fixed keys through the typed getters.
#include <functional>

#include "props/key_table.h"
#include "tests/support/compounds.h"

namespace qs::test {
namespace {

using CompoundValues = CompoundTest;

struct Reading {
  HRESULT result;
  LONG dependencies;
  double value;
  bool operator==(const Reading&) const = default;
};
struct Range {
  HRESULT result;
  double tMin, tMax, pMin, pMax;
  bool operator==(const Range&) const = default;
};

// What stands in the outputs before a call.
constexpr LONG kOldDependencies = 77;
constexpr double kOld = 123.5;

// Every typed getter, each through the interface that documents it.
struct Getter {
  const char* key;
  const char* interfaceName;
  Reading (*value)(IUnknown* compound);
  Range (*range)(IUnknown* compound);  // null where the interface has none
};

#define READ_VALUE(key, interface_name)                                                                        \
  [](IUnknown* compound) {                                                                                     \
    Reading reading{0, kOldDependencies, kOld};                                                                \
    reading.result = ComPtr<interface_name>::from(compound)->get_##key(350.0, 200.0, eNoExtrapolation,         \
                                                                       &reading.dependencies, &reading.value); \
    return reading;                                                                                            \
  }
#define READ_RANGE(key, interface_name)                                                                              \
  [](IUnknown* compound) {                                                                                           \
    Range range{0, kOld, kOld, kOld, kOld};                                                                          \
    range.result = ComPtr<interface_name>::from(compound)->get_##key##TPRange(&range.tMin, &range.tMax, &range.pMin, \
                                                                              &range.pMax);                          \
    return range;                                                                                                    \
  }
const Getter kGetters[] = {
#define FIXED_KEY(key, help, interface_name, dispid) \
  {#key, #interface_name, READ_VALUE(key, interface_name), READ_RANGE(key, interface_name)},
#define FIXED_KEY_ALSO(key, interface_name, dispid) {#key, #interface_name, READ_VALUE(key, interface_name), nullptr},
#include "props/keys.def"
};
#undef READ_VALUE
#undef READ_RANGE

// 82 keys have a getter of their own, and nine of them one more in IBasicCompound.
static_assert(std::size(kGetters) == 82 + 9);

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
    expect({S_FALSE, kOldDependencies, kOld}, {S_FALSE, kOld, kOld, kOld, kOld});
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
  struct Pair {
    const OLECHAR* first;
    const OLECHAR* second;
    std::function<HRESULT(double*, double*)> read;
  };
  const Pair pairs[] = {
      {OLESTR("THETAA"), OLESTR("THETAB"), [&](double* a, double* b) { return viscosity->get_ViscosityThetas(a, b); }},
      {OLESTR("UNIQUACR"), OLESTR("UNIQUACQ"),
       [&](double* r, double* q) { return uniquac->get_UNIQUAC1Parameters(r, q); }},
  };
  for (const Pair& pair : pairs) {
    double first = kOld;
    double second = kOld;
    EXPECT_EQ(pair.read(&first, &second), S_FALSE);
    put->SetPointProperty(Bstr(pair.first).get(), 1, 1.5);
    EXPECT_EQ(pair.read(&first, &second), S_FALSE);
    EXPECT_EQ(first, kOld);
    EXPECT_EQ(second, kOld);
    put->SetEquationProperty(Bstr(pair.second).get(), 1, PropCurvePOLY2, 1, 2, 1, 2, reals({0.0, 1.0, 0.0}).get());
    EXPECT_EQ(pair.read(&first, &second), S_OK);
    EXPECT_EQ(first, 1.5);
    EXPECT_EQ(second, 298.15);
    put->SetPointProperty(Bstr(pair.first).get(), 1, kEmpty);
    EXPECT_EQ(pair.read(&first, &second), S_FALSE);
    EXPECT_EQ(first, kEmpty);
    EXPECT_EQ(second, 298.15);
  }
}

}  // namespace
}  // namespace qs::test
