#include "props/key_table.h"

#include <gmock/gmock.h>

#include <set>

namespace qs {
namespace {

TEST(KeyTable, NumbersKeysByPlace) {
  const struct {
    Key key;
    int number;
    WideView name;
    WideView help;
  } rows[] = {
      {Key::MW, 1, OLESTR("MW"), OLESTR("Molecular Weight")},
      {Key::VAPS, 35, OLESTR("VAPS"), OLESTR("Vapour Entropy")},
      {Key::IGG, 36, OLESTR("IGG"), OLESTR("Ideal Gas Gibbs Energy")},
      {Key::PRTC, 43, OLESTR("PRTC"), OLESTR("Peng-Robinson Critical Temperature")},
      {Key::CavettParameter, 51, OLESTR("CavettParameter"), OLESTR("Cavett Parameter")},
      {Key::SRKACEN, 71, OLESTR("SRKACEN"), OLESTR("SRK Accentric Factor")},
      {Key::UNIQUACQ, 77, OLESTR("UNIQUACQ"), OLESTR("UNIQUAC Area Parameter q")},
      {Key::SolidChlorine, 86, OLESTR("SolidChlorine"), OLESTR("Solid Chlorine")},
      {Key::SUBP, 105, OLESTR("SUBP"), OLESTR("Sublimation Pressure")},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(static_cast<int>(row.key) + 1, row.number);
    const KeyEntry& entry = kKeys.at(static_cast<std::size_t>(row.number - 1));
    EXPECT_EQ(entry.name, row.name) << row.number;
    EXPECT_EQ(entry.help, row.help) << row.number;
  }
}

TEST(KeyTable, FindsEveryKeyByItsFullName) {
  for (int i = 0; i < kKeyCount; ++i) {
    const WideString name(kKeys[static_cast<std::size_t>(i)].name);
    EXPECT_EQ(findKey(name), static_cast<Key>(i)) << i;
    EXPECT_EQ(findKey(name + OLESTR('X')), std::nullopt) << i;
  }
  for (const WideView name : {WideView(), WideView(OLESTR("mw")), WideView(OLESTR("M")), WideView(OLESTR("Void")),
                              WideView(OLESTR("zzz")), WideView(OLESTR(" MW")), WideView(OLESTR("MW\0"), 3)}) {
    EXPECT_EQ(findKey(name), std::nullopt);
  }
}

// Upper case sorts before lower case, and a name before its extensions.
TEST(KeyTable, ListsNamesByCodeUnit) {
  EXPECT_EQ(kKeysByName.front(), Key::ACEN);
  EXPECT_EQ(kKeysByName[1], Key::AIT);
  EXPECT_EQ(kKeysByName[2], Key::AltPC);
  EXPECT_EQ(kKeysByName.back(), Key::ZC);
  EXPECT_EQ(std::set<Key>(kKeysByName.begin(), kKeysByName.end()).size(), 105u);
}

}  // namespace
}  // namespace qs
