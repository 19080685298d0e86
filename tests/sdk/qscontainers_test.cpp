// The C++ header of the packages, as a host uses it.
#include <gmock/gmock.h>

#include <qscontainers.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/bundled_compounds.h"
#include "tests/support/component_test.h"
#include "tests/support/failing_arrays.h"

namespace qs::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Sdk : public ComponentTest {
 protected:
  static std::string database() {
    static const BundledCompounds bundled;
    return utf8(bundled.directory.path());
  }
  static Compound read(int number) { return Compound::read(database(), number).value(); }
  static Compound named(const char* name) {
    auto compound = Compound::create().value();
    compound.setName(name).value();
    return compound;
  }
  static std::vector<std::string> namesOf(const Collection& compounds) {
    std::vector<std::string> names;
    for (const Compound& compound : compounds) names.push_back(compound.name().value_or("-"));
    return names;
  }
};

TEST_F(Sdk, ResultsThrowOnlyWhenAsked) {
  const Compound water = read(19), none;
  const Result<double> there = water["TC"].at(), missing = water["RI"].at(), failed = none["TC"].at();
  EXPECT_EQ(there.value_or(0), 647.14);
  EXPECT_EQ(missing.value_or(1.5), 1.5);
  EXPECT_EQ(failed.value_or(1.5), 1.5);
  struct {
    HRESULT found, expected;
    Failure failure;
    const char* text;
  } const cases[] = {
      {missing.code(), S_FALSE, missing.failure(), "RI: not there"},
      {failed.code(), E_NOINTERFACE, failed.failure(), "(0x80004002)"},
      {Compound::read(database(), 30000).code(), S_FALSE, Compound::read(database(), 30000).failure(), "30000"},
      {Compound::read("/no place", 19).code(), E_FAIL, Compound::read("/no place", 19).failure(), "purecmp1.idx: "},
  };
  for (const auto& [found, expected, failure, text] : cases) {
    EXPECT_EQ(found, expected) << text;
    EXPECT_THAT(failure.message(), HasSubstr(text));
    try {
      Result<double>(failure).value();
      ADD_FAILURE() << text;
    } catch (const Error& error) {
      EXPECT_EQ(error.code(), expected);
      EXPECT_EQ(error.what(), failure.message());
    }
  }
}

TEST_F(Sdk, TextsAreUtf8) {
  for (const char* name :
       {"", "water", "gr\xc3\xbcn \xe6\xb0\xb4", "\xf0\x9f\x92\xa7 drop", "\xef\xbf\xbf \xf4\x8f\xbf\xbf"})
    EXPECT_EQ(named(name).name().value(), name);
  // What is no UTF-8 becomes some.
  for (const char* name : {"\xfc", "\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80"}) {
    const std::string read = named(name).name().value();
    EXPECT_NE(read, "");
    EXPECT_NE(read, name);
    EXPECT_EQ(named(read.c_str()).name().value(), read);
  }
}

TEST_F(Sdk, BatchesAgreeWithGetters) {
  const Compound water = read(19);
  const Property pressure = water["VP"];
  const std::vector<double> temperatures{280, 373.15, 640, 700};
  std::vector<double> values(4), slopes(4), curvatures(4), found(4);
  std::vector<LONG> statuses(4);
  const Buffers buffers{values, slopes, curvatures, statuses};
  EXPECT_TRUE(pressure.evaluate(temperatures, buffers).value());
  EXPECT_THAT(statuses, ElementsAre(1, 1, 1, eStatusAbove | eStatusByPolicy));
  for (std::size_t i = 0; i < 4; ++i) {
    const Point point = pressure.evaluate(temperatures[i]).value();
    EXPECT_EQ(point.value, values[i]);
    EXPECT_EQ(point.firstDerivative, slopes[i]);
    EXPECT_EQ(point.secondDerivative, curvatures[i]);
    EXPECT_EQ(point.status, statuses[i]);
    LONG dependencies = 0;
    double value = 0;
    EXPECT_EQ(water.get()->get_VP(temperatures[i], 101.325, eNoExtrapolation, &dependencies, &value), S_OK);
    EXPECT_EQ(pressure.at(temperatures[i]).value(), value);
  }
  EXPECT_FALSE(pressure.evaluate(temperatures, {.values = values}, eNotSetOutside).value());
  EXPECT_EQ(values[3], kEmptyValue);
  // Without the last, which is outside the range.
  EXPECT_TRUE(pressure.temperaturesOf(std::span(values).first(3), std::span(found).first(3)).value());
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(found[i], temperatures[i], 1e-9);
    EXPECT_EQ(pressure.temperatureOf(values[i]).value(), found[i]);
  }
  EXPECT_EQ(pressure.integral(300, 310).value(), -pressure.integral(310, 300).value());
  EXPECT_NEAR(pressure.integral(300, 310).value(), 10 * pressure.at(305).value(), 1.0);

  const std::span<double> shorter = std::span(values).first(3);
  for (const Buffers& wrong : {Buffers{.values = shorter}, Buffers{values, shorter}, Buffers{values, {}, shorter},
                               Buffers{.statuses = std::span(statuses).first(3)}})
    EXPECT_EQ(pressure.evaluate(temperatures, wrong).code(), E_INVALIDARG);
  EXPECT_EQ(pressure.temperaturesOf(temperatures, shorter).code(), E_INVALIDARG);
}

TEST_F(Sdk, PropertiesAreSetDescribedAndErased) {
  const Compound compound = named("x");
  const Property constant = compound["TC"], curve = compound["VP"], own = compound["my own"];
  EXPECT_EQ(constant.set(500).code(), S_OK);
  EXPECT_EQ(own.set(7).code(), S_OK);
  EXPECT_EQ(curve.set(Correlation{PropCurvePOLY2, {1, 2, 3}, {200, 400, 1, 1000}}).code(), S_OK);
  EXPECT_THAT(compound.keys(), ElementsAre("TC", "VP", "my own"));
  EXPECT_EQ(curve.at(300).value(), 1 + 2 * 300.0 + 3 * 300.0 * 300.0);
  EXPECT_EQ(curve.unit(), "kPa");
  EXPECT_EQ(own.unit(), "");
  const Description all = curve.description().value();
  EXPECT_EQ(all.type, EquationProp);
  EXPECT_THAT(all.coefficients, ElementsAre(1, 2, 3));
  EXPECT_EQ(all.transformations.size(), 8u);
  EXPECT_EQ(all.range.tMax, 400);
  EXPECT_EQ(curve.range().value().pMin, 1);
  EXPECT_EQ(all.policy, eTangentLnYOverInverseT);
  EXPECT_EQ(compound["LDN"].description().value().unit, "kg/m3");

  EXPECT_EQ(constant.source().code(), S_FALSE);
  EXPECT_EQ(constant.setSource({.kind = eKindMeasured, .title = "A paper", .year = 1995, .note = "gr\xc3\xbcn"}).code(),
            S_OK);
  const PropertySource source = constant.source().value();
  EXPECT_EQ(source.kind, eKindMeasured);
  EXPECT_EQ(source.title + source.authors + source.note, "A papergr\xc3\xbcn");
  EXPECT_EQ(source.year, 1995);
  EXPECT_EQ(own.setSource({.quality = eQualityGood}).code(), S_OK);
  EXPECT_EQ(own.source().value().year, std::nullopt);

  const std::string text = compound.xml().value();
  const Compound again = Compound::create().value();
  EXPECT_EQ(again.readXml(text).code(), S_OK);
  EXPECT_EQ(again.xml().value(), text);
  EXPECT_EQ(compound.readXml("<Compound").code(), E_FAIL);
  EXPECT_EQ(compound.xml().value(), text);
  for (const Property& property : {constant, curve, own}) EXPECT_EQ(property.erase().code(), S_OK);
  EXPECT_THAT(compound.keys(), ElementsAre());
  EXPECT_EQ(compound.copy(3).value().name().value(), "x");
}

TEST_F(Sdk, ObjectsOwn) {
  Compound water = read(19);
  const Property boiling = water["NBP"];
  const auto identity = water.as<ICompoundID>();
  const Compound same = water;
  same.setName("renamed").value();
  EXPECT_EQ(water.name().value(), "renamed");
  EXPECT_FALSE(water.as<ICompoundCollection>());
  water = Compound();
  EXPECT_FALSE(water);
  EXPECT_EQ(same.get(), Compound(identity.get()).get());
  EXPECT_GT(boiling.at().value(), 370);
}

TEST_F(Sdk, CollectionsAreRanges) {
  const auto compounds = Collection::create().value();
  for (const int number : {19, 29}) compounds.add(read(number)).value();
  EXPECT_EQ(compounds.get()->put_NumberOfCompounds(3), S_OK);
  static_assert(std::forward_iterator<Collection::iterator>);
  EXPECT_THAT(namesOf(compounds), ElementsAre("Water", "Methanol", "-"));
  EXPECT_EQ(std::ranges::count_if(compounds, [](const Compound& each) { return each["TC"].at().value_or(0) > 600; }),
            1);
  for (const int outside : {-1, 2, 3}) EXPECT_EQ(compounds.at(outside).code(), S_FALSE);

  const LONG positions[] = {1, 0};
  EXPECT_THAT(namesOf(compounds.view(positions).value()), ElementsAre("Methanol", "Water"));
  EXPECT_THAT(compounds.find(database(), "CASN", "64-17-5").value(), ElementsAre(28));
  EXPECT_EQ(compounds.find(database(), "CASN", "none").code(), S_FALSE);

  const double temperatures[] = {300, 320};
  std::vector<double> values(6), chosen(4);
  EXPECT_FALSE(compounds.evaluate("VP", temperatures, {.values = values}).value()) << "one position is empty";
  EXPECT_TRUE(compounds.evaluate("VP", temperatures, {.values = chosen}, positions).value());
  EXPECT_THAT(values, ElementsAre(chosen[2], chosen[3], chosen[0], chosen[1], kEmptyValue, kEmptyValue));
  EXPECT_EQ(values[1], compounds.at(0).value()["VP"].at(320).value());
  EXPECT_EQ(compounds.evaluate("VP", temperatures, {.values = chosen}).code(), E_INVALIDARG);

  const auto again = Collection::create().value();
  again.readXml(compounds.xml().value()).value();
  EXPECT_EQ(namesOf(again), namesOf(compounds));
  again.clear().value();
  EXPECT_EQ(namesOf(again), namesOf(Collection()));
}

TEST_F(Sdk, PhasesKeepACalculation) {
  const auto compounds = Collection::create().value();
  for (const char* name : {"a", "b"}) compounds.add(named(name)).value();
  const auto phases = Phases::create(compounds, 2).value();
  EXPECT_EQ(phases.size(), 0);
  const std::vector<double> feed{0.25, 0.75};
  phases.setFeed(feed).value();
  EXPECT_EQ(phases.locate(xptFeed).value().composition().value(), feed);
  phases.setEquilibriumPhases(1).value();
  const Phase liquid = phases.equilibriumPhase(0).value();
  EXPECT_EQ(liquid.temperature().code(), S_FALSE);
  liquid.setType(xptLiquid).value();
  liquid.setActive(true).value();
  liquid.setTemperature(300).value();
  liquid.setLnFugacityCoefficients(feed).value();
  liquid.set(&IBasicPhase::put_Enthalpy, -5).value();
  for (const Phase& phase : phases) {
    EXPECT_EQ(phase.get(), liquid.get());
    EXPECT_EQ(phase.type().value(), xptLiquid);
    EXPECT_EQ(phase.temperature().value(), 300);
    EXPECT_EQ(phase.get(&IBasicPhase::get_Enthalpy).value(), -5);
    EXPECT_EQ(phase.lnFugacityCoefficients().value(), feed);
  }
  EXPECT_EQ(phases.size(), 1);
  EXPECT_EQ(phases.locate(xptVapour).code(), E_FAIL);
}

TEST_F(Sdk, SessionsLeaveAHostsClassesAndOutliveEachOther) {
  EXPECT_EQ(Session::open(Classes::modules, "/no place").code(), REGDB_E_CLASSNOTREG);
  const std::vector<double> numbers{1, 2};
  {
    auto first = Session::open(Classes::modules);
    const auto second = Session::open();
    EXPECT_EQ(second.code(), S_OK);
    first = Failure();
    EXPECT_EQ(readArray(makeArray(numbers).value().get()).value(), numbers);
  }
  const auto session = Session::open(Classes::installed);
  EXPECT_EQ(session.code(), S_OK);
  const FailingArrays own(1);
  EXPECT_EQ(makeArray(numbers).code(), FailingArrays::kFailure);
  EXPECT_EQ(FailingArrays::live(), 0);
}

}  // namespace
}  // namespace qs::test
