// Any member of any interface of the system by its name, with arguments from one source and results into the same.
#pragma once

#include <span>

#include "com/bstr.h"
#include "com/variant.h"
#include "interfaces/interfaces.h"

namespace qs::test {

// Where the arguments of calls come from and where their results go.
class Values {
 public:
  virtual double number() = 0;  // for an argument of any type of numbers
  virtual Bstr text() { return {}; }
  virtual ComPtr<IUnknown> object() { return {}; }
  virtual Variant variant() { return {}; }

  virtual void take(double) {}
  virtual void take(const Bstr&) {}
  virtual void take(const ComPtr<IUnknown>&) {}
  virtual void take(const Variant&) {}

  // What a member of AnyObject answers before it takes its results from here; it may call back, and throw.
  virtual HRESULT answer() { return S_OK; }

  // Around the call itself.
  virtual void begin() {}
  virtual void end(HRESULT) {}

 protected:
  ~Values() = default;
};

struct Member {
  const char* face;
  const char* name;
  const IID& iid;
  std::size_t arguments;
  // E_NOINTERFACE for an object without the interface. Results of a call that failed are freed and not taken.
  HRESULT (*call)(IUnknown* object, Values& values);
};

std::span<const Member> members();

// Whether docs/reference.md has the result among those of a member.
bool isStated(const Member& member, HRESULT result);

// A number as another type; the least integer where it is none.
template <class T>
T within(double number) {
  if constexpr (std::is_same_v<T, double>) return number;
  constexpr double kMost = 2147483647;
  return static_cast<T>(number >= -kMost && number <= kMost ? static_cast<LONG>(number) : -2147483647 - 1);
}

// A class that hosts and the system create.
struct CreatableClass {
  const char* name;
  const CLSID& clsid;
  const IID& iid;  // of its default interface
};
extern const CreatableClass kClasses[];
extern const std::size_t kClassCount;

// Loads both modules and registers all classes, once. Throws std::runtime_error.
void registerClasses();
// Whether no object of either module is alive.
bool nothingAlive();

}  // namespace qs::test
