#include "props/key_table.h"

#include <gtest/gtest.h>

namespace qs {
namespace {

TEST(KeyTable, NumbersKeysByPlace) {
  const struct {
    std::size_t number;
    WideView name, help;
  } rows[] = {{1, OLESTR("MW"), OLESTR("Molecular Weight")},
              {36, OLESTR("IGG"), OLESTR("Ideal Gas Gibbs Energy")},
              {71, OLESTR("SRKACEN"), OLESTR("SRK Accentric Factor")},
              {86, OLESTR("SolidChlorine"), OLESTR("Solid Chlorine")},
              {105, OLESTR("SUBP"), OLESTR("Sublimation Pressure")}};
  for (const auto& row : rows) {
    const KeyEntry& entry = kKeys.at(row.number - 1);
    EXPECT_EQ(entry.name, row.name);
    EXPECT_EQ(entry.help, row.help);
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

}  // namespace
}  // namespace qs
