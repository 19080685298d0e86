// Points, placeholders and component properties, and what every kind returns from operations that it does not support.
#include <cstring>
#include <numeric>

#include "tests/support/properties.h"

namespace qs {
namespace {

// The entries of the virtual table that pointers to member functions name.
template <class... Members>
std::vector<std::size_t> entriesOf(Members... members) {
  const auto entryOf = [](auto member) {
    std::size_t encoded = 0;
    std::memcpy(&encoded, &member, sizeof encoded);
    EXPECT_EQ(encoded % sizeof(void*), 1u) << "not virtual";
    return encoded / sizeof(void*);
  };
  return {entryOf(members)...};
}

// Behind the two of the destructor.
TEST(PropertyKinds, OperationsHaveTheirPlacesInTheVirtualTable) {
  using P = CQSAbstractProp;
  std::vector<std::size_t> places(28);
  std::iota(places.begin(), places.end(), 2u);
  EXPECT_EQ(entriesOf(&P::Copy, &P::GetValue, &P::Store, &P::Recall, &P::SetValue, &P::GetClassName, &P::GetForm,
                      &P::GetShape, &P::GetNumbOfParameters, &P::GetParameter, &P::GetTRange, &P::GetPRange,
                      &P::GetXYShape, &P::GetXYNorm, &P::GetXYPow, &P::GetAB, &P::SetParameters, &P::SetParameter,
                      &P::SetTRange, &P::SetPRange, &P::SetXYShape, &P::SetXYNorm, &P::SetXYPow, &P::SetAB,
                      &P::GetCOMClassName, &P::GetCOMObject, &P::SetCOMClassName, &P::SetCOMObject),
            places);
}

TEST(PropertyKinds, RefuseWhatTheyDoNotSupport) {
  using P = CQSAbstractProp;
  CQSPointProp point;
  CQSVoidProp placeholder;
  CQSCOMProp component;
  test::ValueComponent object;
  for (P* property : std::initializer_list<P*>{&point, &placeholder, &component}) {
    for (const auto getter : {&P::GetClassName, &P::GetForm}) {
      BSTR text = nullptr;
      EXPECT_EQ((property->*getter)(&text), S_FALSE);
      EXPECT_EQ(taken(text), "Not Valid");
    }
    LONG shape = 5, count = 5, x = 5, y = 5;
    double value = 1.0;
    auto* given = reinterpret_cast<IPCProperty*>(1);
    auto* className = reinterpret_cast<BSTR>(1);
    std::vector<HRESULT> results{
        property->GetShape(&shape),        property->GetNumbOfParameters(&count), property->GetXYShape(&x, &y),
        property->GetParameter(0, &value), property->GetCOMObject(&given),        property->GetCOMClassName(&className),
        property->SetParameter(0, 1.0),    property->SetParameters(&value, 1),    property->SetXYShape(1, 1)};
    EXPECT_THAT((std::vector{shape, count, x, y}), testing::ElementsAre(1000, 0, 1000, 1000));
    EXPECT_EQ(value, -32767.0);
    EXPECT_EQ(given, nullptr);
    EXPECT_EQ(className, nullptr);
    for (const auto getter : {&P::GetTRange, &P::GetPRange, &P::GetXYNorm, &P::GetXYPow, &P::GetAB}) {
      double values[] = {1.0, 1.0};
      results.push_back((property->*getter)(&values[0], &values[1]));
      EXPECT_THAT(values, testing::Each(-32767.0));
    }
    for (const auto setter : {&P::SetTRange, &P::SetPRange, &P::SetXYNorm, &P::SetXYPow, &P::SetAB})
      results.push_back((property->*setter)(1.0, 2.0));
    if (property != &component) {
      results.push_back(property->SetCOMObject(&object));
      results.push_back(property->SetCOMClassName(Bstr(OLESTR("x")).get()));
    }
    EXPECT_THAT(results, testing::Each(S_FALSE));
    EXPECT_EQ(property->SetValue(1.0), property == &point ? S_OK : S_FALSE);
  }
}

TEST(PropertyKinds, PointHasItsValueAtEveryState) {
  CQSPointProp point;
  EXPECT_EQ(evaluate(point), (Evaluation{S_OK, 0, -32767.0}));
  EXPECT_EQ(point.SetValue(500.0), S_OK);
  EXPECT_EQ(evaluate(point, -1.0, -1.0), (Evaluation{S_OK, 0, 500.0}));
  EXPECT_EQ(evaluate(CQSVoidProp()), (Evaluation{S_FALSE, 0, -32767.0})) << "a placeholder has none";
}

TEST(PropertyKinds, ComponentPropertyDelegates) {
  test::ValueComponent first, second;
  {
    CQSCOMProp property;
    EXPECT_EQ(evaluate(property), (Evaluation{S_FALSE, kUnwrittenLong, -32767.0}));
    EXPECT_EQ(property.SetCOMObject(&first), S_OK);
    first.result = E_FAIL;
    LONG dependencies = 0;
    double value = 0.0;
    EXPECT_EQ(property.GetValue(300.0, 100.0, eNothingDefinedYet, &dependencies, &value), S_OK);
    EXPECT_EQ(dependencies, 3);
    EXPECT_EQ(value, 401.0);

    EXPECT_EQ(property.SetCOMObject(nullptr), S_FALSE);
    ComPtr<IPCProperty> object;
    EXPECT_EQ(property.GetCOMObject(object.out()), S_OK);
    EXPECT_EQ(object.get(), &first);
    EXPECT_EQ(first.references, 3u);
    property.SetCOMObject(&second);
    EXPECT_EQ(second.references, 2u);
  }
  EXPECT_EQ(first.Release(), 1u) << "what is replaced keeps its reference";
}

TEST(PropertyKinds, CopyTakesNameAndValue) {
  CQSPointProp source, target;
  source.SetType(PointProp);
  target.SetType(PointProp);
  source.SetValue(647.1);
  for (const WideView name : {WideView(OLESTR("TC")), WideView()}) {
    source.Name = name.empty() ? PropertyName() : PropertyName(name);
    for (CQSPointProp* from : {&source, &target}) {
      EXPECT_EQ(target.Copy(from), S_OK);
      EXPECT_EQ(target.Name.view(), name);
      EXPECT_EQ(evaluate(target).value, 647.1);
    }
  }
}

// The source's type decides, not its class; the target's type matters to none of them but the placeholder, which sets
// its own.
TEST(PropertyKinds, CopyRefusesOtherTypes) {
  CQSPointProp point;
  CQSVoidProp placeholder, source;
  CQSCOMProp component;
  const std::unique_ptr<CQSAbstractProp> curve = equation(PropCurvePOLY2);
  CQSAbstractProp* targets[] = {&placeholder, &point, curve.get(), &component};
  const std::string before = stored(*curve);
  for (LONG own = 0; own < 4; ++own) {
    CQSAbstractProp& target = *targets[own];
    target.Name = PropertyName(OLESTR("kept"));
    EXPECT_EQ(target.Copy(nullptr), S_FALSE);
    for (LONG type = 0; type <= 8; ++type) {
      if (type == own) continue;
      source.SetType(type);
      EXPECT_EQ(target.Copy(&source), S_FALSE) << own << " from " << type;
      EXPECT_EQ(target.Name.view(), OLESTR("kept"));
    }
  }
  EXPECT_EQ(evaluate(point).value, -32767.0);
  EXPECT_EQ(stored(*curve), before);

  placeholder.SetType(PointPropLong);
  source.SetType(VoidProp);
  EXPECT_EQ(placeholder.Copy(&source), S_OK);
  LONG type = 0;
  placeholder.GetType(&type);
  EXPECT_EQ(type, VoidProp);
}

TEST(PropertyKinds, CopyOfAComponentPropertyLeavesItToItsOwner) {
  test::ValueComponent fake;
  CQSCOMProp source, target;
  source.SetType(COMProp);
  target.SetType(COMProp);
  source.Name = PropertyName(OLESTR("User"));
  source.SetCOMClassName(Bstr(OLESTR("Class")).get());
  for (const CQSCOMProp* from : {&source, &target}) {
    target.SetCOMObject(&fake);
    target.SetCOMClassName(Bstr(OLESTR("Old")).get());
    EXPECT_EQ(target.Copy(from), S_OK);
    EXPECT_EQ(fake.references, 1u);
    EXPECT_EQ(target.Name.view(), OLESTR("User"));
    BSTR name = nullptr;
    EXPECT_EQ(target.GetCOMClassName(&name), S_FALSE);
  }
}

}  // namespace
}  // namespace qs
