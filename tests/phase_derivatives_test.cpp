// The derivatives that a phase keeps.
#include "tests/support/phases.h"

namespace qs::test {
namespace {

class Derivatives : public PhaseTest {
 protected:
  void SetUp() override {
    PhaseTest::SetUp();
    derivatives = create<IDerivativeProp>(__uuidof(::COQSPhase));
  }
  void TearDown() override {
    derivatives = ComPtr<IDerivativeProp>();
    PhaseTest::TearDown();
  }

  INT add(LONG property, LONG derivative, tagResultTypeEnum shape) {
    INT index = -1;
    EXPECT_EQ(derivatives->AddDerivativeProp(property, derivative, RealPoint, shape, &index), S_OK);
    return index;
  }
  INT count() {
    INT value = -1;
    EXPECT_EQ(derivatives->GetNumDerivativeProps(&value), S_OK);
    return value;
  }
  LONG propertyAt(INT index) {
    LONG property = 0, derivative = 0;
    derivatives->GetDerivativePropIDs(index, &property, &derivative);
    return property;
  }
  static ComPtr<IRealMatrixDisp> matrix(LONG rows, LONG columns) {
    auto made = create<IRealMatrixDisp>(__uuidof(::HostRealMatrix));
    EXPECT_EQ(made->SetSize(rows, columns), S_OK);
    return made;
  }
  // A safe array of numbers 1, 2, ... in the order of memory.
  static Variant safeArray(VARTYPE type, std::initializer_list<ULONG> extents) {
    std::vector<SAFEARRAYBOUND> bounds;
    ULONG elements = 1;
    for (const ULONG extent : extents) {
      bounds.push_back({extent, 1});
      elements *= extent;
    }
    VARIANT value;
    VariantInit(&value);
    value.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    value.parray = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(value.parray, &data), S_OK);
    for (ULONG i = 0; i < elements && type == VT_R8; ++i) static_cast<double*>(data)[i] = i + 1.0;
    EXPECT_EQ(SafeArrayUnaccessData(value.parray), S_OK);
    return Variant::adopt(value);
  }
  Variant got(INT index, HRESULT expected) {
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(derivatives->GetVariantDerivative(index, &value), expected);
    return Variant::adopt(value);
  }

  ComPtr<IDerivativeProp> derivatives;
};

TEST_F(Derivatives, OneRecordPerPairOfNumbers) {
  EXPECT_EQ(add(6, 17, RealPoint), 0);
  EXPECT_EQ(add(6, 18, RealArray), 1);
  EXPECT_EQ(add(7, 17, RealMatrix), 2);
  INT index = -1;
  EXPECT_EQ(derivatives->AddDerivativeProp(6, 18, IntPoint, IntMatrix, &index), S_OK);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(count(), 3);
  tagResultTypeEnum property{}, shape{};
  EXPECT_EQ(derivatives->GetResultValueType(1, &property, &shape), S_OK);
  EXPECT_EQ(property, RealPoint) << "the shapes given again are ignored";
  EXPECT_EQ(shape, RealArray);
  EXPECT_EQ(derivatives->GetDerivativePropIndex(7, 17, &index), S_OK);
  EXPECT_EQ(index, 2);
  EXPECT_EQ(derivatives->GetDerivativePropIndex(17, 7, &index), S_FALSE);
  EXPECT_EQ(index, -32767);
}

TEST_F(Derivatives, RemovalComparesThePropertyWithBothNumbers) {
  for (const LONG property : {10, 11, 12, 13, 14}) add(property, 20, RealPoint);
  add(20, 20, RealPoint);
  EXPECT_EQ(derivatives->RemoveDerivativeProp(0, 10, 20), S_FALSE);
  EXPECT_EQ(derivatives->RemoveDerivativeProp(0, 11, 10), S_FALSE);
  EXPECT_EQ(derivatives->RemoveDerivativeProp(0, 10, 10), S_OK);
  EXPECT_EQ(derivatives->RemoveDerivativeProp(1, -32767, 99), S_OK) << "12: one marker skips the check";
  EXPECT_EQ(derivatives->RemoveDerivativeProp(1, 99, -32767), S_OK) << "13";
  EXPECT_EQ(count(), 3);
  EXPECT_EQ(propertyAt(0), 11);
  EXPECT_EQ(propertyAt(1), 14) << "the later ones move down";
  EXPECT_EQ(propertyAt(2), 20);
  EXPECT_EQ(derivatives->ClearDerivativesProps(), S_OK);
  EXPECT_EQ(count(), 0);
}

TEST_F(Derivatives, SettingsAreKeptAsGiven) {
  const INT index = add(1, 2, RealPoint);
  BYTE needed = 9;
  tagDerivativeStatusEnum status{};
  tagDerivativeTypeEnum method{};
  EXPECT_EQ(derivatives->GetNeedDerivative(index, &needed), S_OK);
  EXPECT_EQ(derivatives->GetDerivativeStatus(index, &status), S_OK);
  EXPECT_EQ(derivatives->GetDerivativeType(index, &method), S_OK);
  EXPECT_EQ(needed + static_cast<int>(status) + static_cast<int>(method), 0);
  for (const int value : {1, 7, 200}) {
    EXPECT_EQ(derivatives->SetNeedDerivative(index, static_cast<BYTE>(value)), S_OK);
    EXPECT_EQ(derivatives->SetDerivativeStatus(index, static_cast<tagDerivativeStatusEnum>(value)), S_OK);
    EXPECT_EQ(derivatives->PutDerivativeType(index, static_cast<tagDerivativeTypeEnum>(value)), S_OK);
    derivatives->GetNeedDerivative(index, &needed);
    derivatives->GetDerivativeStatus(index, &status);
    derivatives->GetDerivativeType(index, &method);
    EXPECT_TRUE(needed == value && static_cast<int>(status) == value && static_cast<int>(method) == value);
  }
}

TEST_F(Derivatives, ValuesAreGivenInTheShapeAskedFor) {
  const auto array = reals({1.0, 2.0});
  const auto table = matrix(2, 2);
  for (const int number : {0, 1, 2, 3, 4, 7}) {
    SCOPED_TRACE(number);
    const auto shape = static_cast<tagResultTypeEnum>(number);
    const INT index = add(number, 2, shape);
    double point = 0;
    ComPtr<IRealArrayDisp> gotArray;
    ComPtr<IRealMatrixDisp> gotMatrix;
    EXPECT_EQ(derivatives->GetPointDerivative(index, &point), shape == RealPoint ? S_OK : S_FALSE);
    EXPECT_EQ(point, kUnset);
    EXPECT_EQ(derivatives->GetArrayDerivative(index, gotArray.out()), S_FALSE);
    EXPECT_EQ(derivatives->GetMatrixDerivative(index, gotMatrix.out()), S_FALSE);

    EXPECT_EQ(derivatives->PutPointDerivative(index, 3.5), S_OK);
    for (IRealArrayDisp* given : {array.get(), static_cast<IRealArrayDisp*>(nullptr)})
      EXPECT_EQ(derivatives->PutArrayDerivative(index, given), S_OK);
    for (IRealMatrixDisp* given : {table.get(), static_cast<IRealMatrixDisp*>(nullptr)})
      EXPECT_EQ(derivatives->PutMatrixDerivative(index, given), S_OK);
    EXPECT_EQ(derivatives->GetPointDerivative(index, &point), shape == RealPoint ? S_OK : S_FALSE);
    EXPECT_EQ(point, shape == RealPoint ? 3.5 : kUnset);
    EXPECT_EQ(derivatives->GetArrayDerivative(index, gotArray.out()), shape == RealArray ? S_OK : S_FALSE);
    EXPECT_EQ(gotArray.get(), shape == RealArray ? array.get() : nullptr) << "shared; null changes nothing";
    EXPECT_EQ(derivatives->GetMatrixDerivative(index, gotMatrix.out()), shape == RealMatrix ? S_OK : S_FALSE);
    EXPECT_EQ(gotMatrix.get(), shape == RealMatrix ? table.get() : nullptr);
  }
  EXPECT_EQ(referencesOf(array.get()), 7u);
  EXPECT_EQ(derivatives->RemoveDerivativeProp(0, -32767, -32767), S_OK);
  EXPECT_EQ(referencesOf(array.get()), 6u);
  EXPECT_EQ(derivatives->ClearDerivativesProps(), S_OK);
  EXPECT_EQ(referencesOf(array.get()), 1u);
  EXPECT_EQ(referencesOf(table.get()), 1u);
}

TEST_F(Derivatives, VariantsFitTheShapeOrAreRefused) {
  const auto array = reals({1.0, 2.0});
  const auto table = matrix(1, 1);
  Variant given[] = {Variant(2.5),
                     Variant(ComPtr<IDispatch>(array.get())),
                     Variant(ComPtr<IDispatch>(table.get())),
                     safeArray(VT_R8, {3}),
                     safeArray(VT_R8, {2, 3}),
                     safeArray(VT_R8, {0}),
                     safeArray(VT_I4, {3}),
                     safeArray(VT_R8, {2, 2, 2}),
                     Variant(LONG{1}),
                     Variant(),
                     Variant(ComPtr<IDispatch>())};
  const auto fits = [](tagResultTypeEnum shape, std::size_t form) {
    return shape == RealPoint   ? form == 0
           : shape == RealArray ? form == 1 || form == 3 || form == 5
                                : shape == RealMatrix && (form == 2 || form == 4);
  };
  for (const int number : {0, 1, 2, 3, 4, 7})
    for (std::size_t form = 0; form < std::size(given); ++form) {
      SCOPED_TRACE(testing::Message() << "shape " << number << " form " << form);
      const auto shape = static_cast<tagResultTypeEnum>(number);
      derivatives->ClearDerivativesProps();
      const INT index = add(1, 2, shape);
      EXPECT_EQ(got(index, S_FALSE).get().vt, VT_EMPTY);
      const bool taken = fits(shape, form);
      EXPECT_EQ(derivatives->PutVariantDerivative(index, given[form].get()), taken ? S_OK : DISP_E_TYPEMISMATCH);
      const Variant held = got(index, taken ? S_OK : S_FALSE);
      EXPECT_EQ(held.get().vt, !taken ? VT_EMPTY : shape == RealPoint ? VT_R8 : VT_DISPATCH);
      if (form == 0 && taken) {
        EXPECT_EQ(held.get().dblVal, 2.5);
      }
      if (form == 1 && taken) {
        EXPECT_EQ(held.get().pdispVal, array.get());
      }
      if (form == 3 && taken) {
        EXPECT_EQ(realsIn(held.get().pdispVal), (Reals{1.0, 2.0, 3.0}));
      }
      if (form == 4 && taken) {
        const auto made = ComPtr<IRealMatrixDisp>::from(held.get().pdispVal);
        for (LONG row = 0; row < 2; ++row)
          for (LONG column = 0; column < 3; ++column) {
            double value = 0;
            EXPECT_EQ(made->get_Value(row, column, &value), S_OK);
            EXPECT_EQ(value, 1.0 + row + 2.0 * column) << "the first dimension varies fastest";
          }
      }
    }
  VARIANT reference;
  VariantInit(&reference);
  reference.vt = VT_BYREF | VT_VARIANT;
  reference.pvarVal = const_cast<VARIANT*>(&given[0].get());
  const INT point = add(5, 6, RealPoint);
  EXPECT_EQ(derivatives->PutVariantDerivative(point, reference), S_OK) << "a script's variable";
  EXPECT_EQ(got(point, S_OK).get().dblVal, 2.5);
}

TEST_F(Derivatives, PositionsOutsideChangeNothing) {
  add(1, 2, RealPoint);
  add(3, 4, RealArray);
  const auto array = reals({});
  const auto table = matrix(1, 1);
  for (const INT index : {-1, 2, 3, INT{-32767}, INT{2147483647}, INT{-2147483647 - 1}}) {
    SCOPED_TRACE(index);
    LONG property = 0, derivative = 0;
    BYTE needed = 77;
    double point = 77;
    tagDerivativeStatusEnum status{};
    tagDerivativeTypeEnum method{};
    tagResultTypeEnum shapes[2] = {};
    IRealArrayDisp* gotArray = nullptr;
    IRealMatrixDisp* gotMatrix = nullptr;
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(derivatives->GetDerivativePropIDs(index, &property, &derivative), S_FALSE);
    EXPECT_EQ(property, -32767);
    EXPECT_EQ(derivative, -32767);
    for (const HRESULT hr :
         {derivatives->RemoveDerivativeProp(index, -32767, -32767), derivatives->SetNeedDerivative(index, 1),
          derivatives->GetNeedDerivative(index, &needed), derivatives->SetDerivativeStatus(index, xdsCalculated),
          derivatives->GetDerivativeStatus(index, &status), derivatives->PutPointDerivative(index, 1.0),
          derivatives->GetPointDerivative(index, &point), derivatives->PutArrayDerivative(index, array.get()),
          derivatives->GetArrayDerivative(index, &gotArray), derivatives->PutMatrixDerivative(index, table.get()),
          derivatives->GetMatrixDerivative(index, &gotMatrix),
          derivatives->PutVariantDerivative(index, Variant(1.0).get()),
          derivatives->GetVariantDerivative(index, &value),
          derivatives->GetResultValueType(index, &shapes[0], &shapes[1]),
          derivatives->PutDerivativeType(index, AnalyticalOnly), derivatives->GetDerivativeType(index, &method)})
      EXPECT_EQ(hr, S_FALSE);
    EXPECT_EQ(needed, 77);
    EXPECT_EQ(point, 77);
    EXPECT_EQ(count(), 2);
  }
}

// An array whose release uses the phase that held it.
class CallingArray final : public HostObject<IRealArrayDisp> {
 public:
  explicit CallingArray(IDerivativeProp* phase) : phase_(phase) {}
  STDMETHODIMP_(ULONG) Release() noexcept override {
    INT index = 0;
    phase_->AddDerivativeProp(100 + ++calls, 1, RealPoint, RealPoint, &index);
    phase_->PutArrayDerivative(0, nullptr);
    return HostObject::Release();
  }
  STDMETHODIMP get_IthValue(LONG, double*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP put_IthValue(LONG, double) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP get_Size(LONG*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP put_Size(LONG) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Copy(IRealArrayDisp*) noexcept override { return E_NOTIMPL; }

  int calls = 0;

 private:
  IDerivativeProp* phase_;
};

TEST_F(Derivatives, AReleaseMayCallBack) {
  CallingArray array(derivatives.get());
  for (int round = 0; round < 3; ++round) {
    const INT index = add(1, 2, RealArray);
    EXPECT_EQ(derivatives->PutArrayDerivative(index, &array), S_OK);
    EXPECT_EQ(round == 0   ? derivatives->ClearDerivativesProps()
              : round == 1 ? derivatives->RemoveDerivativeProp(index, -32767, -32767)
                           : derivatives->PutArrayDerivative(index, reals({}).get()),
              S_OK);
    EXPECT_EQ(array.references, 1u);
  }
  EXPECT_EQ(array.calls, 3);
  EXPECT_EQ(count(), 4);
}

}  // namespace
}  // namespace qs::test
