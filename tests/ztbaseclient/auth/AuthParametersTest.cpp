#include "tests/support/Bytes.h"
#include "ztbaseclient/auth/CAuthParameters.h"
#include "ztbaseclient/data/CPropertyCollection.h"

using testsupport::expectMessage;

namespace {

std::wstring passwordOf(const CAuthParameters& parameters) {
  tovin::WideString password;
  parameters.GetPassword(password);
  return password.c_str();
}

TEST(AuthParameters, AreTakenFromACollectionByName) {
  tovin::Ptr<CPropertyCollection> collection(CPropertyCollection::allocate());
  collection->define(L"username", L"ann", 0);
  CAuthParameters parameters;
  parameters.SetUserName(L"before");
  expectMessage(L"Property Password does not exist", [&] { parameters.SetParameters(*collection); });
  EXPECT_STREQ(parameters.GetUserName(), L"before");
  collection->define(L"PASSWORD", L"p\u00E4ss \xD834\xDD1E", 0);
  parameters.SetParameters(*collection);
  EXPECT_STREQ(parameters.GetUserName(), L"ann");
  EXPECT_EQ(passwordOf(parameters), L"p\u00E4ss \xD834\xDD1E");
  parameters.SetParameters(*collection, L"Password", L"UserName");
  EXPECT_EQ(passwordOf(parameters), L"ann");
}

TEST(AuthParameters, KeepThePasswordEnciphered) {
  // Made apart from the library, as the credentials strings of the test data were.
  const struct {
    const wchar_t* password;
    const wchar_t* cipher;
  } rows[] = {{L"", L""}, {L"s3cret", L"adkOkarhYFU="}, {L"\u20AC uro", L"nJKC3ip7s1crHYXWTnPfFw=="}};
  for (const auto& row : rows) {
    CAuthParameters parameters;
    parameters.SetPassword(row.password);
    EXPECT_STREQ(parameters.GetEncipheredPassword(), row.cipher);
    CAuthParameters other;
    other.SetEncipheredPassword(row.cipher);
    EXPECT_EQ(passwordOf(other), row.password);
  }
}

TEST(AuthParameters, RefuseWhatIsNoEncipheredPassword) {
  const struct {
    const wchar_t* cipher;
    const wchar_t* message;
  } rows[] = {{L"?", L"Error decoding"}, {L"AAAA", L"Decrypt failed"}, {L"AAAAAAAAAAA=", L"Decode failed"}};
  for (const auto& row : rows) {
    CAuthParameters parameters;
    parameters.SetEncipheredPassword(row.cipher);
    tovin::WideString password(L"before");
    expectMessage(row.message, [&] { parameters.GetPassword(password); });
    EXPECT_EQ(password, L"before");
  }
}

}  // namespace
