#include "props/key_table.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <sstream>

#include "tests/support/files.h"

namespace qs {
namespace {

TEST(KeyTable, NumbersKeysByPlaceAndFindsWholeNamesOnly) {
  EXPECT_EQ(kKeys.at(0).name, OLESTR("MW"));
  EXPECT_EQ(kKeys.at(70).name, OLESTR("SRKACEN"));
  EXPECT_EQ(kKeys.at(70).help, OLESTR("SRK Accentric Factor"));
  for (const WideView name :
       {WideView(), WideView(OLESTR("\0"), 1), WideView(OLESTR("mw")), WideView(OLESTR("M")), WideView(OLESTR("MWX")),
        WideView(OLESTR("MW\0"), 3), WideView(OLESTR("MW\0\0"), 4), WideView(OLESTR("SRKACE")), WideView(OLESTR("\1")),
        WideView(OLESTR("\xffff\xffff\xffff\xffff"))})
    EXPECT_EQ(findKey(name), std::nullopt);
  for (const KeyEntry& key : kKeys) {
    EXPECT_EQ(findKey(key.name), static_cast<Key>(&key - kKeys.data()));
    const Key* found = findShortKey(WideString(key.name).c_str());
    EXPECT_EQ(found != nullptr, key.name.size() <= 4);
    if (found) {
      EXPECT_EQ(nameOf(*found), key.name);
    }
  }
  for (const OLECHAR* name : {OLESTR(""), OLESTR("M"), OLESTR("SRKT"), OLESTR("LIQHX")})
    EXPECT_EQ(findShortKey(name), nullptr);
}

// A getter as the type library's source writes it: interface, DISPID, the range's DISPID unless 0, key, help.
std::string getter(std::string_view face, int id, int rangeId, std::string_view key, std::string_view help) {
  std::ostringstream text;
  text << face << ' ' << std::hex << "0x" << id << ", ";
  if (rangeId != 0) text << "0x" << rangeId << ", ";
  text << key << ", \"" << help << '"';
  return text.str();
}

TEST(KeyTable, AgreesWithTheTypeLibraryBothWays) {
  std::map<std::string, std::string> helpOf;
  for (const KeyEntry& key : kKeys) helpOf[narrow(key.name)] = narrow(key.help);
  const std::vector<std::string> expected = {
#define FIXED_KEY(key, help, unit, policy, interface_name, dispid) \
  getter(#interface_name, dispid, dispid + 1, #key, help),
#define FIXED_KEY_ALSO(key, interface_name, dispid) getter(#interface_name, dispid, 0, #key, helpOf.at(#key)),
#include "props/keys.def"
  };
  std::vector<std::string> documented;
  std::ifstream source(test::kSourceFolder / "interfaces/qscontainers.idl");
  std::string face;
  for (std::string line; std::getline(source, line);) {
    if (line.starts_with("  interface ")) face = line.substr(12, line.find(' ', 12) - 12);
    if (!line.starts_with("    VALUE") || !line.ends_with(")")) continue;
    documented.push_back(face + ' ' + line.substr(line.find('(') + 1));
    documented.back().pop_back();
  }
  EXPECT_THAT(documented, testing::UnorderedElementsAreArray(expected));
}

}  // namespace
}  // namespace qs
