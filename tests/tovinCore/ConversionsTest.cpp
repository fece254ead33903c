#include <gtest/gtest.h>
#include <cstdlib>

#include <cmath>
#include <limits>

#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"

namespace {

using tovin::util::stringToInteger;
using tovin::util::tryStringToDouble;
using tovin::util::tryStringToInteger;

constexpr wchar_t high = 0xD83D, low = 0xDE00;

TEST(Utf8, BecomesUnitsAndComesBack) {
  const std::pair<std::string, std::wstring> rows[] = {{"A", L"A"},
                                                       {"\xC3\xA9", L"\xE9"},
                                                       {"\xE2\x82\xAC", L"\x20AC"},
                                                       {"\xF0\x9F\x98\x80", {high, low}},
                                                       {"\xED\xA0\xBD", {high}},
                                                       {"x\xED\xB8\x80y", {L'x', low, L'y'}}};
  for (const auto& [bytes, units] : rows) {
    EXPECT_EQ(tovin::utf8ToWide(bytes), units);
    EXPECT_EQ(tovin::wideToUtf8(units), bytes);
  }
}

TEST(Utf8, BytesOfNoSequenceBecomeReplacements) {
  for (const char* bytes : {"\x80", "\xC3", "\xC0", "\xF5", "\xFF"})
    EXPECT_EQ(tovin::utf8ToWide(bytes), L"\xFFFD");
  EXPECT_EQ(tovin::utf8ToWide("\xE2\x82"), L"\xFFFD\xFFFD");
  EXPECT_EQ(tovin::utf8ToWide("\xE0\x80\x80"), L"\xFFFD\xFFFD\xFFFD");
}

TEST(Utf8, ValidityTellsACutSequenceFromAWrongOne) {
  bool cut = false;
  EXPECT_TRUE(tovin::isValidUtf8("a\xE2\x82\xAC", cut));
  EXPECT_FALSE(tovin::isValidUtf8("a\xE2\x82", cut));
  EXPECT_TRUE(cut);
  EXPECT_FALSE(tovin::isValidUtf8("a\xE2z", cut));
  EXPECT_FALSE(cut);
  EXPECT_FALSE(tovin::isValidUtf8("\xED\xA0\xBD", cut));
}

TEST(Units, AnElementAboveTheBasicPlaneIsItsPair) {
  if (sizeof(wchar_t) == 2) GTEST_SKIP() << "elements are units here";
  const std::wstring element(1, static_cast<wchar_t>(0x1F600));
  const std::wstring pair = {high, low};
  EXPECT_EQ(tovin::countUnits(element), 2u);
  EXPECT_TRUE(tovin::equalFolded(element.c_str(), pair.c_str()));
  EXPECT_TRUE(tovin::equalExact(element.c_str(), pair.c_str()));
  EXPECT_EQ(tovin::hashFolded(element.c_str()), tovin::hashFolded(pair.c_str()));
  EXPECT_EQ(tovin::wideToUtf8(element), "\xF0\x9F\x98\x80");
}

TEST(Units, OnlyTheLettersAToZFold) {
  EXPECT_TRUE(tovin::equalFolded(L"AbZ[", L"aBz["));
  EXPECT_FALSE(tovin::equalFolded(L"\xC9", L"\xE9"));
  EXPECT_FALSE(tovin::equalFolded(L"@", L"`"));
  EXPECT_FALSE(tovin::equalFolded(L"ab", L"abc"));
  EXPECT_TRUE(tovin::equalFolded(static_cast<const wchar_t*>(nullptr), nullptr));
  EXPECT_FALSE(tovin::equalFolded(L"", static_cast<const wchar_t*>(nullptr)));
  EXPECT_EQ(tovin::hashFolded(L"Ab"), 97u * 31 + 98);
  EXPECT_EQ(tovin::hashFolded(nullptr), 0u);
}

TEST(Numbers, ADoubleIsTheWholeText) {
  const double infinite = std::numeric_limits<double>::infinity();
  const struct {
    const wchar_t* text;
    double value;
  } rows[] = {{L"1.5", 1.5},        {L"+2", 2},
              {L"-.5", -0.5},       {L"1.", 1},
              {L"1e3", 1000},       {L" 7\t", 7},
              {L"1e999", infinite}, {L"-1e999", -infinite},
              {L"1e-999", 0},       {L"0.0000001e-400", 0},
              {L"inf", infinite},   {L"1000e400", infinite}};
  for (const auto& row : rows) {
    double value = -77;
    EXPECT_TRUE(tryStringToDouble(row.text, value)) << row.value;
    EXPECT_EQ(value, row.value);
  }
  double value = 0;
  for (const wchar_t* text :
       {L"", L" ", L"x", L"1.5x", L"1 2", L"--1", L"+-1", L"+", L"1,5", L"0x10", L"\x661"}) {
    EXPECT_FALSE(tryStringToDouble(text, value)) << tovin::wideToUtf8(text);
  }
  EXPECT_TRUE(tryStringToDouble(L"nan", value));
  EXPECT_TRUE(std::isnan(value));
}

// Longer than anything that a number needs: the digits far behind still decide between two neighbours.
TEST(Numbers, ADoubleMayBeOfAnyLength) {
  const std::string zeros(5000, '0'), middle = "9007199254740993";  // between 2^53 and the next double
  for (const std::string& text :
       {zeros + "12.5" + zeros, "0." + zeros + "125e5001", middle + "." + zeros, middle + "." + zeros + "1",
        middle + zeros + "1e-5001", middle + zeros + "." + zeros + "1E-5000", "-1" + zeros,
        "1" + zeros + "e-4999", "0." + zeros + "e999999999999999999999", zeros, "5e-" + zeros + "324",
        std::string(3000, '7') + "e-2999"}) {
    double value = -77;
    EXPECT_TRUE(tryStringToDouble(tovin::utf8ToWide(text), value)) << text;
    EXPECT_EQ(value, std::strtod(text.c_str(), nullptr)) << text;
  }
  double value = 0;
  for (const std::string& text : {zeros + "x", zeros + "1e", "." + zeros + "." + zeros, zeros + "1e+",
                                  "--" + zeros, zeros + " 1", std::string(2000, '.'), zeros + "e5e5"}) {
    EXPECT_FALSE(tryStringToDouble(tovin::utf8ToWide(text), value)) << text;
  }
}

TEST(Numbers, AnIntegerIsTheWholeTextOrItsBeginning) {
  int value = 0;
  EXPECT_TRUE(tryStringToInteger(L"-2147483648", value));
  EXPECT_EQ(value, std::numeric_limits<int>::min());
  for (const wchar_t* text : {L"", L"2147483648", L"1.0", L"+-1", L"7x"})
    EXPECT_FALSE(tryStringToInteger(text, value));
  EXPECT_EQ(stringToInteger(L" 42abc"), 42);
  EXPECT_EQ(stringToInteger(L"-x"), 0);
  EXPECT_EQ(stringToInteger(L"99999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(stringToInteger(L"-99999999999"), std::numeric_limits<int>::min());
}

TEST(Numbers, ADoublePrintsShortAndReadsBack) {
  const std::pair<double, const wchar_t*> rows[] = {{0.1, L"0.1"},   {100000, L"100000"}, {1e21, L"1e+21"},
                                                    {-2.5, L"-2.5"}, {1e-7, L"1e-07"},    {0, L"0"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(tovin::util::doubleToString(value), text);
  EXPECT_EQ(tovin::util::doubleToString(-std::numeric_limits<double>::infinity()), L"-Infinity");
}

TEST(Numbers, SplittingKeepsEmptyFields) {
  EXPECT_EQ(tovin::util::singleStringToMultipleStrings(L";a;", L';'),
            (std::vector<std::wstring>{L"", L"a", L""}));
  EXPECT_EQ(tovin::util::singleStringToMultipleStrings(L"", L';'), std::vector<std::wstring>{L""});
}

}  // namespace
