// Every scenario of scenarios.txt with its first, second, ... allocation failing, until it needs no more: each of them
// alone, and then with all later ones. A call that fails has changed nothing, has lost nothing and succeeds when it is
// made again; a call that does without what it could not get has done what it does otherwise.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>

#include "tests/failures/heap.h"
#include "tests/failures/scenario_data.h"

namespace qs::test {
namespace {

// A call whose allocations fail.
class FailingCall final : public Call {
 public:
  using Call::Call;
  // Of the allocations of the last step, number `failing` fails.
  HRESULT run(const Step& step, std::int64_t failing, bool andAllLater) {
    failing_ = failing;
    andAllLater_ = andAllLater;
    const HRESULT hr = Call::run(step);
    failing_ = kNever;
    return hr;
  }
  using Call::run;
  // Whether it did.
  bool reached() const { return reached_; }

 private:
  static constexpr std::int64_t kNever = std::int64_t{1} << 60;

  Bstr hostText() override {
    const SpareHeap spare;
    return Call::hostText();
  }
  void begin() override { failAllocation(failing_, andAllLater_); }
  void end(HRESULT) override { reached_ = endFailing(); }

  std::int64_t failing_ = kNever;
  bool andAllLater_ = false, reached_ = false;
};

class Failures : public testing::Test {
 public:
  explicit Failures(const Scenario& scenario) : scenario_(scenario) {}

  void TestBody() override {
    const auto [result, state] = clean();
    clean();  // what is made once and kept is there now
    for (const bool andAllLater : {false, true}) {
      for (std::int64_t failing = 0; attempt(failing, andAllLater, result, state); ++failing) {
        ++injected;
        // Once more where blocks are left: they are lost when more are left each time.
        if (left_ != 0) {
          attempt(failing, andAllLater, result, state);
          EXPECT_EQ(left_, 0) << "blocks are lost";
        }
        if (HasFailure())
          FAIL() << scenario_.name << ": allocation " << failing << (andAllLater ? " and later ones" : "");
      }
    }
  }

  static std::map<std::string, std::string> texts;
  static std::function<void()> prepare;
  static int injected;

 private:
  const Step& last() const { return scenario_.steps.back(); }

  void begin(Call& run) {
    prepare();
    for (const Step& step : std::span(scenario_.steps).first(scenario_.steps.size() - 1))
      ASSERT_TRUE(SUCCEEDED(run.run(step))) << step.object << '.' << step.member;
  }

  std::pair<HRESULT, std::string> clean() {
    Call run(texts);
    begin(run);
    before_ = run.description();
    const HRESULT result = run.run(last());
    EXPECT_TRUE(SUCCEEDED(result)) << scenario_.name;
    return {result, run.description()};
  }

  // Whether an allocation failed.
  bool attempt(std::int64_t failing, bool andAllLater, HRESULT result, const std::string& state) {
    const std::int64_t held = blocksHeld();
    const bool reached = [&] {
      FailingCall run(texts);
      begin(run);
      HRESULT hr = run.run(last(), failing, andAllLater);
      if (!run.reached()) return false;
      if (FAILED(hr)) {
        EXPECT_TRUE(hr == E_OUTOFMEMORY || std::ranges::count(scenario_.allowed, hr)) << std::hex << hr;
        if (!scenario_.partial) {
          EXPECT_EQ(run.description(), before_);
        }
        hr = run.run(last());
      }
      EXPECT_EQ(hr, result);
      EXPECT_EQ(run.description(), state);
      return true;
    }();
    EXPECT_TRUE(nothingAlive());
    left_ = blocksHeld() - held;
    return reached;
  }

  const Scenario& scenario_;
  std::string before_;
  std::int64_t left_ = 0;
};

std::map<std::string, std::string> Failures::texts;
std::function<void()> Failures::prepare;
int Failures::injected = 0;

}  // namespace
}  // namespace qs::test

int main(int argc, char** argv) {
  using namespace qs::test;
  testing::InitGoogleTest(&argc, argv);
  ScenarioData data;
  Failures::texts = data.texts;
  // The database is read again in each run.
  Failures::prepare = [index = data.database.path() / "purecmp1.idx", change = std::chrono::seconds(1)]() mutable {
    std::filesystem::last_write_time(index, std::filesystem::last_write_time(index) + change);
    change = -change;
  };
  std::erase_if(data.scenarios, [](const Scenario& each) { return each.isLong && !std::getenv("QS_LONG"); });
  for (const Scenario& scenario : data.scenarios)
    testing::RegisterTest("Failures", scenario.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [&]() -> testing::Test* { return new Failures(scenario); });
  const int result = RUN_ALL_TESTS();
  std::cout << data.scenarios.size() << " scenarios, " << Failures::injected << " failed allocations\n";
  return result;
}
