#include "tests/ztbaseclient/auth/Credentials.h"

using credentialstest::bitsOf;
using namespace testsupport;

namespace {

constexpr wchar_t unknown[] =
    L"Role nobody not found in Corvanta configuration.  Please have your administrator check that all "
    L"packages are installed correctly.";

struct Roles : testing::Test {
  Roles() {
    cache->SetRole(40, L"forty");
    cache->SetRole(2, L"Two");
    cache->SetRole(0, L"zero");
    roles.SetRolesCache(cache.get());
  }
  tovin::Ptr<CAuthRolesCache> cache{CAuthRolesCache::allocate()};
  CAuthRoles roles;
};

TEST_F(Roles, NamesFoldAsciiLettersOnly) {
  cache->SetRole(5, L"R\u00C9gie");
  EXPECT_EQ(cache->GetBit(L"FORTY"), 40u);
  EXPECT_EQ(cache->GetBit(L"r\u00C9GIE"), 5u);
  EXPECT_EQ(cache->GetBit(L"r\u00E9gie"), 0xFFFFFFFFu);
  EXPECT_EQ(cache->GetBit(nullptr), 0xFFFFFFFFu);
  EXPECT_FALSE(cache->isRoleDefined(L"nobody"));
  EXPECT_STREQ(cache->GetRole(2), L"Two");
  EXPECT_EQ(cache->GetRole(3), nullptr);
}

TEST_F(Roles, ABitNamedAnewIsStillFoundByItsNameBefore) {
  cache->SetRole(2, L"deux");
  EXPECT_EQ(cache->getSize(), 3u);
  EXPECT_STREQ(cache->GetRole(2), L"deux");
  EXPECT_EQ(cache->GetBit(L"two"), 2u);
  cache->SetRole(7, cache->GetRole(2));
  EXPECT_EQ(cache->GetBit(L"deux"), 7u);
}

TEST_F(Roles, NewBitValuesForgetTheOld) {
  CAuthRolesCache::RoleMap map, out;
  for (unsigned bit = 0; bit < 100; ++bit) map.put(bit, tovin::WideString(L"r" + std::to_wstring(bit)));
  cache->SetCreationTime(-9);
  cache->SetRoleBitValues(map);
  EXPECT_FALSE(cache->isRoleDefined(L"zero"));
  const CAuthRolesCache copy(*cache);
  cache->Clear();
  EXPECT_EQ(cache->getSize(), 0u);
  EXPECT_EQ(cache->GetBit(L"r1"), 0xFFFFFFFFu);
  for (unsigned bit = 0; bit < 100; ++bit) EXPECT_EQ(copy.GetBit((L"R" + std::to_wstring(bit)).c_str()), bit);
  EXPECT_EQ(copy.GetCreationTime(), -9);
  copy.GetRoleBitValues(out);
  EXPECT_EQ(out.getSize(), 100u);
}

TEST_F(Roles, AddingGrowsTheBitsAndRemovingDoesNotShrinkThem) {
  roles.AddToRole(L"Forty");
  EXPECT_EQ(bitsOf(roles), "41: 40");
  roles.AddToRole(L"zero");
  roles.RemoveFromRole(L"forty");
  EXPECT_EQ(bitsOf(roles), "41: 0");
  expectMessage(unknown, [&] { roles.AddToRole(L"nobody"); });
  EXPECT_EQ(bitsOf(roles), "41: 0");
}

TEST_F(Roles, RemovingAnUnknownNameWarnsAndOneBeyondTheEndDoesNot) {
  roles.AddToRole(L"two");
  EXPECT_EQ(warningsOf([&] { roles.RemoveFromRole(L"forty"); }), L"");
  EXPECT_EQ(warningsOf([&] { roles.RemoveFromRole(L"nobody"); }), unknown);
  EXPECT_EQ(bitsOf(roles), "3: 2");
}

TEST_F(Roles, SettingStopsAtAnUnknownName) {
  roles.SetRoles({L"forty", L"zero"});
  EXPECT_EQ(bitsOf(roles), "41: 0 40");
  CAuthRoles::NameList names{L"stale"};
  roles.GetRoles(names);
  EXPECT_EQ(names.items(), (std::vector<tovin::WideString>{L"zero", L"forty"})) << "in the order of bits";
  expectMessage(unknown, [&] { roles.SetRoles({L"TWO", L"nobody", L"zero"}); });
  EXPECT_EQ(bitsOf(roles), "3: 2");
}

TEST_F(Roles, ABitAtOrBeyondTheEndIsNoMembership) {
  cache->SetRole(3, L"three");
  roles.AddToRole(L"two");
  EXPECT_TRUE(roles.IsMemberOf(L"tWo"));
  for (const wchar_t* name : {L"three", L"forty", L"zero", L"nobody"}) EXPECT_FALSE(roles.IsMemberOf(name));
}

TEST_F(Roles, EveryNameNeedsACache) {
  roles.SetRolesCache(nullptr);
  CAuthRoles::NameList names;
  const wchar_t message[] = L"The authorization role lookup cache has not been initialized";
  expectMessage(message, [&] { roles.SetRoles(names); });
  expectMessage(message, [&] { roles.AddToRole(L"two"); });
  expectMessage(message, [&] { roles.RemoveFromRole(L"two"); });
  expectMessage(message, [&] { roles.IsMemberOf(L"two"); });
  expectMessage(message, [&] { roles.GetRoles(names); });
}

TEST_F(Roles, ShareTheirCacheByCount) {
  roles.AddToRole(L"two");
  roles.SetRolesCache(cache.get());
  EXPECT_EQ(cache->getRefCount(), 2);
  CAuthRoles other(CAuthRolesCache::allocate());  // the only holder of its cache
  other.AssignRoles(roles);
  EXPECT_EQ(cache->getRefCount(), 3);
  EXPECT_TRUE(other.IsMemberOf(L"two"));
  other.AssignRoles(other);
  other.SetRolesCache(nullptr);
  EXPECT_EQ(bitsOf(other), "3: 2");
  roles.Clear();
  EXPECT_FALSE(roles.IsMemberOf(L"two"));
}

}  // namespace
