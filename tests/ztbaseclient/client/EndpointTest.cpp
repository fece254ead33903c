#include <gtest/gtest.h>

#include "tovin/BaseString.h"
#include "ztbaseclient/client/LocatorEndpointIdentity.h"

namespace {

using LocatorEndpointIdentity::EndPointToHostAndPort;
using LocatorEndpointIdentity::HostAndPortToEndPoint;
using tovin::WideString;

TEST(Endpoint, HostTextIsCompleted) {
  const std::tuple<const wchar_t*, int, const wchar_t*> rows[] = {
      {L"atlas", 399, L"https://atlas:9943/dravolin/locator"},
      {L"atlas", 400, L"https://atlas:9945/dravolin/locator"},
      {L"atlas", 405, L"https://atlas:9945/dravolin/locator"},
      {L"atlas", 406, L"https://atlas:9943/dravolin/locator"},
      {nullptr, 801, L"https://:9943/dravolin/locator"},
      {L"atlas:1", 403, L"https://atlas:1/dravolin/locator"},
      {L"atlas:", 801, L"https://atlas:/dravolin/locator"},
      // Any text with a slash carries its own path.
      {L"atlas:1/x", 801, L"https://atlas:1/x"},
      {L"/", 801, L"https:///"},
      {L"HTTP://atlas", 801, L"https://HTTP://atlas"},
      // A scheme: no port is added.
      {L"http://atlas", 403, L"http://atlas/dravolin/locator"},
      {L"https://atlas", 801, L"https://atlas/dravolin/locator"},
      {L"http:/atlas", 801, L"https://http:/atlas"}};
  for (const auto& [text, release, endPoint] : rows) {
    WideString out(L"before");
    HostAndPortToEndPoint(text, out, release);
    EXPECT_EQ(out, endPoint);
  }
}

TEST(Endpoint, EndPointIsReduced) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"https://atlas:9943/dravolin/locator", L"atlas"},
      {L"https://atlas:9944/dravolin/locator", L"atlas"},
      {L"https://atlas:9945/dravolin/locator", L"atlas:9945"},
      {L"http://atlas:9944/dravolin/locator", L"http://atlas"},
      {L"https://atlas/dravolin/locator/more", L"atlas"},
      {L"https://atlas:9943/dravolin", L"atlas:9943/dravolin"},
      {L"https://atlas:09943", L"atlas:09943"},
      {L"https://a:9943:9943", L"a:9943:9943"},
      // What would be cut at the very front stays.
      {L"https:///dravolin/locator", L"/dravolin/locator"},
      {L"https://:9943", L":9943"},
      {L"https://", L""},
      {L"HTTPS://atlas:9943/dravolin/locator", L"HTTPS://atlas:9943/dravolin/locator"},
      {L"", L""}};
  for (const auto& [endPoint, text] : rows) {
    WideString out(L"before");
    EndPointToHostAndPort(endPoint, out);
    EXPECT_EQ(out, text);
  }
}

TEST(Endpoint, HostAndPortArePutTogetherInBothWidths) {
  WideString wide;
  HostAndPortToEndPoint(L"atlas", -1, false, wide);
  EXPECT_TRUE(wide == L"http://atlas:-1/dravolin/locator");
  tovin::NarrowString narrow;
  HostAndPortToEndPoint("", 2147483647, true, narrow);
  EXPECT_TRUE(narrow == "https://:2147483647/dravolin/locator");
  HostAndPortToEndPoint(static_cast<const char*>(nullptr), 1, true, narrow);
  EXPECT_TRUE(narrow == "https://:1/dravolin/locator");
}

TEST(Endpoint, ResultMayReplaceItsOwnArgument) {
  WideString text(L"atlas");
  HostAndPortToEndPoint(text.c_str(), text, 801);
  EXPECT_TRUE(text == L"https://atlas:9943/dravolin/locator");
  for (int i = 0; i < 2; ++i) {
    EndPointToHostAndPort(text.c_str(), text);
    EXPECT_TRUE(text == L"atlas");
  }
  EndPointToHostAndPort(nullptr, text);
  EXPECT_TRUE(text.isNull());
}

}  // namespace
