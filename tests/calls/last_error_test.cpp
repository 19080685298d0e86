// Every member of every class: whatever returns a failure leaves its code and its name.
#include <thread>

#include "tests/calls/any_object.h"
#include "tests/support/component_test.h"

namespace qs::test {
namespace {

// One number, one text and one object for all arguments.
class Same final : public Values {
 public:
  double number() override { return number_; }
  Bstr text() override { return text_ ? Bstr(WideView(OLESTR("none"))) : Bstr(); }
  ComPtr<IUnknown> object() override { return object_; }
  Variant variant() override { return Variant(number_); }
  HRESULT answer() override { return E_FAIL; }

  double number_ = 0;
  bool text_ = false;
  ComPtr<IUnknown> object_;
};

struct Last {
  HRESULT result;
  std::string member;
  bool operator==(const Last&) const = default;
};
Last lastOf(ILastError& object) {
  LONG result = S_OK;
  Bstr member, text;
  EXPECT_EQ(object.GetLastError(&result, member.out(), text.out()), S_OK);
  EXPECT_FALSE(text.view().empty());
  return {result, narrow(member.view())};
}
void PrintTo(const Last& last, std::ostream* out) { *out << std::hex << last.result << ' ' << last.member; }

using LastErrors = ComponentTest;

TEST_F(LastErrors, AreOfTheMemberThatFailedLast) {
  Same values;
  const ComPtr<IUnknown> objects[] = {{}, AnyObject::create(values)};
  for (const CreatableClass& each : std::span(kClasses, kClassCount))
    for (const Member& member : members())
      for (int way = 0; way < 12; ++way) {
        const auto object = create<IUnknown>(each.clsid);
        const auto errors = query<ILastError>(object);
        values.number_ = std::array{-1.0, 0.0, 1000.0}[static_cast<std::size_t>(way) % 3];
        values.text_ = way / 3 % 2;
        values.object_ = objects[way / 6];
        const Last before{E_POINTER, "get_LastError"};
        EXPECT_EQ(errors->get_LastError(nullptr), E_POINTER);
        const HRESULT result = member.call(object.get(), values);
        if (result == E_NOINTERFACE && lastOf(*errors.get()) == before) break;  // it has no such member
        SCOPED_TRACE(std::string(each.name) + ' ' + member.face + "::" + member.name + ' ' + std::to_string(way));
        const Last own{result, member.name}, last = lastOf(*errors.get());
        if (FAILED(result))
          EXPECT_EQ(last, own);
        else
          EXPECT_TRUE(last == before || (result == S_FALSE && last == own)) << testing::PrintToString(last);
      }
}

TEST_F(LastErrors, AreOfTheThread) {
  const auto errors = create<ILastError>(__uuidof(::HostRealArray));
  EXPECT_EQ(errors->get_LastError(nullptr), E_POINTER);
  std::thread([&] {
    LONG result = 5;
    Bstr sentence, member, text;
    EXPECT_EQ(errors->get_LastError(sentence.out()), S_FALSE);
    EXPECT_EQ(errors->GetLastError(&result, member.out(), text.out()), S_FALSE);
    EXPECT_TRUE(!sentence && result == S_OK && !member && !text);
  }).join();
  EXPECT_EQ(lastOf(*errors.get()).member, "get_LastError");
}

}  // namespace
}  // namespace qs::test
