#include "tests/support/Bytes.h"
#include "ztbaseclient/auth/CAuthParameters.h"
#include "ztbaseclient/data/CPropertyCollection.h"

using namespace testsupport;

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
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"", L""}, {L"s3cret", L"adkOkarhYFU="}, {L"\u20AC uro", L"nJKC3ip7s1crHYXWTnPfFw=="}};
  for (const auto& [password, cipher] : rows) {
    CAuthParameters parameters, other;
    parameters.SetPassword(password);
    EXPECT_STREQ(parameters.GetEncipheredPassword(), cipher);
    other.SetEncipheredPassword(cipher);
    EXPECT_EQ(passwordOf(other), password);
  }
}

TEST(AuthParameters, RefuseWhatIsNoEncipheredPassword) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"?", L"Error decoding"}, {L"AAAA", L"Decrypt failed"}, {L"AAAAAAAAAAA=", L"Decode failed"}};
  for (const auto& [cipher, message] : rows) {
    CAuthParameters parameters;
    parameters.SetEncipheredPassword(cipher);
    tovin::WideString password(L"before");
    expectMessage(message, [&] { parameters.GetPassword(password); });
    EXPECT_EQ(password, L"before");
  }
}

}  // namespace
