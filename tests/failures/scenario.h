// Lines of scenarios.txt, and the calls that they stand for.
#pragma once

#include <istream>
#include <map>
#include <string>
#include <vector>

#include "tests/calls/any_object.h"

namespace qs::test {

// A line of a scenario: `results = class`, or `results = object.Member arguments`.
struct Step {
  std::vector<std::string> results;
  std::string object, member;
  std::vector<std::string> arguments;
};

struct Scenario {
  std::string name;
  // Result codes that the failing call may have beside E_OUTOFMEMORY, and whether it may have done a part.
  std::vector<HRESULT> allowed;
  bool partial = false;
  bool isLong = false;
  std::vector<Step> steps;  // the last one fails
};

// The lines of scenarios.txt, whose head describes them. Throws std::exception.
std::vector<Scenario> readScenarios(std::istream& in);

// The objects and texts of one run by their names, and the arguments and results of its calls.
class Call : public Values {
 public:
  // The texts that are there from the beginning; `$name` stands for one.
  explicit Call(const std::map<std::string, std::string>& texts);
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  virtual ~Call() = default;

  // Throws std::runtime_error for a step that cannot be taken.
  HRESULT run(const Step& step);
  // All that the objects tell.
  std::string description();

 protected:
  // A text that the host's own objects answer.
  virtual Bstr hostText() { return Bstr(OLESTR("k=1")); }

 private:
  class Reader;
  // What the host's own objects answer: 1, a text and no object.
  class Host final : public Values {
   public:
    explicit Host(Call& call) : call_(call) {}

   private:
    double number() override { return 1; }
    Bstr text() override { return call_.hostText(); }
    Variant variant() override { return Variant(1.0); }

    Call& call_;
  };

  double number() override;
  Bstr text() override;
  ComPtr<IUnknown> object() override;
  Variant variant() override;
  void take(const Bstr& result) override { texts_[resultName()] = result.view(); }
  void take(const ComPtr<IUnknown>& result) override { objects_[resultName()] = result; }

  const std::string& argument();
  std::string resultName();
  IUnknown* objectNamed(const std::string& name) const;
  HRESULT createObject(const Step& step);

  Host host_{*this};
  std::map<std::string, WideString> texts_;
  std::map<std::string, ComPtr<IUnknown>> objects_;
  const Step* step_ = nullptr;
  std::size_t nextArgument_ = 0, nextResult_ = 0;
};

}  // namespace qs::test
