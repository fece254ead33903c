// What nobody wrote: each is one of the record's own errors, and no field changes.
#include <algorithm>

#include "tests/ztbaseclient/auth/Credentials.h"

using namespace credentialstest;
using namespace testsupport;

namespace {

const std::string empty = describe(CCredentials());

// The header is read, the body is refused with this message, and no field of it is filled.
void expectUnreadable(const std::wstring& text, const std::wstring& message) {
  CCredentials c(text.c_str());
  const unsigned char version = c.GetFormatVersionNumber();
  const short length = c.GetEncryptedSectionLength();
  expectMessage(message, [&] { c.DecryptBody(); });
  EXPECT_EQ(describe(c), empty);
  EXPECT_EQ(c.GetFormatVersionNumber(), version);
  EXPECT_EQ(c.GetEncryptedSectionLength(), length);
}

TEST(CredentialsDamage, NoTextLeavesTheRecordAsItWas) {
  CCredentials c(golden("full").c_str());
  c.DecryptBody();
  const std::string before = describe(c);
  for (const wchar_t* text : {static_cast<const wchar_t*>(nullptr), L""}) {
    expectMessage(L"Empty Credentials", [&] { c.SetCredentialsString(text); });
    expectMessage(L"Empty Credentials", [&] { CCredentials made(text); });
  }
  EXPECT_EQ(describe(c), before);
  EXPECT_EQ(c.GetRandomNumber(), 165);
}

TEST(CredentialsDamage, WhatIsNoBase64OrNoHeaderClearsTheRecord) {
  const std::wstring good = golden("full");
  for (const std::wstring& text :
       {good + L" ", L" " + good, good.substr(1), good + L"=", good + L"====",
        good.substr(0, 8) + L"\n" + good, good.substr(0, 7) + L"\u00E9" + good.substr(8),
        good.substr(0, 7) + L"-" + good.substr(8), std::wstring(L"="), std::wstring(L"AgAA"),
        textOf(std::string(11, '\2'))}) {
    CCredentials c(good.c_str());
    c.DecryptBody();
    expectMessage(L"Error decoding", [&] { c.SetCredentialsString(text.c_str()); });
    EXPECT_EQ(describe(c), empty);
    EXPECT_EQ(c.GetFormatVersionNumber(), 2);
    EXPECT_EQ(c.GetRandomNumber() + c.GetEncryptedSectionLength() + c.GetQuickChecksum() + c.GetHeaderFlags(),
              0u);
    EXPECT_FALSE(c.VerifyChecksum());
    expectMessage(L"Decode failed", [&] { c.DecryptBody(); });
  }
}

TEST(CredentialsDamage, ASectionThatTheStringDoesNotHoldIsRefused) {
  const std::string good = bytesOf(golden("empty"));
  const std::pair<int, const wchar_t*> rows[] = {
      {0, L"Decode failed"},      {1, L"Decrypt failed"},      {39, L"Decrypt failed"},
      {41, L"Decrypt failed"},    {48, L"Decrypt failed"},     {32, L"Decode failed"},
      {32767, L"Decrypt failed"}, {-32768, L"Decrypt failed"}, {-8, L"Decrypt failed"}};
  for (const auto& [length, message] : rows) {
    SCOPED_TRACE(length);
    std::string bytes = good;
    bytes[2] = static_cast<char>(length);
    bytes[3] = static_cast<char>(length >> 8);
    expectUnreadable(textOf(bytes), message);
    EXPECT_FALSE(CCredentials(textOf(bytes).c_str()).VerifyChecksum());
  }
  expectUnreadable(textOf(good.substr(0, 12)), L"Decrypt failed");
}

TEST(CredentialsDamage, ABodyThatEndsEarlyIsRefusedWhereverItEnds) {
  for (const int number : {0, 1, 2, 255}) {
    const auto version = static_cast<unsigned char>(number);
    std::string body(version < 2 ? 16 : 20, '\1');
    for (int i = 0; i < 9; ++i) body += std::string("\3abc");
    if (version >= 2) body += unhex("C2 80") + std::string(16, '\xFF');  // 128 bits
    for (size_t length = 0; length < body.size(); ++length)
      expectUnreadable(seal(version, body.substr(0, length)), L"Decode failed");
    CCredentials c(seal(version, body + "behind it").c_str());
    c.DecryptBody();
    EXPECT_STREQ(c.GetLocatorEndPoint(), L"abc");
    EXPECT_EQ(c.GetRoles().GetRoleBits().getNumBitsOn(), version < 2 ? 0u : 128u);
  }
}

TEST(CredentialsDamage, ABitCountClaimsNothingThatDoesNotFollow) {
  for (const char* count : {"80", "BF", "F1 80 80 80", "F8", "FF", "FD BF BF BF BF BF", "FC 84 80 80 80 80",
                            "F0 90 80 80", "01", "C2", "EF BF BF"})
    expectUnreadable(seal(2, std::string(29, '\0') + unhex(count)), L"Decode failed");
}

TEST(CredentialsDamage, AZeroEndsATextButNotItsFieldAndBitsBeyondTheCountStayOff) {
  const std::string texts = std::string("\5ab\0cd\2xy", 9) + std::string(7, '\0');
  CCredentials c(seal(2, std::string(20, '\0') + texts + unhex("03 FF")).c_str());
  c.DecryptBody();
  EXPECT_EQ(tovin::WideString(c.GetUsername()).getLength(), 2u);
  EXPECT_STREQ(c.GetPassword(), L"xy");
  EXPECT_EQ(bitsOf(c.GetRoles()), "3: 0 1 2");
}

TEST(CredentialsDamage, AnInnerTextThatIsNoBase64IsRefused) {
  for (const char* text : {"AAA", "AA AAAAA", "AAAA\n", "AAAAAA\xE9=", "====", "AB=="})
    expectUnreadable(sealText(2, text), L"Decode failed");
  std::string bytes = bytesOf(golden("empty"));
  bytes[20] = static_cast<char>(bytes[20] ^ 1);
  expectUnreadable(textOf(bytes), L"Decode failed");
}

TEST(CredentialsDamage, ErrorsNameTheCallsTheyPassed) {
  const std::wstring early = seal(2, std::string(20, '\0'));
  tovin::WideString name;
  EXPECT_EQ(trailOf([&] { CCredentials::GetUserNameFromSessionId(early.c_str(), name); }),
            "CCredentials.AssignString CCredentials.DecryptBody CCredentials.GetUserNameFromSessionId ");
  EXPECT_EQ(trailOf([&] { CCredentials(sealText(2, "?").c_str()).DecryptBody(); }),
            "CCredentials.DoDecryption CCredentials.DecryptBody ");
}

TEST(CredentialsDamage, RolesThatNoSectionHoldsAreNotWritten) {
  CCredentials c;
  c.SetRoles(rolesOf(200'000, {}));
  tovin::WideString text(L"before");
  expectMessage(L"Credentials of 33384 enciphered bytes are too long",
                [&] { c.GenerateCredentialsString(text); });
  // Counted in the bytes that are written, not in characters.
  c.SetRoles(rolesOf(150'000, {}));
  const std::wstring wide(255, L'\u4E2D');
  c.SetUsername(wide.c_str());
  c.SetPassword(wide.c_str());
  c.SetFormatVersionNumber(1);
  c.GenerateCredentialsString(text);
  EXPECT_TRUE(CCredentials(text.c_str()).VerifyChecksum());
  for (const auto set :
       {&CCredentials::SetClientDescription, &CCredentials::SetClientMachineName,
        &CCredentials::SetClientVersion, &CCredentials::SetDomain, &CCredentials::SetXMLDBEndPoint,
        &CCredentials::SetLogEndPoint, &CCredentials::SetLocatorEndPoint})
    (c.*set)(wide.c_str());
  expectMessage(L"Credentials of 34224 enciphered bytes are too long",
                [&] { c.GenerateCredentialsString(text); });
  EXPECT_TRUE(c.VerifyChecksum());  // what was written before is still there
}

}  // namespace
