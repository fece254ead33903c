#include <gtest/gtest.h>

#include "tovin/Array.h"
#include "tovin/BaseString.h"

namespace {

using tovin::WideString;

TEST(String, NullAndEmptyAreTwoStates) {
  WideString text;
  EXPECT_TRUE(text.isNull() && text.isEmpty());
  EXPECT_EQ(text.c_str(), nullptr);
  EXPECT_FALSE(text == WideString(L""));
  text.clear();
  EXPECT_FALSE(text.isNull());
  EXPECT_STREQ(text, L"");
  text += WideString();
  text += static_cast<const wchar_t*>(nullptr);
  EXPECT_STREQ(text, L"");
  const WideString null;
  text = null;
  EXPECT_TRUE(text.isNull());
  text += L"";
  EXPECT_FALSE(text.isNull());
}

TEST(String, TakesTextOutOfItself) {
  WideString text(L"abcdef");
  text = text.c_str() + 2;
  EXPECT_STREQ(text, L"cdef");
  for (int i = 0; i < 5; ++i) text += text;
  EXPECT_EQ(text.getLength(), 128u);
  text.assign(text.c_str() + 124, 4);
  EXPECT_STREQ(text, L"cdef");
  text.append(text.view().substr(1, 2));
  EXPECT_STREQ(text, L"cdefde");
  text = text;
  EXPECT_STREQ(text, L"cdefde");
}

TEST(String, ChecksItsIndexes) {
  const WideString text(L"ab");
  EXPECT_EQ(text[1], L'b');
  EXPECT_THROW(text[2], tovin::InvalidIndexException);
  EXPECT_THROW(WideString()[0], tovin::InvalidIndexException);
  EXPECT_STREQ(text.subString(5), L"");
  EXPECT_STREQ(text.subString(1, 9), L"b");
}

TEST(String, OrdersByUnits) {
  const tovin::UnitOrder before;
  EXPECT_TRUE(before(WideString(), WideString(L"")));
  EXPECT_TRUE(before(L"A", L"a"));
  EXPECT_TRUE(before(L"a", L"ab"));
  // A surrogate pair comes before U+FFFF, although its character is the greater one.
  EXPECT_TRUE(before(L"\xD83D\xDE00", L"\xFFFF"));
  const std::wstring element(1, static_cast<wchar_t>(0x1F600));
  EXPECT_TRUE(before(element, WideString(L"\xFFFF")));
}

TEST(Array, ChecksItsIndexes) {
  tovin::Array<int> numbers{1, 2};
  numbers.insert(2, 3);
  numbers.removeAt(0);
  EXPECT_EQ(numbers[1], 3);
  EXPECT_THROW(numbers[2] = 0, tovin::InvalidIndexException);
  EXPECT_THROW(numbers.removeAt(2), tovin::InvalidIndexException);
  EXPECT_THROW(numbers.insert(3, 0), tovin::InvalidIndexException);
}

}  // namespace
