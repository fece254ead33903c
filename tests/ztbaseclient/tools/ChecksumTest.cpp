#include "ztbaseclient/tools/ztChecksum.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <vector>

#include "tovinCore/Utf8.h"

namespace {

using Texts = std::vector<std::wstring>;

std::string digestOf(const Texts& texts) {
  ztChecksum checksum;
  for (const std::wstring& text : texts) checksum.AddString(text.c_str());
  return tovin::wideToUtf8(checksum.GetChecksum());
}

template <class Make>
Texts made(int first, int last, Make&& make) {
  Texts texts;
  for (int i = first; i <= last; ++i) texts.push_back(make(i));
  return texts;
}

// The texts of each line of tests/data/checksum.txt, which says how they were made.
Texts textsOf(const std::string& name) {
  const auto numbered = [](std::wstring text) { return [=](int i) { return text + std::to_wstring(i); }; };
  const auto cycle = [](int count, int first, int step, int size) {
    std::wstring text;
    for (int i = 0; i < count; ++i) {
      const int c = first + i * step % size;
      if ((c & 0xFF) != 'B') text += static_cast<wchar_t>(c);
    }
    return text;
  };
  if (name == "none") return {};
  if (name == "empty") return {L""};
  if (name == "ab-c") return {L"ab", L"c"};
  if (name == "abc") return {L"abc"};
  if (name == "wide") return {L"\x20AC\xE9"};
  if (name == "pair") return {L"\xD83D\xDE00"};
  if (name == "truncated-b") return {L"aBb", L"x"};
  if (name == "truncated-c") return {L"aBc", L"x"};
  if (name == "wrapped") return made(1, 211, numbered(L"s"));
  if (name == "many") return made(1, 1000, numbered(L"text "));
  if (name == "long") return {cycle(100'000, 32, 7, 90)};
  if (name == "many-wide") return made(1, 400, [&](int) { return cycle(100, 256, 13, 700); });
  ADD_FAILURE() << name;
  return {};
}

TEST(Checksum, AgreesWithTheGoldenDigests) {
  std::ifstream in(ZTB_TEST_DATA "/checksum.txt");
  std::string line;
  int count = 0;
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string name, digest;
    fields >> name >> digest;
    if (name.empty() || name[0] == '#') continue;
    EXPECT_EQ(digestOf(textsOf(name)), digest) << name;
    ++count;
  }
  EXPECT_EQ(count, 12);
}

TEST(Checksum, AskingLeavesTheStateAndResettingDropsIt) {
  ztChecksum checksum;
  const std::string fresh = tovin::wideToUtf8(checksum.GetChecksum());
  checksum.AddString(L"ab");
  checksum.GetChecksum();
  ztChecksum copy(checksum);
  checksum.AddString(L"c");
  EXPECT_EQ(tovin::wideToUtf8(checksum.GetChecksum()), digestOf({L"ab", L"c"}));
  EXPECT_EQ(tovin::wideToUtf8(copy.GetChecksum()), digestOf({L"ab"}));
  checksum.Reset();
  EXPECT_EQ(tovin::wideToUtf8(checksum.GetChecksum()), fresh);
  copy = std::move(checksum);
  EXPECT_EQ(checksum.GetChecksum(), nullptr);
  checksum.AddString(nullptr);
  EXPECT_EQ(tovin::wideToUtf8(checksum.GetChecksum()), digestOf({L""}));
}

TEST(Checksum, AWideElementCountsAsItsPair) {
  EXPECT_EQ(digestOf({L"\U0001F600"}), digestOf(textsOf("pair")));
}

}  // namespace
