// The derivatives that a phase keeps.
#include <algorithm>

#include "tests/support/phases.h"

namespace qs::test {
namespace {

class Derivatives : public PhaseTest {
 protected:
  INT add(LONG property, LONG derivative, tagResultTypeEnum shape) {
    INT index = -1;
    EXPECT_EQ(derivatives->AddDerivativeProp(property, derivative, RealPoint, shape, &index), S_OK);
    return index;
  }
  // The property numbers of the records in their order.
  std::string properties() {
    std::string list;
    LONG property = 0, derivative = 0;
    for (INT i = 0; derivatives->GetDerivativePropIDs(i, &property, &derivative) == S_OK; ++i)
      list += std::to_string(property) + ' ';
    EXPECT_EQ(qs::test::got(derivatives, &IDerivativeProp::GetNumDerivativeProps), std::ranges::count(list, ' '));
    return list;
  }
  static ComPtr<IRealMatrixDisp> matrix(LONG rows, LONG columns) {
    auto made = create<IRealMatrixDisp>(__uuidof(::HostRealMatrix));
    EXPECT_EQ(made->SetSize(rows, columns), S_OK);
    return made;
  }
  // A safe array of numbers 1, 2, ... in the order of memory; in variants every other one is a text.
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
    for (ULONG i = 0; i < elements; ++i) {
      const OLECHAR digit[] = {static_cast<OLECHAR>(OLESTR('1') + i), 0};
      if (type == VT_R8) static_cast<double*>(data)[i] = i + 1.0;
      if (type == VT_I4) static_cast<LONG*>(data)[i] = static_cast<LONG>(i) + 1;
      if (type == VT_VARIANT) static_cast<VARIANT*>(data)[i] = (i % 2 ? text(digit) : Variant(i + 1.0)).release();
    }
    EXPECT_EQ(SafeArrayUnaccessData(value.parray), S_OK);
    return Variant::adopt(value);
  }
  Variant got(INT index, HRESULT expected) {
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(derivatives->GetVariantDerivative(index, &value), expected);
    return Variant::adopt(value);
  }

  // Of a number, of an array, or of a matrix row by row.
  static std::string elementsOf(const Variant& held) {
    std::ostringstream text;
    if (held.get().vt == VT_R8) text << held.get().dblVal;
    if (held.get().vt != VT_DISPATCH) return text.str();
    if (const auto table = ComPtr<IRealMatrixDisp>::from(held.get().pdispVal)) {
      double value = 0;
      for (LONG row = 0; row < qs::test::got(table, &IRealMatrixDisp::get_Rows); ++row)
        for (LONG column = 0; column < qs::test::got(table, &IRealMatrixDisp::get_Columns); ++column)
          text << ' ' << (table->get_Value(row, column, &value), value);
    } else {
      for (const double value : realsIn(held.get().pdispVal)) text << ' ' << value;
    }
    return text.str();
  }

  ComPtr<IDerivativeProp> derivatives = create<IDerivativeProp>(__uuidof(::COQSPhase));
};

TEST_F(Derivatives, OneRecordPerPairOfNumbers) {
  EXPECT_EQ(add(6, 17, RealPoint), 0);
  EXPECT_EQ(add(6, 18, RealArray), 1);
  EXPECT_EQ(add(7, 17, RealMatrix), 2);
  INT index = -1;
  EXPECT_EQ(derivatives->AddDerivativeProp(6, 18, IntPoint, IntMatrix, &index), S_OK);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(properties(), "6 6 7 ");
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
  const struct {
    INT index;
    LONG property, derivative;
    HRESULT result;
    const char* left;
  } rows[] = {{0, 10, 20, S_FALSE, "10 11 12 13 14 20 "},
              {0, 11, 10, S_FALSE, "10 11 12 13 14 20 "},
              {0, 10, 10, S_OK, "11 12 13 14 20 "},
              {1, -32767, 99, S_OK, "11 13 14 20 "},  // one marker skips the check
              {1, 99, -32767, S_OK, "11 14 20 "}};
  for (const auto& row : rows) {
    EXPECT_EQ(derivatives->RemoveDerivativeProp(row.index, row.property, row.derivative), row.result);
    EXPECT_EQ(properties(), row.left);
  }
  EXPECT_EQ(derivatives->ClearDerivativesProps(), S_OK);
  EXPECT_EQ(properties(), "");
}

TEST_F(Derivatives, SettingsAreKeptAsGiven) {
  const INT index = add(1, 2, RealPoint);
  int previous = 0;
  for (const int value : {0, 1, 7, 200}) {
    BYTE needed = 9;
    tagDerivativeStatusEnum status{};
    tagDerivativeTypeEnum method{};
    EXPECT_EQ(derivatives->GetNeedDerivative(index, &needed), S_OK);
    EXPECT_EQ(derivatives->GetDerivativeStatus(index, &status), S_OK);
    EXPECT_EQ(derivatives->GetDerivativeType(index, &method), S_OK);
    EXPECT_EQ(needed, previous);
    EXPECT_EQ(static_cast<int>(status), previous);
    EXPECT_EQ(static_cast<int>(method), previous);
    derivatives->SetNeedDerivative(index, static_cast<BYTE>(value));
    derivatives->SetDerivativeStatus(index, static_cast<tagDerivativeStatusEnum>(value));
    derivatives->PutDerivativeType(index, static_cast<tagDerivativeTypeEnum>(value));
    previous = value;
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
  const auto nothing = static_cast<tagResultTypeEnum>(5);
  const struct {
    Variant given;
    tagResultTypeEnum fits;
    std::string elements;
  } rows[] = {{Variant(2.5), RealPoint, "2.5"},
              {Variant(ComPtr<IDispatch>(array.get())), RealArray, " 1 2"},
              {Variant(ComPtr<IDispatch>(table.get())), RealMatrix, " -32767"},
              {safeArray(VT_R8, {3}), RealArray, " 1 2 3"},
              {safeArray(VT_R8, {2, 3}), RealMatrix, " 1 3 5 2 4 6"},  // the first dimension varies fastest
              {safeArray(VT_R8, {0}), RealArray, ""},
              {safeArray(VT_I4, {3}), RealArray, " 1 2 3"},
              {safeArray(VT_VARIANT, {3}), RealArray, " 1 2 3"},
              {safeArray(VT_VARIANT, {2, 3}), RealMatrix, " 1 3 5 2 4 6"},
              {Variant(LONG{-5}), RealPoint, "-5"},
              {text(OLESTR(" 2.5 ")), RealPoint, "2.5"},
              {typed(VT_I1, -5), RealPoint, "-5"},
              {typed(VT_UI1, 251), RealPoint, "251"},
              {typed(VT_I2, -5), RealPoint, "-5"},
              {typed(VT_UI2, 65531), RealPoint, "65531"},
              {typed(VT_UI4, 251), RealPoint, "251"},
              {typed(VT_INT, -5), RealPoint, "-5"},
              {typed(VT_UINT, 251), RealPoint, "251"},
              {typed(VT_I8, -5), RealPoint, "-5"},
              {typed(VT_UI8, 251), RealPoint, "251"},
              {typed(VT_R4, 0x40200000), RealPoint, "2.5"},
              {typed(VT_DATE, 0x4004000000000000), RealPoint, "2.5"},
              {typed(VT_CY, -25000), RealPoint, "-2.5"},
              {typed(VT_DECIMAL, 25, 0x8001), RealPoint, "-2.5"},
              {typed(VT_BOOL, VARIANT_TRUE), RealPoint, "-1"},
              {text(OLESTR("warm")), nothing, ""},
              {safeArray(VT_R8, {2, 2, 2}), nothing, ""},
              {typed(VT_NULL, 0), nothing, ""},
              {Variant(), nothing, ""},
              {Variant(ComPtr<IDispatch>()), nothing, ""}};
  for (const int number : {0, 1, 2, 3, 4, 7})
    for (const auto& row : rows)
      for (const char* form : {"value", "reference", "script's variable"}) {
        SCOPED_TRACE(testing::Message() << "shape " << number << " row " << &row - rows << ' ' << form);
        auto* value = const_cast<VARIANT*>(&row.given.get());
        VARIANT given = *value;
        if (form[0] == 'r') given.vt |= VT_BYREF;
        if (form[0] == 's') given.vt = VT_BYREF | VT_VARIANT;
        if (form[0] == 'r') given.byref = value->vt == VT_DECIMAL ? static_cast<void*>(value) : &value->llVal;
        if (form[0] == 's') given.byref = value;
        const auto shape = static_cast<tagResultTypeEnum>(number);
        derivatives->ClearDerivativesProps();
        const INT index = add(1, 2, shape);
        EXPECT_EQ(got(index, S_FALSE).get().vt, VT_EMPTY);
        const bool fits = shape == row.fits;
        EXPECT_EQ(derivatives->PutVariantDerivative(index, given), fits ? S_OK : DISP_E_TYPEMISMATCH);
        const Variant held = got(index, fits ? S_OK : S_FALSE);
        EXPECT_EQ(elementsOf(held), fits ? row.elements : "");
        if (fits && value->vt == VT_DISPATCH) {
          EXPECT_EQ(held.get().pdispVal, value->pdispVal) << "shared";
        }
      }
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
    EXPECT_EQ(properties(), "1 3 ");
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
  EXPECT_EQ(properties(), "101 102 1 103 ");
}

}  // namespace
}  // namespace qs::test
