// The string itself, held against strings that were made apart from the library.
#include <random>

#include "tests/ztbaseclient/auth/Credentials.h"

using namespace credentialstest;

namespace {

in_addr address(const char* text) {
  in_addr result{};
  EXPECT_TRUE(tovin::platform::fromDotted(text, result));
  return result;
}

// The texts in the order of the body.
using C = CCredentials;
constexpr void (C::*setters[])(const wchar_t*) = {
    &C::SetUsername,          &C::SetPassword,      &C::SetClientDescription,
    &C::SetClientMachineName, &C::SetClientVersion, &C::SetDomain,
    &C::SetXMLDBEndPoint,     &C::SetLogEndPoint,   &C::SetLocatorEndPoint};

void setTexts(CCredentials& c, const wchar_t* const (&texts)[9]) {
  const wchar_t* const* text = texts;
  for (const auto setter : setters) (c.*setter)(*text++);
}

CCredentials fullRecord(int64_t loginTime, const CAuthRoles& roles = {}) {
  CCredentials c;
  c.SetRandomNumber(165);
  c.SetHeaderFlags(0xDEADBEEF);
  c.SetBodyFlags(0x80004809);
  c.SetServerIP(address("192.0.2.7"));
  c.SetClientIP(address("198.51.100.250"));
  c.SetLoginTime(loginTime);
  setTexts(c,
           {L"ann", L"s3cret pass", L"Desktop client", L"ws-17.example", L"4.0.5 (build 12)", L"LAB",
            L"http://db.example:9944/xml", L"http://log.example:9944/log", L"http://loc.example:9944/loc"});
  c.SetRoles(roles);
  return c;
}

CCredentials record(const std::string& name) {
  CCredentials c;
  if (name == "full") return fullRecord(-2, rolesOf(43, {0, 7, 8, 42}));
  if (name == "withoutRoles") return fullRecord(int64_t{1} << 40);
  if (name == "manyRoles") c.SetRoles(rolesOf(70000, {0, 69999}));
  if (name != "nonAscii") return c;
  setTexts(c, {L"Zo\u00EB \u03A9mega", L"\u043F\u0430\u0440\u043E\u043B\u044C",
               L"\u7B14\u8BB0\u672C \xD834\xDD1E", L"m\u00E1quina", L"\u0663.\u0661", L"R\u00E9gion",
               L"http://b\u00FCcher.example/", L"\uD7FF\uFFFF", L"\x80\u07FF\u0800"});
  c.SetRoles(rolesOf(200, {199}));
  return c;
}

TEST(CredentialsString, IsTheOneMadeApartAndReadsBack) {
  for (const char* name : {"empty", "full", "withoutRoles", "nonAscii", "manyRoles"}) {
    SCOPED_TRACE(name);
    CCredentials made = record(name);
    EXPECT_EQ(generate(made), golden(name));
    EXPECT_TRUE(made.VerifyChecksum());

    CCredentials read(golden(name).c_str());
    EXPECT_EQ(describe(read), describe(CCredentials()));  // the body is still enciphered
    EXPECT_EQ(read.GetRandomNumber(), made.GetRandomNumber());
    EXPECT_EQ(read.GetHeaderFlags(), made.GetHeaderFlags());
    EXPECT_EQ(read.GetQuickChecksum(), made.GetQuickChecksum());
    EXPECT_EQ(read.GetEncryptedSectionLength(), made.GetEncryptedSectionLength());
    EXPECT_TRUE(read.VerifyChecksum());
    read.DecryptBody();
    EXPECT_FALSE(read.VerifyChecksum());  // the clear body took the place of what it is of
    EXPECT_EQ(describe(read), describe(made));
    EXPECT_EQ(generate(read), golden(name));
  }
}

TEST(CredentialsString, OlderFormatsHaveAShortTimeAndNoRoles) {
  CCredentials c(golden("format1").c_str());
  EXPECT_TRUE(c.VerifyChecksum());
  c.SetRoles(rolesOf(8, {1}));
  c.DecryptBody();
  EXPECT_EQ(c.GetFormatVersionNumber(), 1);
  CCredentials expected = fullRecord(0xFFFFFFFF, rolesOf(8, {1}));
  expected.SetBodyFlags(0x2008);
  EXPECT_EQ(describe(c), describe(expected));
  EXPECT_TRUE(c.IsAdminUser());

  c.SetCredentialsString(golden("format0").c_str());
  c.DecryptBody();
  EXPECT_EQ(describe(c), "2000 0.0.0.0 0.0.0.0 1\nann\n\n\n\n\n\n\n\n\n0: ");
  EXPECT_EQ(bytesOf(generate(c))[0], 2);
}

// Defined behaviour: the length byte wraps, and a reader takes what it says.
TEST(CredentialsString, ATextOfMoreThan255BytesWrapsItsLengthByte) {
  CCredentials c;
  c.SetUsername(std::wstring(100, L'\u20AC').c_str());
  EXPECT_EQ(generate(c), golden("wrapped"));
  CCredentials read(golden("wrapped").c_str());
  EXPECT_TRUE(read.VerifyChecksum());
  testsupport::expectMessage(L"Decode failed", [&] { read.DecryptBody(); });
  EXPECT_EQ(describe(read), describe(CCredentials()));
}

TEST(CredentialsString, ClearBodyIsEstimatedInUnits) {
  CCredentials c;
  EXPECT_EQ(c.CalcClearBodyLen(), 30u);
  c.SetUsername(L"\u20AC\xD834\xDD1E");
  EXPECT_EQ(c.CalcClearBodyLen(), 33u);
  c.SetRoles(rolesOf(0x10001, {}));
  EXPECT_EQ(CCredentials::GetNumBitsLength(c.GetRoles()), 4u);
  EXPECT_EQ(c.CalcClearBodyLen(), 36u + 0x2001u);
  c.SetFormatVersionNumber(1);
  EXPECT_EQ(c.CalcClearBodyLen(), 32u);
}

TEST(CredentialsString, RandomRecordsReturn) {
  std::mt19937 random(4);
  const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
  const wchar_t letters[] = L"aZ 9~\x7F\u00E9\u07FF\u0800\u20AC\uFFFD";
  CCredentials used;  // its buffer and fields are those of the record before
  for (int round = 0; round < 500; ++round) {
    CCredentials made;
    for (const auto setter : setters) {
      std::wstring text(below(8) ? below(86) : 85, L'\u20AC');  // up to 255 bytes
      for (wchar_t& c : text) c = letters[below(std::size(letters) - 1)];
      (made.*setter)(text.c_str());
    }
    made.SetBodyFlags(static_cast<unsigned>(random()));
    made.SetLoginTime(static_cast<int64_t>(uint64_t{random()} << 32 | random()));
    const unsigned roles = 1 + below(3000);
    made.SetRoles(rolesOf(roles, {below(roles), below(roles), roles - 1}));
    used.SetCredentialsString(generate(made).c_str());
    EXPECT_TRUE(used.VerifyChecksum());
    used.DecryptBody();
    ASSERT_EQ(describe(used), describe(made)) << round;
    ASSERT_EQ(generate(used), generate(made)) << round;
  }
}

TEST(CredentialsChecksum, NoticesEveryChangeOfASingleByte) {
  const std::string bytes = bytesOf(golden("full"));
  for (size_t at = 12; at < bytes.size(); ++at) {
    for (int change = 1; change < 256; ++change) {
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(damaged[at] + change);
      ASSERT_FALSE(CCredentials(textOf(damaged).c_str()).VerifyChecksum()) << at << " by " << change;
    }
  }
}

TEST(CredentialsChecksum, IsASumAndSoMissesChangesThatCancelOut) {
  std::string bytes = bytesOf(golden("full"));
  std::swap(bytes[12], bytes[13]);
  ASSERT_NE(bytes, bytesOf(golden("full")));
  EXPECT_TRUE(CCredentials(textOf(bytes).c_str()).VerifyChecksum());

  const std::vector<unsigned char> many(1 << 25, 0xFF);
  EXPECT_EQ(CCredentials::CalcChecksum(many.data(), 0), 32u);
  EXPECT_EQ(CCredentials::CalcChecksum(many.data(), 1), 287u);
  EXPECT_EQ(CCredentials::CalcChecksum(many.data(), many.size()), 0xFE000020u);  // wrapped
}

}  // namespace
