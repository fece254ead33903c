#include "tests/ztbaseclient/auth/Credentials.h"
#include "tovin/Constants.h"

using namespace credentialstest;
using namespace testsupport;

namespace {

constexpr unsigned active = 0x4000;

TEST(CredentialsRecord, ATextOf256UnitsIsRefusedAndLeavesTheFieldAsItWas) {
  CCredentials c;
  c.SetDomain(L"before");
  // The character outside the basic plane is two units, whether it is one element or two.
  for (const std::wstring& text : {std::wstring(256, L'x'), std::wstring(254, L'x') + L"\xD834\xDD1E",
                                   std::wstring(254, L'x') + L"\U0001D11E"})
    expectMessage(CCredentials::StringTooLong, [&] { c.SetDomain(text.c_str()); });
  EXPECT_STREQ(c.GetDomain(), L"before");
  c.SetDomain(std::wstring(255, L'x').c_str());
  c.SetDomain(L"before");
  c.SetDomain(c.GetDomain() + 3);
  EXPECT_STREQ(c.GetDomain(), L"ore");
  c.SetDomain(nullptr);
  EXPECT_STREQ(c.GetDomain(), L"");
}

TEST(CredentialsRecord, FlagsAreTheirBits) {
  for (unsigned bit = 0; bit < 32; ++bit) {
    CCredentials c;
    c.SetBodyFlags(1u << bit);
    EXPECT_EQ(c.IsUtility(), bit == 3);
    EXPECT_EQ(c.IsDeadlock(), bit >= 4 && bit <= 8) << bit;
    EXPECT_EQ(c.IsAnonymous(), bit == 11);
    EXPECT_EQ(c.IsParallelSubprotocol(), bit == 12);
    EXPECT_EQ(c.IsActiveAdmin(), bit == 14);
    c.SetFormatVersionNumber(1);
    EXPECT_EQ(c.IsAdminUser(), bit == 13);
  }
}

TEST(CredentialsRecord, OldFormatsAskTheFlagsForActingAsAdministrator) {
  const std::tuple<unsigned, bool, unsigned> rows[] = {{0x2000, true, 0x2000 | active},
                                                       {0x2000 | active, false, 0x2000},
                                                       {0x2020, true, 0x2020},
                                                       {0x2020 | active, false, 0x2020 | active},
                                                       {0, true, 0},
                                                       {active, false, active}};
  for (const auto& [flags, on, after] : rows) {
    CCredentials c;
    c.SetFormatVersionNumber(1);
    c.SetBodyFlags(flags);
    c.SetIsActiveAdmin(on);
    EXPECT_EQ(c.GetBodyFlags(), after) << std::hex << flags;
  }
}

// Lite clients are no administrators, but may act as one; the portal's users the other way round.
TEST(CredentialsRecord, FormatTwoAsksTheRolesAndNotTheSameForBothQuestions) {
  tovin::Ptr<CAuthRolesCache> cache(CAuthRolesCache::allocate());
  const wchar_t* const names[] = {tovin::DRV_KQClientAdminRole, tovin::DRV_KQClientLiteRole,
                                  tovin::DRV_AdminPortalUserRole};
  for (unsigned bit = 0; bit < 3; ++bit) cache->SetRole(bit, names[bit]);
  for (unsigned bits = 0; bits < 8; ++bits) {
    const bool admin = bits & 1, lite = bits & 2, portal = bits & 4;
    CAuthRoles roles(cache.get());
    for (unsigned bit = 0; bit < 3; ++bit) {
      if (bits >> bit & 1) roles.AddToRole(names[bit]);
    }
    CCredentials c;
    c.SetRoles(roles);
    c.SetBodyFlags(0x2020);  // what matters before format 2 only
    EXPECT_EQ(c.IsAdminUser(), admin && !lite) << bits;
    EXPECT_FALSE(c.IsLiteClientUser());
    c.SetIsActiveAdmin(true);
    EXPECT_EQ(c.IsActiveAdmin(), admin || portal) << bits;
    c.SetIsActiveAdmin(false);
    EXPECT_FALSE(c.IsActiveAdmin());
  }
}

TEST(CredentialsRecord, RolesAreAskedOnlyWithACache) {
  CCredentials c;
  const wchar_t message[] = L"The authorization role lookup cache has not been initialized";
  expectMessage(message, [&] { c.IsAdminUser(); });
  expectMessage(message, [&] { c.SetIsActiveAdmin(true); });
  tovin::Ptr<CAuthRolesCache> cache(CAuthRolesCache::allocate());
  c.SetRolesCache(cache.get());
  EXPECT_FALSE(c.IsAdminUser());
  c.SetCredentialsString(golden("full").c_str());
  c.DecryptBody();
  cache->SetRole(42, L"last");
  EXPECT_TRUE(c.IsMemberOf(L"LAST"));  // the cache outlives clearing and reading
}

TEST(CredentialsRecord, UtilityCredentialsKeepWhoAndWhereButNotTheClient) {
  CCredentials c(golden("full").c_str());
  c.DecryptBody();
  c.SetAsUtilityCredentials();
  EXPECT_EQ(
      describe(c),
      "8 192.0.2.7 0.0.0.0 -2\nann\ns3cret pass\n\n\n4.0.5 (build 12)\nLAB\nhttp://db.example:9944/xml\n"
      "http://log.example:9944/log\nhttp://loc.example:9944/loc\n43: 0 7 8 42");
  EXPECT_EQ(c.GetRandomNumber() + c.GetEncryptedSectionLength() + c.GetQuickChecksum() + c.GetHeaderFlags(),
            0u);
}

TEST(CredentialsRecord, CopiesTakeTheBufferAlong) {
  CCredentials c(golden("full").c_str());
  const CCredentials copy(c);
  EXPECT_TRUE(copy.VerifyChecksum());
  CCredentials assigned;
  assigned = copy;
  assigned.DecryptBody();
  EXPECT_STREQ(assigned.GetUsername(), L"ann");
  assigned.Clear();
  EXPECT_EQ(describe(assigned), describe(CCredentials()));
}

TEST(CredentialsRecord, ASessionIdTellsItsUser) {
  tovin::WideString name(L"before");
  CCredentials::GetUserNameFromSessionId(golden("format0").c_str(), name);
  EXPECT_EQ(name, L"ann");
  expectMessage(L"Error decoding", [&] { CCredentials::GetUserNameFromSessionId(L"?", name); });
  EXPECT_EQ(name, L"ann");
}

// The text may be one of the record's own, which reading clears.
TEST(CredentialsRecord, ReadsAStringOutOfItself) {
  CCredentials c;
  c.SetDomain(golden("empty").c_str());
  c.SetCredentialsString(c.GetDomain());
  EXPECT_TRUE(c.VerifyChecksum());
  EXPECT_STREQ(c.GetDomain(), L"");
}

}  // namespace
