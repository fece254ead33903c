#include "ztcore/ztUniqueStrings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Threads.h"
namespace {

TEST(UniqueStrings, EqualTextsAreOneCopyThatDiesWithItsLastReference) {
  const size_t before = ztUniqueStrings::GetCount();
  bool created = false;
  const std::wstring text = L"unique one";
  const wchar_t* a = ztUniqueStrings::GetUniqueString(text.c_str(), nullptr, &created);
  EXPECT_TRUE(created);
  const wchar_t* b = ztUniqueStrings::GetUniqueString(std::wstring(text).c_str(), nullptr, &created);
  EXPECT_FALSE(created);
  EXPECT_EQ(a, b);
  EXPECT_NE(a, text.c_str());
  EXPECT_NE(a, ztUniqueString(L"Unique one"));
  EXPECT_EQ(ztUniqueStrings::GetUniqueString(nullptr, a, &created), nullptr);
  EXPECT_EQ(ztUniqueStrings::GetCount(), before + 1);
  ztUniqueStrings::GetUniqueString(nullptr, b, nullptr);
  EXPECT_EQ(ztUniqueStrings::GetCount(), before);
}

TEST(UniqueStrings, ExchangingATextForItselfKeepsIt) {
  const wchar_t* name = ztUniqueStrings::GetUniqueString(L"self", nullptr, nullptr);
  const wchar_t* again = ztUniqueStrings::GetUniqueString(name, name, nullptr);
  EXPECT_EQ(name, again);
  EXPECT_STREQ(again, L"self");
  ztUniqueStrings::GetUniqueString(nullptr, again, nullptr);
}

TEST(UniqueStrings, RemovalLeavesTheOthersWhereTheyAreFound) {
  const size_t before = ztUniqueStrings::GetCount();
  {
    std::vector<ztUniqueString> kept, dropped;
    for (int i = 0; i < 5000; ++i)
      (i % 3 ? dropped : kept).emplace_back((L"name " + std::to_wstring(i)).c_str());
    dropped.clear();
    EXPECT_EQ(ztUniqueStrings::GetCount(), before + kept.size());
    for (size_t i = 0; i < kept.size(); ++i) {
      EXPECT_EQ(ztUniqueString((L"name " + std::to_wstring(3 * i)).c_str()), kept[i]);
    }
  }
  EXPECT_EQ(ztUniqueStrings::GetCount(), before);
}

TEST(UniqueStrings, ManyThreadsShareTheTable) {
  const size_t before = ztUniqueStrings::GetCount();
  testsupport::inThreads(8, [](int thread) {
    for (int i = 0; i < 5000; ++i) {
      const std::wstring text = L"shared " + std::to_wstring((i * 7 + thread) % 50);
      const ztUniqueString held(text.c_str());
      ASSERT_EQ(std::wstring(held), text);
    }
  });
  EXPECT_EQ(ztUniqueStrings::GetCount(), before);
}

}  // namespace
