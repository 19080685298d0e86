// Values and ranges of the fixed keys through the typed getters.
#include "props/key_table.h"
#include "tests/support/components.h"
#include "tests/support/compounds.h"

namespace qs::test {
namespace {

using CompoundValues = CompoundTest;
using Outputs = std::vector<double>;  // the result of a call and what its out-parameters hold afterwards

constexpr double kOld = 123.0;  // what they hold before

template <class I, class Method>
Outputs read(IUnknown* compound, Method method) {
  double value = kOld;
  auto dependencies = static_cast<LONG>(kOld);
  const HRESULT result =
      (ComPtr<I>::from(compound).get()->*method)(350.0, 200.0, eNoExtrapolation, &dependencies, &value);
  return {static_cast<double>(result), static_cast<double>(dependencies), value};
}
template <class I, class Method>
Outputs readRange(IUnknown* compound, Method method) {
  double range[] = {kOld, kOld, kOld, kOld};
  const HRESULT result = (ComPtr<I>::from(compound).get()->*method)(range, range + 1, range + 2, range + 3);
  return {static_cast<double>(result), range[0], range[1], range[2], range[3]};
}

// Every typed getter, each through the interface that documents it.
struct Getter {
  std::string key;
  Outputs (*value)(IUnknown* compound);
  Outputs (*range)(IUnknown* compound);  // null where the interface has none
};
#define READ_VALUE(key, I) [](IUnknown* compound) { return read<I>(compound, &I::get_##key); }
#define READ_RANGE(key, I) [](IUnknown* compound) { return readRange<I>(compound, &I::get_##key##TPRange); }
const Getter kGetters[] = {
#define FIXED_KEY(key, help, unit, policy, I, dispid) {#key, READ_VALUE(key, I), READ_RANGE(key, I)},
#define FIXED_KEY_ALSO(key, I, dispid) {#key, READ_VALUE(key, I), nullptr},
#include "props/keys.def"
};
#undef READ_VALUE
#undef READ_RANGE

TEST_F(CompoundValues, EachGetterReadsItsOwnKeyAloneAtTheStateAskedFor) {
  const auto coefficients = reals({1.0, 2.0, 0.5});
  const Outputs noRange{S_FALSE, kEmpty, kEmpty, kEmpty, kEmpty};
  for (const Getter& getter : kGetters) {
    SCOPED_TRACE(getter.key + " " + std::to_string(&getter - kGetters));
    const auto compound = newCompound();
    const auto put = query<ICompoundPropPut>(compound);
    const Bstr key(widen(getter.key));
    const auto expect = [&](const Outputs& value, const Outputs& range) {
      EXPECT_EQ(getter.value(compound.get()), value);
      if (getter.range) {
        EXPECT_EQ(getter.range(compound.get()), range);
      }
    };
    expect({S_FALSE, kOld, kOld}, {S_FALSE, kOld, kOld, kOld, kOld});
    ASSERT_EQ(put->SetPointProperty(key.get(), 1, 500.0), S_OK);
    expect({S_OK, 0, 500.0}, noRange);
    for (const Getter& other : kGetters)
      EXPECT_EQ(other.value(compound.get())[0], other.key == getter.key ? S_OK : S_FALSE) << other.key;
    ASSERT_EQ(put->SetPointProperty(key.get(), 1, kEmpty), S_OK);
    expect({S_FALSE, 0, kEmpty}, noRange);
    ASSERT_EQ(put->SetVoidProperty(key.get(), 1), S_OK);
    expect({S_FALSE, 0, kEmpty}, noRange);
    ASSERT_EQ(put->SetEquationProperty(key.get(), 1, PropCurvePOLY2, 200, 400, 1, 1000, coefficients.get()), S_OK);
    expect({S_OK, 1, 1.0 + 2.0 * 350.0 + 0.5 * 350.0 * 350.0}, {S_OK, 200, 400, 1, 1000});
  }
}

TEST_F(CompoundValues, OfTwoAtOnceTheFirstMayTakeTheSecondAway) {
  const auto compound = newCompound();
  const auto put = query<ICompoundPropPut>(compound);
  const Bstr one(OLESTR("UNIQUACR")), two(OLESTR("UNIQUACQ"));
  ValueComponent component;
  component.act = [&] { put->ErasePropFromMap(two.get(), 1); };
  put->SetPointProperty(two.get(), 1, 1.5);
  put->SetCOMProperty(one.get(), 1, nullptr, &component);
  double first = kOld, second = kOld;
  EXPECT_EQ(query<ICompoundUNIQUAC1>(compound)->get_UNIQUAC1Parameters(&first, &second), S_FALSE);
  EXPECT_EQ(first, kOld);
  EXPECT_EQ(second, kOld);
  put->ErasePropFromMap(one.get(), 1);
}

}  // namespace
}  // namespace qs::test
