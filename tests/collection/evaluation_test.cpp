// One property of many compounds: lists, views, empty slots, and compounds that call back or are of another maker.
#include <gmock/gmock.h>

#include "com/variant.h"
#include "tests/support/collections.h"
#include "tests/support/components.h"
#include "tests/support/numbers.h"

namespace qs::test {
namespace {

// Compounds whose vapour pressure is their number times T from 300 K on to 400 K; 0 is an empty slot.
class CollectionEvaluation : public CollectionTest {
 protected:
  static ComPtr<IBasicCompound> compoundOf(double number) {
    auto compound = newCompound();
    const auto put = query<ICompoundPropPut>(compound);
    EXPECT_EQ(put->SetEquationProperty(Bstr(OLESTR("VP")).get(), 1, PropCurvePOLY2, 300.0, 400.0, 10.0, 1000.0,
                                       reals({0.0, number, 0.0}).get()),
              S_OK);
    EXPECT_EQ(put->SetPointProperty(Bstr(OLESTR("MW")).get(), 1, 10.0 * number), S_OK);
    return compound;
  }
  static ComPtr<ICompoundCollection> listOf(const std::vector<double>& numbers) {
    auto list = newCollection();
    for (const double number : numbers) {
      if (number == 0.0) {
        list->put_NumberOfCompounds(countOf(list) + 1);
      } else {
        list->AddCompound(compoundOf(number).get());
      }
    }
    return list;
  }

  struct Matrix {
    std::vector<double> values;
    std::vector<LONG> statuses;
    HRESULT result;
  };
  static Matrix evaluate(const ComPtr<ICompoundCollection>& list, LPCOLESTR name, const std::vector<LONG>& positions,
                         const std::vector<double>& T, tagLimitPolicyEnum policy = eNotSetOutside) {
    const std::size_t size = positions.size() * T.size();
    Matrix matrix{std::vector<double>(size), std::vector<LONG>(size), S_OK};
    matrix.result = query<ICompoundCollectionEvaluationArrays>(list)->EvaluateCompoundArray(
        name, static_cast<LONG>(positions.size()), positions.data(), static_cast<LONG>(T.size()), T.data(), 100.0,
        policy, matrix.values.data(), nullptr, nullptr, matrix.statuses.data());
    return matrix;
  }
};

TEST_F(CollectionEvaluation, GivesAMatrixCompoundByCompound) {
  const auto list = listOf({1.0, 0.0, 2.0, 3.0});
  const auto sub = [&](const ComPtr<ICompoundCollection>& of, const std::vector<LONG>& positions) {
    ComPtr<ICompoundCollection> view;
    EXPECT_EQ(query<ISubCompList>(of)->CreateSubCompList(integers(positions).get(), view.out()), S_OK);
    return view;
  };
  const auto view = sub(sub(list, {3, 2, 1, 0}), {0, 2, 3});
  constexpr LONG kNone = eStatusNoSuchProperty, kOutside = eStatusAbove | eStatusNotSet;
  const Matrix of = evaluate(list, OLESTR("VP"), {3, 1, 0, -1, 4}, {310.0, 450.0});
  EXPECT_EQ(of.result, S_FALSE);
  EXPECT_EQ(of.values, (std::vector{930.0, kEmpty, kEmpty, kEmpty, 310.0, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty}));
  EXPECT_EQ(of.statuses, (std::vector<LONG>{eStatusInside, kOutside, kNone, kNone, eStatusInside, kOutside, kNone,
                                            kNone, kNone, kNone}));
  // One temperature takes another way, and constants another.
  const Matrix one = evaluate(view, OLESTR("VP"), {0, 1, 2}, {310.0});
  EXPECT_EQ(one.values, (std::vector{930.0, kEmpty, 310.0}));
  EXPECT_EQ(one.statuses, (std::vector<LONG>{eStatusInside, kNone, eStatusInside}));
  EXPECT_EQ(evaluate(view, OLESTR("VP"), {2}, {450.0}, eTangentAtLimit).values, (std::vector{450.0}));
  EXPECT_EQ(evaluate(view, OLESTR("MW"), {0, 2}, {310.0}).values, (std::vector{30.0, 10.0}));
  EXPECT_EQ(evaluate(view, OLESTR("None"), {0}, {310.0}).statuses, (std::vector<LONG>{kNone}));

  // The temperatures' own buffer becomes the first row.
  std::vector<double> buffer{310.0, 320.0, 0.0, 0.0, 0.0, 0.0};
  const auto arrays = query<ICompoundCollectionEvaluationArrays>(list);
  EXPECT_EQ(arrays->EvaluateCompoundArray(OLESTR("VP"), 3, nullptr, 2, buffer.data(), 100.0, eRecommended,
                                          buffer.data(), nullptr, nullptr, nullptr),
            S_FALSE);
  EXPECT_EQ(buffer, (std::vector{310.0, 320.0, kEmpty, kEmpty, 620.0, 640.0}));
  for (const auto& [rows, count, out] : {std::tuple{-1, 2, buffer.data()}, {3, -2, buffer.data()}, {3, 2, &buffer[1]}})
    EXPECT_EQ(arrays->EvaluateCompoundArray(OLESTR("VP"), rows, nullptr, count, buffer.data(), 100.0, eRecommended, out,
                                            nullptr, nullptr, nullptr),
              E_INVALIDARG);
}

TEST_F(CollectionEvaluation, ReturnsToScriptsAnArrayOfTheSameShape) {
  const auto list = listOf({1.0, 2.0, 3.0});
  const auto scripts = query<ICompoundCollectionEvaluation>(list);
  const Bstr name(OLESTR("VP"));
  Variant values, statuses;
  EXPECT_EQ(scripts->EvaluateCompounds(name.get(), eFirstDerivative, Variant(310.0).get(), 100.0, eRecommended,
                                       VARIANT{}, statuses.address(), values.address()),
            S_OK);
  ASSERT_EQ(SafeArrayGetDim(values.get().parray), 1u);
  EXPECT_EQ(static_cast<const VARIANT*>(values.get().parray->pvData)[2].dblVal, 3.0);
  const Variant positions(ComPtr<IDispatch>(integers({2, 0}).get())),
      T(ComPtr<IDispatch>(reals({310.0, 320.0, 330.0}).get()));
  Variant matrix, found;
  EXPECT_EQ(scripts->EvaluateCompounds(name.get(), eValue, T.get(), 100.0, eRecommended, positions.get(),
                                       found.address(), matrix.address()),
            S_OK);
  ASSERT_EQ(SafeArrayGetDim(matrix.get().parray), 2u);
  LONG last[] = {-1, -1};
  for (const UINT i : {1u, 2u}) SafeArrayGetUBound(matrix.get().parray, i, &last[i - 1]);
  EXPECT_THAT(last, testing::ElementsAre(1, 2));
  // In memory the compounds vary fastest.
  EXPECT_EQ(static_cast<const VARIANT*>(matrix.get().parray->pvData)[2].dblVal, 960.0);
}

// It changes the list whenever it is asked.
TEST_F(CollectionEvaluation, SurvivesCompoundsThatCallBack) {
  const auto list = listOf({1.0, 2.0, 3.0, 4.0});
  ValueComponent component;
  ComPtr<IBasicCompound> second;
  list->GetBasicCompound(1, second.out());
  query<ICompoundPropPut>(second)->SetCOMProperty(Bstr(OLESTR("VP")).get(), 1, Bstr(OLESTR("class")).get(), &component);
  second = {};
  component.act = [&] { list->put_NumberOfCompounds(1); };
  // Compounds are taken by their position when it is their turn; those of one temperature before.
  const Matrix one = evaluate(list, OLESTR("VP"), {0, 1, 2, 3}, {310.0});
  EXPECT_EQ(one.values, (std::vector{310.0, 410.0, 930.0, 1240.0}));
  EXPECT_EQ(evaluate(list, OLESTR("VP"), {0, 1}, {310.0, 320.0}).values, (std::vector{310.0, 320.0, kEmpty, kEmpty}));
  list->Reset();
}

// A compound of another maker around one of this module: it knows one property, an equation from 300 to 400 K.
struct ForeignCompound : CompoundAround<ICompoundProp> {
  STDMETHODIMP GetPropertyType(BSTR name, tagPropTypeEnum* type) override {
    *type = viewOf(name) == OLESTR("VP") ? EquationProp : VoidProp;
    return *type == VoidProp ? S_FALSE : S_OK;
  }
  STDMETHODIMP GetEquationProperty(BSTR, tagEquationShapeEnum*, BSTR*, double* tMin, double* tMax, double* pMin,
                                   double* pMax, INT*, IRealArrayDisp**) override {
    *tMin = 300.0, *tMax = 400.0, *pMin = 10.0, *pMax = 1000.0;
    return S_OK;
  }
  STDMETHODIMP GetPropertyValue(BSTR, double T, double, tagExtrapolationEnum, LONG*, double* value) override {
    *value = T > 390.0 ? kNaN : 7.0 * T;
    return S_OK;
  }
};

TEST_F(CollectionEvaluation, ReadsCompoundsOfAnotherMaker) {
  ForeignCompound foreign;
  const auto list = listOf({1.0});
  ASSERT_EQ(list->AddCompound(&foreign), S_OK);
  for (const std::vector<double>& T : {std::vector{310.0}, {310.0, 395.0, 450.0}}) {
    const Matrix of = evaluate(list, OLESTR("VP"), {1}, T, eRecommended);
    EXPECT_EQ(of.values[0], 2170.0);
    EXPECT_EQ(of.statuses[0], eStatusInside);
    if (T.size() == 1) continue;
    EXPECT_EQ(of.statuses[1], eStatusInside | eStatusNotANumber);
    EXPECT_EQ(of.statuses[2], eStatusAbove | eStatusNotSet);
    EXPECT_EQ(of.values[2], kEmpty);
  }
  EXPECT_EQ(evaluate(list, OLESTR("LDN"), {1}, {310.0}).statuses[0], eStatusNoSuchProperty);
  list->Reset();
}

}  // namespace
}  // namespace qs::test
