// Points, placeholders and component properties, and what every kind answers to operations it does not support.
#include <cstring>

#include "tests/support/properties.h"

namespace qs {
namespace {

template <class Kind>
Kind& withType(Kind& property, tagPropTypeEnum type) {
  property.SetType(type);
  return property;
}

// The entry of the virtual table that a pointer to a member function names; the destructor takes two.
template <class Member>
std::size_t entryOf(Member member) {
  std::size_t encoded = 0;
  static_assert(sizeof(member) >= sizeof(encoded));
  std::memcpy(&encoded, &member, sizeof(encoded));
  EXPECT_EQ(encoded % sizeof(void*), 1u) << "not virtual";
  return encoded / sizeof(void*);
}

TEST(PropertyKinds, OperationsStandInTheirSlots) {
  using P = CQSAbstractProp;
  const std::size_t entries[] = {entryOf(&P::Copy),
                                 entryOf(&P::GetValue),
                                 entryOf(&P::Store),
                                 entryOf(&P::Recall),
                                 entryOf(&P::SetValue),
                                 entryOf(&P::GetClassName),
                                 entryOf(&P::GetForm),
                                 entryOf(&P::GetShape),
                                 entryOf(&P::GetNumbOfParameters),
                                 entryOf(&P::GetParameter),
                                 entryOf(&P::GetTRange),
                                 entryOf(&P::GetPRange),
                                 entryOf(&P::GetXYShape),
                                 entryOf(&P::GetXYNorm),
                                 entryOf(&P::GetXYPow),
                                 entryOf(&P::GetAB),
                                 entryOf(&P::SetParameters),
                                 entryOf(&P::SetParameter),
                                 entryOf(&P::SetTRange),
                                 entryOf(&P::SetPRange),
                                 entryOf(&P::SetXYShape),
                                 entryOf(&P::SetXYNorm),
                                 entryOf(&P::SetXYPow),
                                 entryOf(&P::SetAB),
                                 entryOf(&P::GetCOMClassName),
                                 entryOf(&P::GetCOMObject),
                                 entryOf(&P::SetCOMClassName),
                                 entryOf(&P::SetCOMObject)};
  for (std::size_t slot = 1; slot <= 28; ++slot) EXPECT_EQ(entries[slot - 1], slot + 1) << "slot " << slot;
}

// Every operation below is one that neither points nor placeholders support.
TEST(PropertyKinds, AnswerUnsupportedOperations) {
  CQSPointProp point;
  CQSVoidProp placeholder;
  CQSCOMProp component;
  for (CQSAbstractProp* property : {static_cast<CQSAbstractProp*>(&point), static_cast<CQSAbstractProp*>(&placeholder),
                                    static_cast<CQSAbstractProp*>(&component)}) {
    BSTR text = nullptr;
    EXPECT_EQ(property->GetClassName(&text), S_FALSE);
    EXPECT_EQ(taken(text), "Not Valid");
    EXPECT_EQ(property->GetForm(&text), S_FALSE);
    EXPECT_EQ(taken(text), "Not Valid");

    LONG first = 5;
    LONG second = 5;
    EXPECT_EQ(property->GetShape(&first), S_FALSE);
    EXPECT_EQ(first, 1000);
    EXPECT_EQ(property->GetNumbOfParameters(&first), S_FALSE);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(property->GetXYShape(&first, &second), S_FALSE);
    EXPECT_EQ(first, 1000);
    EXPECT_EQ(second, 1000);

    double value = 1.0;
    EXPECT_EQ(property->GetParameter(0, &value), S_FALSE);
    EXPECT_EQ(value, -32767.0);
    for (const auto getter : {&CQSAbstractProp::GetTRange, &CQSAbstractProp::GetPRange, &CQSAbstractProp::GetXYNorm,
                              &CQSAbstractProp::GetXYPow, &CQSAbstractProp::GetAB}) {
      double values[] = {1.0, 1.0};
      EXPECT_EQ((property->*getter)(&values[0], &values[1]), S_FALSE);
      EXPECT_THAT(values, testing::Each(-32767.0));
    }
    for (const auto setter : {&CQSAbstractProp::SetTRange, &CQSAbstractProp::SetPRange, &CQSAbstractProp::SetXYNorm,
                              &CQSAbstractProp::SetXYPow, &CQSAbstractProp::SetAB}) {
      EXPECT_EQ((property->*setter)(1.0, 2.0), S_FALSE);
    }
    EXPECT_EQ(property->SetParameters(&value, 1), S_FALSE);
    EXPECT_EQ(property->SetParameter(0, 1.0), S_FALSE);
    EXPECT_EQ(property->SetXYShape(1, 1), S_FALSE);

    IPCProperty* object = reinterpret_cast<IPCProperty*>(&value);
    EXPECT_EQ(property->GetCOMObject(&object), S_FALSE);
    EXPECT_EQ(object, nullptr);
    text = reinterpret_cast<BSTR>(&value);
    EXPECT_EQ(property->GetCOMClassName(&text), S_FALSE);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(property->SetCOMObject(nullptr), S_FALSE);
    if (property != &component) {
      FakeComponent object1;
      EXPECT_EQ(property->SetCOMObject(&object1), S_FALSE);
      EXPECT_EQ(object1.references, 1);
      EXPECT_EQ(property->SetCOMClassName(Bstr(OLESTR("x")).get()), S_FALSE);
    }
    EXPECT_EQ(property->SetValue(1.0), property == &point ? S_OK : S_FALSE);
  }
}

TEST(PropertyKinds, PointAnswersItsValueAtEveryState) {
  CQSPointProp point;
  EXPECT_EQ(evaluate(point), (Evaluation{S_OK, 0, -32767.0}));
  EXPECT_EQ(point.SetValue(500.0), S_OK);
  EXPECT_EQ(evaluate(point, -1.0, -1.0), (Evaluation{S_OK, 0, 500.0}));
  EXPECT_EQ(evaluate(CQSVoidProp()), (Evaluation{S_FALSE, 0, -32767.0})) << "a placeholder has none";
}

TEST(PropertyKinds, ComponentPropertyDelegates) {
  FakeComponent fake;
  {
    CQSCOMProp property;
    EXPECT_EQ(evaluate(property), (Evaluation{S_FALSE, kUnwrittenLong, -32767.0}));

    EXPECT_EQ(property.SetCOMObject(&fake), S_OK);
    EXPECT_EQ(fake.references, 2);
    EXPECT_EQ(evaluate(property, 300.0, 100.0), (Evaluation{S_OK, 3, 400.0}));
    LONG dependencies = 0;
    double value = 0.0;
    property.GetValue(300.0, 100.0, eNothingDefinedYet, &dependencies, &value);
    EXPECT_EQ(value, 401.0);
    fake.result = E_FAIL;
    EXPECT_EQ(evaluate(property, 1.0, 2.0), (Evaluation{S_OK, 3, 3.0}));

    EXPECT_EQ(property.SetCOMObject(nullptr), S_FALSE);
    IPCProperty* object = nullptr;
    EXPECT_EQ(property.GetCOMObject(&object), S_OK);
    EXPECT_EQ(object, &fake);
    EXPECT_EQ(fake.references, 3);
    object->Release();
  }
  EXPECT_EQ(fake.references, 1);
}

TEST(PropertyKinds, ReplacedComponentKeepsItsReference) {
  FakeComponent first, second;
  {
    CQSCOMProp property;
    property.SetCOMObject(&first);
    property.SetCOMObject(&second);
    EXPECT_EQ(second.references, 2);
  }
  EXPECT_EQ(first.references, 2);
  EXPECT_EQ(second.references, 1);
}

TEST(PropertyKinds, ComponentPropertyKeepsAClassName) {
  CQSCOMProp property;
  BSTR name = nullptr;
  EXPECT_EQ(property.SetCOMClassName(Bstr(OLESTR("First")).get()), S_OK);
  EXPECT_EQ(property.SetCOMClassName(Bstr(OLESTR("Second")).get()), S_OK);
  EXPECT_EQ(property.GetCOMClassName(&name), S_OK);
  EXPECT_EQ(taken(name), "Second");
  EXPECT_EQ(property.SetCOMClassName(nullptr), S_OK);
  EXPECT_EQ(property.GetCOMClassName(&name), S_FALSE);
  EXPECT_EQ(name, nullptr);
}

TEST(PropertyKinds, CopyTakesNameAndValue) {
  CQSPointProp source;
  source.Name = Bstr(OLESTR("TC"));
  withType(source, PointProp).SetValue(647.1);
  CQSPointProp target;
  target.Name = Bstr(OLESTR("old"));
  withType(target, PointProp).SetValue(1.0);
  EXPECT_EQ(target.Copy(&source), S_OK);
  EXPECT_EQ(target.Name.view(), OLESTR("TC"));
  EXPECT_NE(target.Name.get(), source.Name.get());
  EXPECT_EQ(evaluate(target).value, 647.1);

  EXPECT_EQ(target.Copy(&target), S_OK);
  EXPECT_EQ(target.Name.view(), OLESTR("TC"));
  source.Name = Bstr();
  EXPECT_EQ(target.Copy(&source), S_OK);
  EXPECT_EQ(target.Name.get(), nullptr);
}

// The source's type decides, not its class; the target's type matters to none of them but the placeholder, which sets
// its own.
TEST(PropertyKinds, CopyRefusesOtherTypes) {
  CQSPointProp point;
  CQSVoidProp placeholder;
  CQSCOMProp component;
  const std::unique_ptr<CQSAbstractProp> curve = equation(PropCurvePOLY2);
  CQSAbstractProp* targets[] = {&placeholder, &point, curve.get(), &component};
  const std::string before = stored(*curve);
  for (LONG own = 0; own < 4; ++own) {
    CQSAbstractProp& target = *targets[own];
    target.Name = Bstr(OLESTR("kept"));
    EXPECT_EQ(target.Copy(nullptr), S_FALSE);
    for (LONG type = 0; type <= 8; ++type) {
      if (type == own) continue;
      CQSPointProp source;
      source.Name = Bstr(OLESTR("other"));
      source.SetType(type);
      EXPECT_EQ(target.Copy(&source), S_FALSE) << own << " from " << type;
      EXPECT_EQ(target.Name.view(), OLESTR("kept"));
    }
  }
  EXPECT_EQ(evaluate(point).value, -32767.0);
  EXPECT_EQ(stored(*curve), before);

  placeholder.SetType(PointPropLong);
  CQSVoidProp source;
  source.Name = Bstr(OLESTR("SUBP"));
  EXPECT_EQ(placeholder.Copy(&source), S_OK);
  LONG type = 0;
  placeholder.GetType(&type);
  EXPECT_EQ(type, VoidProp);
  EXPECT_EQ(placeholder.Name.view(), OLESTR("SUBP"));
}

TEST(PropertyKinds, CopyOfAComponentPropertyLeavesItToItsOwner) {
  FakeComponent fake;
  CQSCOMProp source;
  withType(source, COMProp).Name = Bstr(OLESTR("User"));
  source.SetCOMClassName(Bstr(OLESTR("Class")).get());
  CQSCOMProp target;
  withType(target, COMProp).SetCOMObject(&fake);
  target.SetCOMClassName(Bstr(OLESTR("Old")).get());

  EXPECT_EQ(target.Copy(&source), S_OK);
  EXPECT_EQ(fake.references, 1);
  EXPECT_EQ(target.Name.view(), OLESTR("User"));
  BSTR name = nullptr;
  EXPECT_EQ(target.GetCOMClassName(&name), S_FALSE);

  target.SetCOMObject(&fake);
  EXPECT_EQ(target.Copy(&target), S_OK);
  EXPECT_EQ(target.Name.view(), OLESTR("User"));
  EXPECT_EQ(fake.references, 1);
}

}  // namespace
}  // namespace qs
