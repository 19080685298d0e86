// Late binding through the type library, as scripts use it.
#include "automation/dispatch.h"

#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tests/support/compounds.h"
#include "tests/support/files.h"
#include "tests/support/late_call.h"

namespace qs::test {
namespace {

using LateBinding = CompoundTest;

// A member of a dual interface of the compound, as compiled hosts know it.
struct Member {
  std::string face, kind, name;
  DISPID id;
};
struct Members {
  std::vector<Member> all;
  std::map<std::string, IID> interfaces;
};
Members membersOfTheCompound() {
  Members members;
  std::ifstream file(kSourceFolder / "tests/interfaces.txt");
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string object;
    Member member;
    words >> object >> member.face >> member.kind;
    if (object != "COQSCompound" || member.face.ends_with("Arrays")) continue;
    if (words >> member.name >> member.id) members.all.push_back(member);
    if (member.kind.starts_with('{')) IIDFromString(widen(member.kind).c_str(), &members.interfaces[member.face]);
  }
  EXPECT_EQ(members.interfaces.size(), 32u);
  return members;
}

TEST_F(LateBinding, TheDefaultInterfaceKnowsTheNamesOfAll) {
  const auto compound = newCompound();
  const Members members = membersOfTheCompound();
  std::map<std::string, DISPID> own;
  for (const Member& member : members.all)
    if (member.face == "IBasicCompound") own[member.name] = member.id;
  std::map<DISPID, std::string> nameOfId;
  std::set<std::pair<std::string, std::string>> seen;
  std::set<std::string> shared;
  for (const Member& member : members.all) {
    SCOPED_TRACE(member.face + "::" + member.name);
    if (!seen.emplace(member.kind, member.name).second) shared.insert(member.name);
    ComPtr<IDispatch> early;
    ASSERT_EQ(compound->QueryInterface(members.interfaces.at(member.face), early.outAny()), S_OK);
    DISPID id = 0, ownId = 0;
    ASSERT_EQ(idOf(compound.get(), widen(member.name), &id), S_OK);
    EXPECT_TRUE(own.contains(member.name) ? id == own.at(member.name) : id >= 0x40000000);
    EXPECT_EQ(nameOfId.try_emplace(id, member.name).first->second, member.name) << "no identifier has two names";
    ASSERT_EQ(idOf(early.get(), widen(member.name), &ownId), S_OK);
    EXPECT_EQ(ownId, member.face == "IBasicCompound" ? id : member.id) << "through the interface itself";
  }
  DISPID id = 0;
  EXPECT_EQ(idOf(compound.get(), L"NoSuchMember", &id), DISP_E_UNKNOWNNAME);
  // Both interfaces return the same for all of them but VelcorinID and Family, whose result codes differ.
  EXPECT_EQ(shared, (std::set<std::string>{"IGH", "IGS", "IGCP", "IGHF25", "IGSF25", "CavettParameter", "COSTALDACEN",
                                           "COSTALDVCHAR", "SRKACEN", "SubFamily", "VelcorinID", "Family"}));
}

TEST_F(LateBinding, RefusesWhatDoesNotExist) {
  const auto compound = newCompound();
  DISPPARAMS none{};
  LateValue result;
  for (const DISPID id : {DISPID{0x1000}, DISPID{0x40000000 - 1}, DISPID{0x7fffffff}, DISPID{-1}})
    EXPECT_EQ(compound->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &result.variant, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND)
        << id;
  EXPECT_TRUE(FAILED(callByName(compound.get(), L"ChemicalFormula", DISPATCH_METHOD, result)))
      << "a property is no method";
  EXPECT_TRUE(FAILED(compound->Invoke(1, IID_NULL, 0, DISPATCH_PROPERTYGET, nullptr, nullptr, nullptr, nullptr)));
  ComPtr<ITypeInfo> info;
  EXPECT_EQ(compound->GetTypeInfo(1, 0, info.out()), DISP_E_BADINDEX);
  EXPECT_FALSE(info);
  EXPECT_TRUE(FAILED(compound->GetIDsOfNames(IID_NULL, nullptr, 1, 0, nullptr)));
}

}  // namespace
}  // namespace qs::test
