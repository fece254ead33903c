#include "tovinCore/WebText.h"

#include <gtest/gtest.h>

namespace {

using tovin::util::urlEncode;
using tovin::util::XMLDecode;

constexpr wchar_t high = 0xD83D, low = 0xDE00;

TEST(UrlEncoding, LeavesOnlyUnreservedCharacters) {
  const std::pair<std::wstring, std::wstring> rows[] = {
      {L"", L""},
      {L"AZaz09-._~", L"AZaz09-._~"},
      {L"a b+c", L"a%20b%2Bc"},
      {L"!\"#$%&'()*,/:;<=>?@[\\]^`{|}",
       L"%21%22%23%24%25%26%27%28%29%2A%2C%2F%3A%3B%3C%3D%3E%3F%40%5B%5C%5D"
       L"%5E%60%7B%7C%7D"},
      {L"\x1\x7F\r\n", L"%01%7F%0D%0A"},
      {L"\xE9\x20AC", L"%C3%A9%E2%82%AC"},
      {{L'x', high, low, L'y'}, L"x%F0%9F%98%80y"},
      {{high, L'-', low}, L"%ED%A0%BD-%ED%B8%80"},
      {std::wstring(1, L'\0'), L"%00"}};
  for (const auto& [text, encoded] : rows) EXPECT_EQ(urlEncode(text), encoded);
}

TEST(UrlEncoding, AppendsToWhatIsThere) {
  std::wstring url = L"?a=";
  urlEncode(L"&", url);
  EXPECT_EQ(url, L"?a=%26");
}

TEST(XmlDecoding, ReplacesReferencesOnce) {
  const std::pair<std::wstring, std::wstring> rows[] = {
      {L"", L""},
      {L"a &lt;b&gt; &quot;c&quot; &apos;d&apos; &amp;", L"a <b> \"c\" 'd' &"},
      {L"&amp;lt;", L"&lt;"},
      {L"&#65;&#x41;&#X6a;&#0000065;", L"AAjA"},
      {L"&#233;&#x20AC;", L"\xE9\x20AC"},
      {L"&#x1F600;", {high, low}},
      {L"&#x10FFFF;", {0xDBFF, 0xDFFF}}};
  for (const auto& [text, decoded] : rows) EXPECT_EQ(XMLDecode(text), decoded);
}

TEST(XmlDecoding, LeavesWhatIsNoReference) {
  for (const wchar_t* text :
       {L"&", L"&&;", L"&nbsp;", L"&AMP;", L"&amp", L"& amp;", L"&#;", L"&#x;", L"&#65", L"&#6A;", L"&#xG;",
        L"&#0;", L"&#xD800;", L"&#xDFFF;", L"&#x110000;", L"&#99999999999999999999;", L"&#-5;", L"&#"})
    EXPECT_EQ(XMLDecode(text), text);
}

}  // namespace
