// Every scenario of scenarios.txt with its first, second, ... allocation failing, until it needs no more: each of them
// alone, and then with all later ones. A call that fails has changed nothing, has lost nothing and succeeds when it is
// made again; a call that does without what it could not get has done what it does otherwise.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "benchmarks/heap.h"
#include "tests/failures/scenario_data.h"

namespace qs::test {
namespace {

// A call whose allocations fail.
class FailingCall final : public Call {
 public:
  using Call::Call;
  // Of the allocations of the step, number `failing` fails.
  HRESULT runFailing(const Step& step, std::int64_t failing, bool andAllLater) {
    failing_ = failing;
    andAllLater_ = andAllLater;
    const HRESULT hr = run(step);
    failing_ = kNever;
    return hr;
  }
  // Whether it did in the last call.
  bool reached() const { return reached_; }

 private:
  static constexpr std::int64_t kNever = std::int64_t{1} << 60;

  Bstr hostText() override {
    const heap::Spare spare;
    return Call::hostText();
  }
  void begin() override { heap::failAllocation(failing_, andAllLater_); }
  void end(HRESULT) override { reached_ = heap::endFailing(); }

  std::int64_t failing_ = kNever;
  bool andAllLater_ = false, reached_ = false;
};

int injected = 0;

class Failures : public testing::Test {
 public:
  Failures(ScenarioData& data, const Scenario& scenario) : data_(data), scenario_(scenario) {}

  void TestBody() override {
    clean();
    clean();  // what is made once and kept is there now
    for (const bool andAllLater : {false, true}) {
      for (std::int64_t failing = 0; attempt(failing, andAllLater); ++failing) {
        ++injected;
        // Once more where blocks are left: they are lost when more are left each time.
        if (left_ != 0) {
          attempt(failing, andAllLater);
          EXPECT_EQ(left_, 0u) << "blocks are lost";
        }
        if (HasFailure())
          FAIL() << scenario_.name << ": allocation " << failing << (andAllLater ? " and later ones" : "");
      }
    }
  }

 private:
  void begin(Call& run) {
    // The database is read again in each run.
    const auto index = data_.database.path() / "purecmp1.idx";
    const auto change = std::chrono::seconds(data_.runs++ % 2 ? -1 : 1);
    std::filesystem::last_write_time(index, std::filesystem::last_write_time(index) + change);
    for (const Step& step : std::span(scenario_.steps).first(scenario_.steps.size() - 1))
      ASSERT_TRUE(SUCCEEDED(run.run(step))) << step.object << '.' << step.member;
  }

  void clean() {
    Call run(data_.texts);
    begin(run);
    before_ = run.description();
    result_ = run.run(scenario_.steps.back());
    EXPECT_TRUE(SUCCEEDED(result_)) << scenario_.name;
    after_ = run.description();
  }

  // Whether an allocation failed.
  bool attempt(std::int64_t failing, bool andAllLater) {
    const heap::Count count;
    const bool reached = [&] {
      FailingCall run(data_.texts);
      begin(run);
      HRESULT hr = run.runFailing(scenario_.steps.back(), failing, andAllLater);
      if (!run.reached()) return false;
      if (FAILED(hr)) {
        EXPECT_TRUE(hr == E_OUTOFMEMORY || std::ranges::count(scenario_.allowed, hr)) << std::hex << hr;
        EXPECT_TRUE(scenario_.partial || run.description() == before_) << run.description() << before_;
        hr = run.run(scenario_.steps.back());
      }
      EXPECT_EQ(hr, result_);
      EXPECT_EQ(run.description(), after_);
      return true;
    }();
    EXPECT_TRUE(nothingAlive());
    left_ = count.blocksLeft();
    return reached;
  }

  ScenarioData& data_;
  const Scenario& scenario_;
  HRESULT result_ = S_OK;
  std::string before_, after_;
  std::size_t left_ = 0;
};

}  // namespace
}  // namespace qs::test

int main(int argc, char** argv) {
  using namespace qs::test;
  testing::InitGoogleTest(&argc, argv);
  ScenarioData data;
  std::erase_if(data.scenarios, [](const Scenario& each) { return each.isLong && !std::getenv("QS_LONG"); });
  for (const Scenario& scenario : data.scenarios)
    testing::RegisterTest("Failures", scenario.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [&]() -> testing::Test* { return new Failures(data, scenario); });
  const int result = RUN_ALL_TESTS();
  std::cout << data.scenarios.size() << " scenarios, " << injected << " failed allocations\n";
  return result;
}
