// The derivatives that a phase keeps: values from variants, and calls back. The rest is in phase.calls.
#include "com/not_set.h"
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
  // Of a number, of an array, or of a matrix row by row.
  static std::string elementsOf(const Variant& held) {
    std::ostringstream text;
    if (held.get().vt == VT_R8) text << held.get().dblVal;
    if (held.get().vt != VT_DISPATCH) return text.str();
    if (const auto table = ComPtr<IRealMatrixDisp>::from(held.get().pdispVal)) {
      double value = 0;
      for (LONG row = 0; row < got(table, &IRealMatrixDisp::get_Rows); ++row)
        for (LONG column = 0; column < got(table, &IRealMatrixDisp::get_Columns); ++column)
          text << ' ' << (table->get_Value(row, column, &value), value);
    } else {
      for (const double value : realsIn(held.get().pdispVal)) text << ' ' << value;
    }
    return text.str();
  }

  ComPtr<IDerivativeProp> derivatives = create<IDerivativeProp>(__uuidof(::COQSPhase));
};

TEST_F(Derivatives, VariantsFitTheShapeOrAreRefused) {
  const auto array = reals({1.0, 2.0});
  const auto table = create<IRealMatrixDisp>(__uuidof(::HostRealMatrix));
  ASSERT_EQ(table->SetSize(1, 1), S_OK);
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
        const bool fits = shape == row.fits;
        EXPECT_EQ(derivatives->PutVariantDerivative(index, given), fits ? S_OK : DISP_E_TYPEMISMATCH);
        VARIANT got;
        VariantInit(&got);
        EXPECT_EQ(derivatives->GetVariantDerivative(index, &got), fits ? S_OK : S_FALSE);
        const Variant held = Variant::adopt(got);
        EXPECT_EQ(elementsOf(held), fits ? row.elements : "");
        if (fits && value->vt == VT_DISPATCH) {
          EXPECT_EQ(held.get().pdispVal, value->pdispVal) << "shared";
        }
      }
}

TEST_F(Derivatives, AReleaseMayCallBack) {
  Stub<IRealArrayDisp> array;
  INT added = 0;
  for (int round = 0; round < 3; ++round) {
    const INT index = add(1, 2, RealArray);
    EXPECT_EQ(derivatives->PutArrayDerivative(index, &array), S_OK);
    array.onRelease = [&] {
      add(101 + added++, 1, RealPoint);
      derivatives->PutArrayDerivative(0, nullptr);
    };
    EXPECT_EQ(round == 0   ? derivatives->ClearDerivativesProps()
              : round == 1 ? derivatives->RemoveDerivativeProp(index, kEmptyInteger, kEmptyInteger)
                           : derivatives->PutArrayDerivative(index, reals({}).get()),
              S_OK);
  }
  std::string properties;
  LONG property = 0, derivative = 0;
  for (INT i = 0; derivatives->GetDerivativePropIDs(i, &property, &derivative) == S_OK; ++i)
    properties += std::to_string(property) + ' ';
  EXPECT_EQ(properties, "101 102 1 103 ");
}

}  // namespace
}  // namespace qs::test
