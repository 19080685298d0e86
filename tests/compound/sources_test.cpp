// Where the values of a compound come from: from a database's file, from a host, a loader or an estimator, in copies
// and in XML texts.
#include <array>
#include <string>

#include "persist/database_writer.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

// What a source's members say, in the order of the arguments; the result code alone where it is not S_OK.
template <class Call>
std::string sourceFrom(Call call) {
  tagValueKindEnum kind = eKindDecided;
  tagValueQualityEnum quality = eQualityDoubtful;
  INT year = 1;
  BSTR texts[6] = {};
  const HRESULT result = call(&kind, &quality, &texts[0], &texts[1], &year, &texts[2], &texts[3], &texts[4], &texts[5]);
  std::string all = std::to_string(kind) + ' ' + std::to_string(quality) + ' ' + std::to_string(year);
  for (const BSTR text : texts) {
    const Bstr owned = Bstr::adopt(text);
    all += '|' + (owned ? narrow(owned.view()) : "-");
  }
  if (result == S_OK) return all;
  EXPECT_EQ(all, "0 0 -32767|-|-|-|-|-|-") << "of what is not known nothing is left over";
  return result == S_FALSE ? "not known" : "failed";
}

std::string sourceOf(const ComPtr<IBasicCompound>& compound, WideView name) {
  const auto sources = query<IPropertySource>(compound);
  return sourceFrom([&](auto... out) { return sources->GetPropertySource(Bstr(name).get(), out...); });
}

const char kMeasured[] = "1 1 1995|A paper|N. N.|free|rounded|1 %|at 0.1 MPa";
const char kFitted[] = "2 0 1995|A paper|N. N.|free|rounded|-|-";
const char kDerived[] = "4 0 1995|A paper|N. N.|free|rounded|-|-";
const char kNotKnown[] = "not known";

class Sources : public XmlTest {
 protected:
  void SetUp() override { save(101.0); }

  // Builds a database of one compound, number 7; another boiling point makes another build.
  void save(double boilingPoint) {
    database::CompoundData data;
    data.number = 7;
    data.name = "seven";
    data.constants = {{Key::TC, 500.0}, {Key::NBP, boilingPoint}, {Key::MW, 18.0}};
    data.correlations[Key::VP] = {PropCurvePOLY2, {1, 2, 3}};
    data.correlations[Key::IGH] = {PropCurveVELDB3, {1, 2, 3, 4, 5, 6, 7}};
    database::Annotations annotations;
    annotations.origins["p"] = {"A paper", "N. N.", "free", "rounded", 1995};
    annotations.values = {{7, "TC", {"p", eKindMeasured, eQualityGood, "1 %", "at 0.1 MPa"}},
                          {7, "MW", {"", eKindNotKnown, eQualityUsable, "", "gr\u00fcn \u6c34"}},
                          {7, "VP", {"p", eKindFitted, {}, "", ""}},
                          {7, "IGH", {"p", eKindFitted, {}, "", ""}}};
    saveDatabase(encodeDatabase(std::array{data}, annotations), directory_.path());
  }
  ComPtr<IBasicCompound> filled() {
    auto compound = newCompound();
    EXPECT_EQ(query<ICompoundInitFromVelDB>(compound)->Init(Bstr(directory_.name()).get(), 7), S_OK);
    return compound;
  }
  static HRESULT set(const ComPtr<IBasicCompound>& compound, WideView name, int kind, int quality, WideView title) {
    return query<IPropertySource>(compound)->SetPropertySource(
        Bstr(name).get(), static_cast<tagValueKindEnum>(kind), static_cast<tagValueQualityEnum>(quality),
        Bstr(title).get(), nullptr, -32767, nullptr, nullptr, nullptr, nullptr);
  }
  // All that `filled` is expected to say, with the exception of one property.
  static void expectAll(const ComPtr<IBasicCompound>& compound, const std::string& ofVP = kFitted) {
    EXPECT_EQ(sourceOf(compound, OLESTR("TC")), kMeasured);
    EXPECT_EQ(sourceOf(compound, OLESTR("VP")), ofVP);
    EXPECT_EQ(sourceOf(compound, OLESTR("IGH")), kFitted);
    for (const WideView name : {OLESTR("IGCP"), OLESTR("IGS")}) EXPECT_EQ(sourceOf(compound, name), kDerived);
    for (const WideView name : {OLESTR("NBP"), OLESTR("PC"), OLESTR("Own"), OLESTR("")})
      EXPECT_EQ(sourceOf(compound, name), kNotKnown) << narrow(name);
  }

  TemporaryDirectory directory_;
};

TEST_F(Sources, ComeFromTheDatabaseUntilAHostPutsAValue) {
  const auto compound = filled();
  expectAll(compound);
  query<ICompoundIDPut>(compound)->put_VelcorinID(8);
  expectAll(compound);

  BSTR text = nullptr;
  INT year = 0;
  EXPECT_EQ(query<IPropertySource>(compound)->GetPropertySource(Bstr(OLESTR("TC")).get(), nullptr, nullptr, &text,
                                                                &text, &year, &text, &text, &text, &text),
            E_POINTER);
  for (const auto& [kind, quality] : {std::pair(-1, 0), std::pair(6, 0), std::pair(0, -1), std::pair(0, 4)})
    EXPECT_EQ(set(compound, OLESTR("TC"), kind, quality, OLESTR("x")), E_INVALIDARG);
  EXPECT_EQ(set(compound, OLESTR("PC"), 1, 1, OLESTR("x")), S_FALSE) << "no such property";
  expectAll(compound);

  EXPECT_EQ(set(compound, OLESTR("VP"), eKindDecided, eQualityUsable, OLESTR("me")), S_OK);
  expectAll(compound, "5 2 -32767|me|-|-|-|-|-");
  const auto put = query<ICompoundPropPut>(compound);
  put->SetPropertyLoader(Bstr(OLESTR("VP")).get(), Bstr(OLESTR("loader")).get());
  expectAll(compound, "5 2 -32767|me|-|-|-|-|-");
  query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(Bstr(OLESTR("VP")).get(), COMlnx, COMx, 1, 1, 1, 1, 0,
                                                               0);
  expectAll(compound, kNotKnown);
  put->SetPointProperty(Bstr(OLESTR("TC")).get(), 1, 500.0);
  EXPECT_EQ(sourceOf(compound, OLESTR("TC")), kNotKnown) << "the number is the host's, whatever it is";
  query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(Bstr(OLESTR("IGH")).get(), COMx, COMx, 1, 1, 1, 1, 0, 0);
  EXPECT_EQ(sourceOf(compound, OLESTR("IGH")), kNotKnown);
}

TEST_F(Sources, OfAnotherBuildAreNotKnown) {
  const auto compound = filled();
  const std::string provenance = readFile(directory_.path() / "purecmp1.src");
  save(102.0);
  EXPECT_EQ(sourceOf(compound, OLESTR("TC")), kNotKnown);
  expectAll(filled());
  writeFile(directory_.path() / "purecmp1.src", provenance);
  expectAll(compound);
  EXPECT_EQ(sourceOf(filled(), OLESTR("TC")), kNotKnown);
  std::filesystem::remove(directory_.path() / "purecmp1.src");
  EXPECT_EQ(sourceOf(compound, OLESTR("TC")), kNotKnown);
  EXPECT_EQ(propertyOf(filled(), OLESTR("TC")).value, 500.0);
}

TEST_F(Sources, SurviveCopiesAndTheFormsThatHaveThem) {
  const auto compound = filled();
  const auto copy = newCompound();
  ASSERT_EQ(query<ICompoundCopy>(copy)->CopyToThis(3, compound.get()), S_OK);
  set(copy, OLESTR("VP"), eKindEstimated, eQualityDoubtful, OLESTR("a & \"b\""));
  const auto copyOfCopy = newCompound();
  ASSERT_EQ(query<ICompoundCopy>(copyOfCopy)->CopyToThis(3, copy.get()), S_OK);
  set(copy, OLESTR("VP"), 0, 0, OLESTR("changed later"));
  expectAll(copyOfCopy, "3 3 -32767|a & \"b\"|-|-|-|-|-");
  expectAll(compound);

  const auto collection = newCollection();
  ASSERT_EQ(collection->AddCompound(copyOfCopy.get()), S_OK);
  for (const INT form : {xmlDefaultForm, xmlExactNumbers, xmlEscaped, xmlExactForm}) {
    const WideString without = textOf(compound, form);
    EXPECT_EQ(without.find(OLESTR("PropertySource")), WideView::npos);
    WideString with = textOf(compound, form | xmlProvenance);
    const auto again = read(with);
    expectAll(again);
    EXPECT_EQ(sourceOf(again, OLESTR("MW")), sourceOf(compound, OLESTR("MW"))) << "text outside ASCII";
    EXPECT_EQ(narrow(textOf(again, form | xmlProvenance)), narrow(with));
    // Nothing but whole lines is added.
    while (true) {
      const auto place = with.find(OLESTR("           <PropertySource"));
      if (place == WideView::npos) break;
      with.erase(place, with.find(OLESTR("/> \n"), place) + 4 - place);
    }
    EXPECT_EQ(narrow(with), narrow(without));

    const auto list = newCollection();
    ASSERT_EQ(parse(textOf(collection, form | xmlProvenance), list.get()), S_OK);
    ComPtr<IBasicCompound> first;
    ASSERT_EQ(list->GetBasicCompound(0, first.out()), S_OK);
    expectAll(first, "3 3 -32767|a & \"b\"|-|-|-|-|-");
  }
  std::filesystem::remove(directory_.path() / "purecmp1.src");
  EXPECT_EQ(textOf(compound, xmlProvenance), textOf(compound, xmlDefaultForm));
}

TEST_F(Sources, OfXmlTextsAreReadWithoutTrust) {
  const auto fixed = [](std::string_view inside) {
    return widen("<Compound><FixedProperty NAME=\"TC\" TYPE=\"PointProp\">" + std::string(inside) +
                 "</FixedProperty></Compound>");
  };
  const struct {
    const char *inside, *source;
  } rows[] = {
      {"<PropertySource KIND=\"9\" QUALITY=\"-1\" TITLE=\"t\"/><PropertyContent CONTENT=\"Point(1)\"/>",
       "0 0 -32767|t|-|-|-|-|-"},
      {"<PropertySource/><PropertyContent CONTENT=\"Point(1)\"/>", kNotKnown},
      {"<PropertyContent CONTENT=\"Point(1)\"/><PropertySource KIND=\"1\"/>", kNotKnown},
      {"<PropertySource KIND=\"1\"/><PropertySource KIND=\"2\"/><PropertyContent CONTENT=\"Point(1)\"/>",
       "2 0 -32767|-|-|-|-|-|-"},
  };
  for (const auto& row : rows) {
    const auto compound = newCompound();
    parse(fixed(row.inside), compound.get());
    EXPECT_EQ(propertyOf(compound, OLESTR("TC")).result, S_OK) << row.inside;
    EXPECT_EQ(sourceOf(compound, OLESTR("TC")), row.source) << row.inside;
  }
}

TEST_F(Sources, ComeFromLoadersAndEstimators) {
  writeFile(directory_.path() / "c.json",
            R"({"description": "", "identity_sources": {}, "sources": {"p": {"title": "A paper", "authors": "N. N.",
    "licence": "free", "changes": "rounded", "year": 1995}}, "units": {"TC": "K", "NBP": "K", "IGH": "kJ/kmol"},
    "compounds": [{"number": 7, "name": "seven", "cas": "7732-18-5",
      "constants": {"TC": {"value": 500, "source": "p", "kind": "measured", "quality": "good", "uncertainty": "1 %",
                           "note": "at 0.1 MPa"}, "NBP": {"value": 353.24}},
      "correlations": {"IGH": {"form": "VELDB3", "coefficients": [1, 2, 3, 4, 5, 6, 7], "tmin": 1, "tmax": 2,
                               "source": "p", "kind": "fitted"}},
      "unifac": [{"subgroup": 10, "count": 6}]}]})");
  const auto collection = newCollection();
  ASSERT_EQ(
      query<ILoadCompoundProp>(collection)
          ->SetDefaultLoader(Bstr(OLESTR("json")).get(), Bstr(OLESTR("{2AB3CA21-4AD0-49C3-97E1-846ADD11538D}")).get(),
                             Bstr(directory_.name()).get(), nullptr),
      S_OK);
  ASSERT_EQ(query<IPureEstimatorHandler>(collection)
                ->SetDefaultEstimator(Bstr(OLESTR("Joback")).get(),
                                      Bstr(OLESTR("{071B69C1-B6AF-4B88-A43D-C50C3A86E1FE}")).get(), nullptr, nullptr),
            S_OK);
  ASSERT_EQ(collection->AddCompoundFromLoader(Bstr(OLESTR("Name")).get(), Bstr(OLESTR("seven")).get(), nullptr, 0),
            S_OK);
  ComPtr<IBasicCompound> compound;
  ASSERT_EQ(collection->GetBasicCompound(0, compound.out()), S_OK);
  EXPECT_EQ(sourceOf(compound, OLESTR("TC")), kMeasured);
  EXPECT_EQ(sourceOf(compound, OLESTR("IGH")), kFitted);
  EXPECT_EQ(sourceOf(compound, OLESTR("IGS")), kDerived);
  EXPECT_EQ(sourceOf(compound, OLESTR("NBP")), kNotKnown);
  const auto handler = query<IPureEstimatorHandler>(collection);
  ASSERT_EQ(handler->EstimateProperty(0, Bstr(OLESTR("TC")).get(), nullptr, 0), S_OK);
  EXPECT_NE(sourceOf(compound, OLESTR("TC")).find("3 0 1987|Estimation of pure-component"), std::string::npos);
}

}  // namespace
}  // namespace qs::test
