#include "props/key_table.h"

#include <gtest/gtest.h>

namespace qs {
namespace {

TEST(KeyTable, NumbersKeysByPlace) {
  EXPECT_EQ(kKeys.at(0).name, OLESTR("MW"));
  EXPECT_EQ(kKeys.at(70).name, OLESTR("SRKACEN"));
  EXPECT_EQ(kKeys.at(70).help, OLESTR("SRK Accentric Factor"));
  EXPECT_EQ(kKeys.at(104).name, OLESTR("SUBP"));
}

TEST(KeyTable, FindsEveryKeyByItsFullName) {
  for (int i = 0; i < kKeyCount; ++i) {
    const WideString name(kKeys[static_cast<std::size_t>(i)].name);
    EXPECT_EQ(findKey(name), static_cast<Key>(i)) << i;
    EXPECT_EQ(findKey(name + OLESTR('X')), std::nullopt) << i;
  }
  for (const WideView name : {WideView(), WideView(OLESTR("mw")), WideView(OLESTR("M")), WideView(OLESTR("zzz"))})
    EXPECT_EQ(findKey(name), std::nullopt);
}

}  // namespace
}  // namespace qs
