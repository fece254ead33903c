// The string itself, held against strings that were made apart from the library.
#include <fstream>
#include <random>
#include <sstream>

#include "tests/ztbaseclient/auth/Credentials.h"

using namespace credentialstest;

namespace {

// The texts in the order of the body.
using C = CCredentials;
constexpr void (C::*setters[])(const wchar_t*) = {
    &C::SetUsername,          &C::SetPassword,      &C::SetClientDescription,
    &C::SetClientMachineName, &C::SetClientVersion, &C::SetDomain,
    &C::SetXMLDBEndPoint,     &C::SetLogEndPoint,   &C::SetLocatorEndPoint};

// What tests/data/credentials/fields.txt says, by the name of the string.
std::map<std::string, std::string> readFields() {
  std::map<std::string, std::string> fields;
  std::ifstream in(ZTB_TEST_DATA "/credentials/fields.txt");
  for (std::string line, name; std::getline(in, line);) {
    if (line.starts_with('['))
      name = line.substr(1, line.size() - 2);
    else if (!name.empty())
      fields[name] += line + '\n';
  }
  return fields;
}

std::string describeAll(const CCredentials& c) {
  std::ostringstream out;
  out << int{c.GetRandomNumber()} << std::hex << std::uppercase << ' ' << c.GetHeaderFlags() << std::dec
      << ' ' << c.GetEncryptedSectionLength() << ' ' << std::hex << c.GetQuickChecksum() << '\n';
  return out.str() + describe(c) + '\n';
}

TEST(CredentialsString, HoldsWhatWasWrittenApartAndIsWrittenAgain) {
  const auto all = readFields();
  EXPECT_EQ(all.size(), 7u);
  for (const auto& [name, fields] : all) {
    SCOPED_TRACE(name);
    CCredentials c(golden(name).c_str());
    EXPECT_EQ(describe(c), describe(CCredentials()));  // the body is still enciphered
    EXPECT_TRUE(c.VerifyChecksum());
    c.DecryptBody();
    EXPECT_FALSE(c.VerifyChecksum());  // the clear body took the place of what it is of
    EXPECT_EQ(describeAll(c), fields);
    c.DecryptBody();
    EXPECT_EQ(describeAll(c), fields) << "nothing is left to decipher";
    CCredentials other(c);
    other = CCredentials(golden(name).c_str());
    other.DecryptBody();
    EXPECT_EQ(describeAll(other), fields) << "assigned, it is still to be read";
    other = c;
    other.DecryptBody();
    EXPECT_EQ(describeAll(other), fields) << "assigned, it was read";
    if (name.starts_with("format"))
      EXPECT_EQ(bytesOf(generate(c))[0], 2) << "an older one is written in the newer format";
    else
      EXPECT_EQ(generate(c), golden(name));
  }
}

TEST(CredentialsString, OfAnOlderFormatLeavesTheRolesAlone) {
  CCredentials c(golden("format1").c_str());
  c.SetRoles(rolesOf(8, {1}));
  c.DecryptBody();
  EXPECT_EQ(bitsOf(c.GetRoles()), "8: 1");
  EXPECT_TRUE(c.IsAdminUser());
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
