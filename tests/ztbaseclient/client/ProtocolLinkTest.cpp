#include <gmock/gmock.h>

#include "tests/support/Bytes.h"
#include "ztbaseclient/client/CProtocolLinkBuilder.h"

namespace {

using namespace testsupport;

std::wstring linkOf(const wchar_t* server, const wchar_t* protocol) {
  return CProtocolLinkBuilder(server, protocol).Construct();
}

TEST(ProtocolLink, SchemeIsAddedWhereNoneIs) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"atlas", L"http://atlas/perlbin/runjob.pl?_protocol=p"},
      {nullptr, L"http:///perlbin/runjob.pl?_protocol=p"},
      {L"htt", L"http://htt/perlbin/runjob.pl?_protocol=p"},
      {L"HTTPS://atlas", L"HTTPS://atlas/perlbin/runjob.pl?_protocol=p"},
      {L"httpd.org", L"httpd.org/perlbin/runjob.pl?_protocol=p"},
      {L"a b&c", L"http://a b&c/perlbin/runjob.pl?_protocol=p"}};
  for (const auto& [server, link] : rows) EXPECT_EQ(linkOf(server, L"p"), link);
}

TEST(ProtocolLink, PartsStandInTheirOrder) {
  CProtocolLinkBuilder builder(L"atlas", L"P q");
  builder.SetRunUser(CProtocolLinkBuilder::RunAsSessionUser, L"s&1");
  builder.SetParameter(L"b", L"1");
  builder.SetParameter(L"a", L"x y");
  builder.SetParameter(L"b", L"2");
  builder.SetParameter(L"A", nullptr);
  builder.SetParameter(nullptr, L"n");
  builder.SetParameter(L"\xFF5E", L"2");  // behind a surrogate pair: parameters are ordered by their units
  builder.SetParameter(std::wstring({wchar_t(0xD83D), wchar_t(0xDE00)}).c_str(), L"1");
  builder.SetArrayDelimiter(L";");
  builder.SetProgressMessage(L"50%");
  EXPECT_STREQ(builder.Construct(),
               L"http://atlas/perlbin/runjob.pl?_protocol=P%20q&_progressmessage=50%25&_arraydelim=%3B&=n&A="
               L"&a=x%20y&b=1&%F0%9F%98%80=1&%EF%BD%9E=2&_session=s%261");
}

TEST(ProtocolLink, AnonymousLinkIsMarkedWithTheChecksum) {
  CProtocolLinkBuilder builder(L"atlas", L"P q");
  builder.SetRunUser(CProtocolLinkBuilder::RunAsAnonymous, L"ignored");
  builder.SetParameter(L"a", L"1");
  EXPECT_STREQ(builder.Construct(),
               L"http://atlas/perlbin/runjob.pl?_protocol=___08609ff7c2d3a5d49920f4f5280a60b2___P%20q"
               L"&_anonymous=true&a=1");
}

TEST(ProtocolLink, SecondConstructAppendsBehindAScheme) {
  CProtocolLinkBuilder builder(L"http://a", L"p");
  const std::wstring first = builder.Construct();
  EXPECT_EQ(builder.Construct(), first + first);
  CProtocolLinkBuilder bare(L"a", L"p");
  bare.Construct();
  EXPECT_EQ(bare.Construct(), first);
}

TEST(ProtocolLink, MissingProtocolLeavesTheLinkBegun) {
  CProtocolLinkBuilder builder(L"http://a", nullptr);
  expectMessage(L"No protocol identifier specified", [&] { builder.Construct(); });
  CProtocolLinkBuilder other(L"http://b", L"p");
  const CProtocolLinkBuilder copy = other;
  other = builder;
  expectMessage(L"No protocol identifier specified", [&] { other.Construct(); });
  EXPECT_STREQ(CProtocolLinkBuilder(copy).Construct(), L"http://b/perlbin/runjob.pl?_protocol=p");
}

TEST(ProtocolLink, SessionUserNeedsASession) {
  CProtocolLinkBuilder builder(L"a", L"p");
  builder.SetRunUser(CProtocolLinkBuilder::RunAsSessionUser, L"s");
  const auto refused = [&] { builder.SetRunUser(CProtocolLinkBuilder::RunAsSessionUser, nullptr); };
  expectMessage(L"A session ID must be registered to run as the protocol link creator", refused);
  EXPECT_EQ(trailOf(refused), "CProtocolLinkBuilder.SetRunUser ");
  EXPECT_THAT(tovin::wideToUtf8(builder.Construct()), testing::EndsWith("_protocol=p&_session=s"));
  builder.SetRunUser(CProtocolLinkBuilder::RunAsDefaultUser, L"s");
  EXPECT_STREQ(builder.Construct(), L"http://a/perlbin/runjob.pl?_protocol=p");
}

TEST(ProtocolLink, LongLinkIsWarnedAbout) {
  const size_t fixed = linkOf(L"a", L"p").size() - 1;
  const auto warnsAt = [&](size_t length) {
    const std::wstring protocol(length - fixed, L'p');
    return !warningsOf([&] { EXPECT_EQ(linkOf(L"a", protocol.c_str()).size(), length); }).empty();
  };
  EXPECT_FALSE(warnsAt(2083));
  EXPECT_TRUE(warnsAt(2084));
}

}  // namespace
