#include "tovinCore/Format.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using tovin::format;

TEST(Format, PrintsEveryConversionWithoutALocale) {
  EXPECT_EQ(format(L"%d %ld %u %x %X", -5, 70000L, 7u, 255, 255u), L"-5 70000 7 ff FF");
  EXPECT_EQ(format(L"%ls|%hs|%ls", L"wide", "n\xC3\xA9", static_cast<const wchar_t*>(nullptr)),
            L"wide|n\xE9|(null)");
  EXPECT_EQ(format(L"%.1f %.1f %.0f %e %g", 4.69897, -0.25, 2.5, 12345.0, 0.0001),
            L"4.7 -0.2 2 1.234500e+04 0.0001");
  EXPECT_EQ(format(L"[%5d|%-5d|%05d|%06.3d|%5ls]", 42, 42, -42, 42, L"ab"),
            L"[   42|42   |-0042|   042|   ab]");
  EXPECT_EQ(format(L"100%% %c", L'x'), L"100% x");
}

TEST(Format, PrintsNumbersThatAreNone) {
  EXPECT_EQ(format(L"%.1f %.1f %.1f", std::nan(""), HUGE_VAL, -HUGE_VAL), L"nan inf -inf");
  EXPECT_EQ(format(L"%.1f", std::copysign(std::nan(""), -1.0)), L"nan");
}

TEST(Format, AWrongOrMissingArgumentReadsNothing) {
  EXPECT_EQ(format(L"%ls", 5), L"(?)");
  EXPECT_EQ(format(L"%d", L"five"), L"(?)");
  EXPECT_EQ(format(L"%d %d", 1), L"1 (?)");
  EXPECT_EQ(format(L"%", 1), L"1");
  EXPECT_EQ(format(L"%99999999999d", 1).size(), 4096u);
}

}  // namespace
