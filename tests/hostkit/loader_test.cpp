// The example loader and folders that it cannot read.
#include "tests/support/compounds.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace qs::test {
namespace {

using HostkitLoaderTest = CompoundTest;

TEST_F(HostkitLoaderTest, KeepsItsCompoundsWhenAFileCannotBeRead) {
  const auto loader = create<ILoad>(__uuidof(::JsonLoader));
  ASSERT_EQ(loader->Set_Path(Bstr(widen((kSourceFolder / "tests/hostkit/compounds").string())).get()), S_OK);
  const TemporaryDirectory broken;
  for (const std::string& content : {std::string("{"), std::string(1'000'000, '[')}) {
    writeFile(broken.path() / "c.json", content);
    EXPECT_EQ(loader->Set_Path(Bstr(broken.name()).get()), E_FAIL);
  }
  Bstr name;
  EXPECT_EQ(loader->Get_AllCompounds(Bstr(OLESTR("Name")).get(), 1, name.out()), S_OK);
  EXPECT_EQ(name.view(), OLESTR("Ethanol"));
}

}  // namespace
}  // namespace qs::test
