// The string itself, held against strings that were made apart from the library.
#include <random>

#include "tests/ztbaseclient/auth/Credentials.h"

using namespace credentialstest;

namespace {

CAuthRoles rolesOf(unsigned count, std::initializer_list<unsigned> on) {
  tovin::BitsetValue bits(count);
  for (unsigned bit : on) bits.setOn(bit);
  CAuthRoles roles;
  roles.SetRoleBits(bits);
  return roles;
}

in_addr address(const char* text) {
  in_addr result{};
  EXPECT_TRUE(tovin::platform::fromDotted(text, result));
  return result;
}

void setTexts(CCredentials& c, const wchar_t* const (&texts)[9]) {
  c.SetUsername(texts[0]);
  c.SetPassword(texts[1]);
  c.SetClientDescription(texts[2]);
  c.SetClientMachineName(texts[3]);
  c.SetClientVersion(texts[4]);
  c.SetDomain(texts[5]);
  c.SetXMLDBEndPoint(texts[6]);
  c.SetLogEndPoint(texts[7]);
  c.SetLocatorEndPoint(texts[8]);
}

CCredentials fullRecord(int64_t loginTime) {
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
  return c;
}

CCredentials record(const std::string& name) {
  CCredentials c;
  if (name == "full") {
    c = fullRecord(-2);
    c.SetRoles(rolesOf(43, {0, 7, 8, 42}));
  } else if (name == "withoutRoles") {
    c = fullRecord(int64_t{1} << 40);
  } else if (name == "nonAscii") {
    setTexts(c, {L"Zo\u00EB \u03A9mega", L"\u043F\u0430\u0440\u043E\u043B\u044C",
                 L"\u7B14\u8BB0\u672C \xD834\xDD1E", L"m\u00E1quina", L"\u0663.\u0661", L"R\u00E9gion",
                 L"http://b\u00FCcher.example/", L"\uD7FF\uFFFF", L"\x80\u07FF\u0800"});
    c.SetRoles(rolesOf(200, {199}));
  } else if (name == "manyRoles") {
    c.SetRoles(rolesOf(70000, {0, 69999}));
  }
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
  CCredentials expected = fullRecord(0xFFFFFFFF);
  expected.SetBodyFlags(0x2008);
  expected.SetRoles(rolesOf(8, {1}));
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

TEST(CredentialsString, TextsOf255UnitsReturn) {
  CCredentials c;
  c.SetUsername(std::wstring(255, L'u').c_str());
  c.SetLocatorEndPoint(std::wstring(255, L'l').c_str());
  CCredentials read(generate(c).c_str());
  read.DecryptBody();
  EXPECT_EQ(describe(read), describe(c));
}

TEST(CredentialsString, ClearBodyIsEstimatedInUnits) {
  CCredentials c;
  EXPECT_EQ(c.CalcClearBodyLen(), 30u);
  c.SetUsername(L"\u20AC\xD834\xDD1E");
  EXPECT_EQ(c.CalcClearBodyLen(), 33u);
  const struct {
    unsigned bits, length;
  } rows[] = {{0, 1},     {1, 1},       {127, 1},      {128, 2},      {2047, 2},      {2048, 3},
              {65535, 3}, {0x10000, 4}, {0x1FFFFF, 4}, {0x200000, 5}, {0x3FFFFFF, 5}, {0x4000000, 6}};
  for (const auto& row : rows) {
    c.SetRoles(rolesOf(row.bits, {}));
    EXPECT_EQ(CCredentials::GetNumBitsLength(c.GetRoles()), row.length) << row.bits;
    EXPECT_EQ(c.CalcClearBodyLen(), 32 + row.length + (row.bits + 7) / 8) << row.bits;
  }
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
    std::wstring texts[9];
    for (std::wstring& text : texts) {
      const unsigned length = below(86);  // up to 255 bytes
      for (unsigned i = 0; i < length; ++i) text += letters[below(std::size(letters) - 1)];
    }
    setTexts(made, {texts[0].c_str(), texts[1].c_str(), texts[2].c_str(), texts[3].c_str(), texts[4].c_str(),
                    texts[5].c_str(), texts[6].c_str(), texts[7].c_str(), texts[8].c_str()});
    made.SetBodyFlags(static_cast<unsigned>(random()));
    made.SetLoginTime(static_cast<int64_t>(uint64_t{random()} << 32 | random()));
    tovin::BitsetValue bits(below(3000));
    for (unsigned i = 0; i < bits.getNumBits(); i += 1 + below(40)) bits.setOn(i);
    CAuthRoles roles;
    roles.SetRoleBits(bits);
    made.SetRoles(roles);
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

// The clear body takes the place of what the checksum is of.
TEST(CredentialsChecksum, IsOfTheEncipheredBodyOnly) {
  CCredentials c(golden("full").c_str());
  c.DecryptBody();
  EXPECT_FALSE(c.VerifyChecksum());
  generate(c);
  EXPECT_TRUE(c.VerifyChecksum());
}

}  // namespace
