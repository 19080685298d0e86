// The example loader: what it tells about a folder of JSON compounds, and compounds that a collection fills from it.
#include <cmath>

#include "tests/support/collections.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace qs::test {
namespace {

constexpr const char* kHead =
    R"({"description": "two", "sources": {"s": {"title": "t", "authors": "a", "licence": "l"}},
 "identity_sources": {"number": "s", "name": "s", "formula": "s", "cas": "s", "family": "s", "non_condensable": "s",
                      "synonyms": "s", "unifac": "s", "ppds_id": "s"},
 "units": {"TC": "K", "VP": "kPa", "IGH": "kJ/kmol"}, "compounds": [)";
constexpr const char* kEthanol =
    R"({"number": 28, "name": "Ethanol", "cas": "64-17-5", "family": "Alcohol", "non_condensable": false,
 "ppds_id": 120, "synonyms": ["Spirit", "Alcohol"],
 "unifac": [{"subgroup": 1, "count": 1}, {"subgroup": 2, "count": 1}, {"subgroup": 15, "count": 1}],
 "constants": {"TC": {"value": 513.92, "unit": "K", "source": "s"}},
 "correlations": {
  "VP": {"form": "POLY2", "coefficients": [1, 2, 3], "tmin": 200, "tmax": 500, "unit": "kPa", "source": "s",
         "xshape": "COMxr"},
  "IGH": {"form": "VELDB3", "coefficients": [1, 30, 0.01, 0, 0, 0, 2], "tmin": 100, "tmax": 1000, "unit": "kJ/kmol",
          "source": "s"}}})";

class HostkitLoaderTest : public CollectionTest {
 protected:
  void SetUp() override {
    CollectionTest::SetUp();
    loader_ = create<ILoad>(__uuidof(::JsonLoader));
    writeFile(folder_.path() / "b.json", std::string(kHead) + kEthanol + "]}");
    writeFile(folder_.path() / "a.json",
              std::string(kHead) + R"({"number": 1, "name": "Methane", "formula": "CH4"}]})");
    writeFile(folder_.path() / "notes.txt", "no compounds");
    ASSERT_EQ(loader_->Set_Path(Bstr(folder_.name()).get()), S_OK);
  }
  // "name:kind" of all properties of a compound.
  std::string propertiesOf(const OLECHAR* key, const OLECHAR* id) {
    std::string list;
    for (INT i = 0;; ++i) {
      BSTR name = nullptr;
      tagPropTypeEnum type{}, asked{};
      if (loader_->Get_Prop(Bstr(key).get(), Bstr(id).get(), i, &name, &type) != S_OK) return list;
      EXPECT_EQ(loader_->Get_PropType(Bstr(key).get(), Bstr(id).get(), name, &asked), S_OK);
      EXPECT_EQ(asked, type);
      list += narrow(taken(name)) + ":" + std::to_string(type) + " ";
    }
  }

  TemporaryDirectory folder_;
  ComPtr<ILoad> loader_;
};

TEST_F(HostkitLoaderTest, ListsCompoundsAndTheirProperties) {
  std::string names;
  for (INT i = 0;; ++i) {
    BSTR id = nullptr;
    if (loader_->Get_AllCompounds(Bstr(OLESTR("Name")).get(), i, &id) != S_OK) break;
    names += narrow(taken(id)) + " ";
  }
  EXPECT_EQ(names, "Methane Ethanol ") << "file by file";
  EXPECT_EQ(propertiesOf(OLESTR("Name"), OLESTR("Methane")), "Name:4 ChemicalFormula:4 VelcorinID:5 ");
  EXPECT_EQ(propertiesOf(OLESTR("CASN"), OLESTR("64-17-5")),
            "Name:4 CASN:4 VelcorinID:5 PPDSID:5 Family:5 NonCondensable:5 VELUNIFACSubGr:7 VELUNIFACNoGr:7 TC:1 VP:2 "
            "IGH:2 IGS:2 IGCP:2 ");
  EXPECT_EQ(propertiesOf(OLESTR("VelcorinID"), OLESTR("28")), propertiesOf(OLESTR("CASN"), OLESTR("64-17-5")));
  for (const auto& [key, id] : {std::pair(OLESTR("CASN"), OLESTR("64-17")), std::pair(OLESTR("TC"), OLESTR("513.92")),
                                std::pair(OLESTR("CASN"), OLESTR(""))})
    EXPECT_EQ(propertiesOf(key, id), "");
}

TEST_F(HostkitLoaderTest, KeepsItsCompoundsWhenAFolderCannotBeRead) {
  EXPECT_EQ(loader_->Set_Path(Bstr(folder_.name() + OLESTR("-not")).get()), E_FAIL);
  EXPECT_EQ(loader_->Set_Path(nullptr), E_FAIL);
  const TemporaryDirectory broken;
  for (const std::string& content : {std::string("{"), std::string(1'000'000, '[')}) {
    writeFile(broken.path() / "c.json", content);
    EXPECT_EQ(loader_->Set_Path(Bstr(broken.name()).get()), E_FAIL);
  }
  EXPECT_NE(propertiesOf(OLESTR("Name"), OLESTR("Methane")), "");
}

TEST_F(HostkitLoaderTest, FillsACollection) {
  const auto collection = newCollection();
  const auto loaders = query<ILoadCompoundProp>(collection);
  const Bstr name(OLESTR("folder")), cas(OLESTR("CASN")), id(OLESTR("64-17-5"));
  // Created by the collection itself, from its class.
  ASSERT_EQ(loaders->SetDefaultLoader(name.get(), Bstr(OLESTR("{2AB3CA21-4AD0-49C3-97E1-846ADD11538D}")).get(),
                                      Bstr(folder_.name()).get(), nullptr),
            S_OK);
  ASSERT_EQ(collection->AddCompoundFromLoader(cas.get(), id.get(), nullptr, 0), S_OK);
  ComPtr<IBasicCompound> compound;
  ASSERT_EQ(collection->GetBasicCompound(0, compound.out()), S_OK);
  const auto at = [&](const OLECHAR* key, double T) { return propertyOf(compound, key, T).value; };
  EXPECT_EQ(at(OLESTR("TC"), 300.0), 513.92);
  EXPECT_DOUBLE_EQ(at(OLESTR("VP"), 300.0), 1.0 + 2.0 * 300.0 + 3.0 * 300.0 * 300.0);
  // H = 1 + 30 T + 0.01 T^2: its derivative, and the integral of that over ln T with the constant 2.
  EXPECT_DOUBLE_EQ(at(OLESTR("IGH"), 400.0), 1.0 + 30.0 * 400.0 + 0.01 * 160000.0);
  EXPECT_DOUBLE_EQ(at(OLESTR("IGCP"), 400.0), 30.0 + 0.02 * 400.0);
  EXPECT_DOUBLE_EQ(at(OLESTR("IGS"), 400.0), 30.0 * std::log(400.0) + 0.02 * 400.0 + 2.0);
  EXPECT_EQ(identityOf(compound),
            "Ethanol (null) (null) 64-17-5 ; 28 -32767 -32767 -32767 120 -32767; 4 0; Spirit Alcohol; 1 2 15; 1 1 1");
}

}  // namespace
}  // namespace qs::test
