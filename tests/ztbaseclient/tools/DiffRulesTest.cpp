#include <cmath>

#include "tests/support/Bytes.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/tools/DiffInfo.h"

namespace {

TEST(DiffRules, LinesAreComparedUpToTheirEnd) {
  const std::tuple<const wchar_t*, const wchar_t*, bool> cases[] = {
      {L"", L"\n", true},     {L"ab\r\n", L"ab", true}, {L"ab\rx", L"ab\ny", true},
      {L"ab", L"abc", false}, {L"abc", L"ab", false},   {L"a", L"A", false},
      {nullptr, L"", false},  {L"", nullptr, false},    {nullptr, nullptr, false}};
  for (const auto& [a, b, equal] : cases) EXPECT_EQ(CDiffFiles::compareIgnoringEOL(a, b), equal);
}

TEST(DiffRules, TokensStandBetweenDelimiters) {
  const CDiffFiles diff;
  std::wstring delimiters;
  for (wchar_t c = 0; c < 0x180; ++c) {
    if (diff.IsDelimiter(c)) delimiters += c;
  }
  EXPECT_EQ(delimiters, std::wstring(1, L'\0') + L"\t\n\r \",;<=>\xA0");
  const std::tuple<const wchar_t*, int, int, int> cases[] = {
      {L"a=12;b", 3, 2, 3}, {L"a=12;b", 2, 2, 3}, {L"a=12;b", 4, 2, 3}, {L"a=12;b", 5, 5, 5},
      {L"abc", 0, 0, 2},    {L"abc", 3, 0, 2},    {L"", 0, 0, -1},      {L"==", 1, 1, 0}};
  for (const auto& [line, pos, start, end] : cases) {
    EXPECT_EQ(diff.GetStartLocation(line, pos), start) << pos;
    EXPECT_EQ(diff.GetEndLocation(line, pos), end) << pos;
  }
}

TEST(DiffRules, ZerosFillTheShorterNumberUpToAMost) {
  wchar_t a[8] = L"1", b[8] = L"123", c[8] = L"1", point[] = L".25";
  EXPECT_EQ(CDiffFiles().PadWithZeros(a, b, 9), 3u);
  EXPECT_STREQ(a, L"100");
  EXPECT_EQ(CDiffFiles().PadWithZeros(b, c, 2), 3u);
  EXPECT_STREQ(b, L"123");
  EXPECT_STREQ(c, L"10");
  CDiffFiles().RemoveDecimal(point);
  EXPECT_STREQ(point, L"25");
}

TEST(DiffRules, TheMeasureIsTheNumberOfSharedDigits) {
  constexpr double infinite = std::numeric_limits<double>::infinity(), none = NAN;
  const std::tuple<std::wstring, std::wstring, double> cases[] = {{L"1.00001", L"1.00002", 5.0000043},
                                                                  {L"-1.00001", L"-1.00002", 5.0000043},
                                                                  {L"1.5", L"1.50", infinite},
                                                                  {L"0.0", L"-0", infinite},
                                                                  {L"0.0", L"1e-120", 120},
                                                                  {L"-1e-101", L"0.0", 101},
                                                                  {L"0.0", L"1e-100", none},
                                                                  {L"10", L"11", none},
                                                                  {L"10", L"11.0", 1},
                                                                  {L"1.0", L"1.0x", none},
                                                                  {L"a.b", L"1.0", none},
                                                                  {L"1.0", L"nan", none},
                                                                  {L"inf", L"1.0", -infinite},
                                                                  {L"1.0", L"-1.0", -0.30103},
                                                                  {L"1.e400", L"inf", none}};
  for (auto [a, b, expected] : cases) {
    const double measure = CDiffFiles().MeasureIndividualRoundoff(a.data(), b.data(), 1023, 5);
    if (std::isfinite(expected))
      EXPECT_NEAR(measure, expected, 1e-6) << testing::PrintToString(a);
    else
      EXPECT_TRUE(measure == expected || (std::isnan(measure) && std::isnan(expected))) << measure;
  }
}

TEST(DiffRules, TokensOfUpTo1023CharactersAreNumbers) {
  CDiffFiles::DiffInfo info;
  std::wstring line1 = L"1." + std::wstring(1020, L'0') + L"1\n", line2 = line1;
  line2[1022] = L'2';
  CDiffFiles().CheckRoundoff(line1.data(), line2.data(), 5, 7, L"f", L"g", info);
  EXPECT_EQ(info.measure, std::numeric_limits<double>::infinity());
  EXPECT_EQ(info.position1, 1022);
  EXPECT_EQ(info.lineNumber, 7);
  EXPECT_EQ(std::wstring(info.line1), line1);
}

TEST(DiffRules, TheMarkerPointsAtUpToEightCharacters) {
  CDiffFiles::DiffInfo info;
  CDiffFiles().GetDiffInfo(L"ab1\t2x", L"ab3\t4xy", info);
  EXPECT_EQ(info.position1, 2);
  EXPECT_STREQ(info.marker, L"^\t^ ");
  CDiffFiles().GetDiffInfo(L"123456789", L"abcdefghi", info);
  EXPECT_STREQ(info.marker, L"^^^^^^^^");
}

TEST(DiffRules, ExceptionsNameTheMethodsTheyPassed) {
  wchar_t line1[] = L"a", line2[] = L"b";
  CDiffFiles::DiffInfo info;
  EXPECT_EQ(testsupport::trailOf([&] { CDiffFiles().CheckRoundoff(line1, line2, 5, 1, L"f", L"g", info); }),
            "CDiffFiles.ThrowDiffError CDiffFiles.CheckRoundoff ");
}

}  // namespace
