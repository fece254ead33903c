#include "ztcore/ztStringReader.h"

#include <vector>

#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "ztcore/ztMemoryStringFile.h"

namespace {

using namespace testsupport;
using namespace std::string_literals;
using Encoding = ztFile::Encoding;

struct Lines : FolderTest {
  static std::wstring rest(ztStringReader& reader) {
    std::wstring text;
    tovin::WideString line;
    while (reader.GetLine(line)) text += L"[" + std::wstring(line.view()) + L"]";
    return text;
  }
};

TEST_F(Lines, EveryEncodingGivesTheSameTextWithOneLineFeed) {
  const std::wstring text = L"\x20AC a\r\n\nb\xE9\xD83D\xDE00 plain";
  const std::wstring expected = L"[\x20AC a\n][\n][b\xE9\xD83D\xDE00 plain\n]";
  const std::string utf8 = "\xE2\x82\xAC a\r\n\nb\xC3\xA9\xF0\x9F\x98\x80 plain";
  for (const std::string& bytes : {utf8, "\xEF\xBB\xBF" + utf8, utf16(text), utf16(text, true),
                                   "\xFF\xFE" + utf16(text), "\xFE\xFF" + utf16(text, true)}) {
    ztStringReader reader(file("text", bytes).c_str());
    EXPECT_EQ(rest(reader), expected) << bytes;
    EXPECT_EQ(reader.GetPosition(), static_cast<int64_t>(bytes.size())) << bytes;
  }
}

TEST_F(Lines, TheWaysALineCanEnd) {
  const std::pair<std::string, const wchar_t*> cases[] = {{"", L""},
                                                          {"a", L"[a\n]"},
                                                          {"a\n", L"[a\n]"},
                                                          {"a\r\n\r\n", L"[a\n][\n]"},
                                                          {"a\r\r\nb\rc", L"[a\r\n][b\rc\n]"},
                                                          {"a\r", L"[a\r\n]"},
                                                          {"\r\n", L"[\n]"}};
  for (const auto& [bytes, lines] : cases) {
    ztStringReader reader(file("text", bytes).c_str());
    EXPECT_EQ(rest(reader), lines) << bytes;
  }
}

TEST_F(Lines, TheBytesTellTheEncoding) {
  std::string binary;
  for (int i = 0; i < 300; ++i) binary += {static_cast<char>(i), '\0', '\0', '\0'};
  const std::tuple<const char*, std::string, Encoding> cases[] = {
      {"ASCII", "abc\n", Encoding::Utf8},
      {"UTF-8", "abc\n\xC3\xA9", Encoding::Utf8},
      {"8-bit", "abc\n\xE9 x", Encoding::Bytes},
      {"cut off", "\xC3\xA9 \xC3", Encoding::Bytes},
      {"a surrogate", "\xED\xA0\x80", Encoding::Bytes},
      {"invalid far behind", std::string(3 * ztFastReadFile::PieceSize, 'a') + "\xC3\xA9\xFF",
       Encoding::Bytes},
      {"sequence across pieces", std::string(ztFastReadFile::PieceSize - 1, 'a') + "\xE2\x82\xAC",
       Encoding::Utf8},
      {"a zero byte in text", "ab\0c\n"s, Encoding::Utf8},
      {"little-endian", utf16(L"x = 1\x20AC\n"), Encoding::Utf16},
      {"big-endian", utf16(L"x = 1\x20AC\n", true), Encoding::Utf16BigEndian},
      {"mostly emoji", utf16(L"\xD83D\xDE00\xD83D\xDE00 ok \xD83D\xDE00\n"), Encoding::Utf16},
      {"a word", utf16(L"word"), Encoding::Utf16},
      {"half a unit too much", utf16(L"word") + "x", Encoding::Utf8},
      {"two small numbers", "1\0002\0"s, Encoding::Utf8},
      {"letters without a blank", utf16(std::wstring(200, L'A')), Encoding::Utf8},
      {"numbers of 32 bits", binary, Encoding::Bytes},
      {"numbers of 16 bits", "\1\0\2\0\3\0\4\0"s, Encoding::Utf8}};
  for (const auto& [what, bytes, encoding] : cases) {
    ztFastReadFile in(file("text", bytes).c_str());
    in.DetermineEncoding();
    EXPECT_EQ(in.GetEncoding(), encoding) << what;
  }
}

TEST_F(Lines, BrokenTextKeepsDifferentBytesDifferent) {
  ztStringReader utf8(file("a", "\xEF\xBB\xBF\xC3\xA9\xFFx\xC3").c_str());
  EXPECT_EQ(rest(utf8), L"[\xE9\xDCFFx\xDCC3\n]");
  ztStringReader cut(file("b", "\xFF\xFE" + utf16(L"a\n") + "b").c_str());
  EXPECT_EQ(rest(cut), L"[a\n][\xDC62\n]");
  ztStringReader zero(file("c", "a\0b\n"s).c_str());
  EXPECT_EQ(rest(zero), std::wstring(L"[a\0b\n]", 6));
}

TEST_F(Lines, APositionBehindTheEndHasNothing) {
  ztStringReader reader(file("text", "one\n").c_str());
  reader.Seek(100);
  EXPECT_EQ(rest(reader), L"");
  expectMessage(L"Position -1 lies before the beginning", [&] { reader.Seek(-1); });
}

TEST_F(Lines, WhatIsWrittenLaterIsFound) {
  const std::wstring name = file("log", "");
  ztStringReader reader(name.c_str(), ztStringReader::Ending::Growing);
  EXPECT_EQ(rest(reader), L"");
  folder_.append("log", "\xFF\xFE" + utf16(L"one\ntw"));
  EXPECT_EQ(rest(reader), L"[one\n][tw\n]");
  EXPECT_FALSE(reader.HadLineEnd());
  folder_.append("log", utf16(L"o\n"));
  EXPECT_EQ(rest(reader), L"[o\n]");
  std::filesystem::resize_file(folder_.path("log"), 4);
  EXPECT_EQ(rest(reader), L"");

  ztMemoryStringFile memory(L"a\r\nb");
  ztStringReader text(memory);
  EXPECT_EQ(rest(text), L"[a\n][b\n]");
  EXPECT_EQ(text.GetPosition(), 4);
  memory.Append(L"c\n");
  EXPECT_EQ(rest(text), L"[c\n]");
  text.Seek(3);
  EXPECT_EQ(rest(text), L"[bc\n]");
  ztMemoryStringFile cut(L"a\r");
  ztStringReader last(cut);
  EXPECT_EQ(rest(last), L"[a\r\n]");
}

TEST_F(Lines, ALineWithoutEndIsRefusedWhenItGrowsTooLong) {
  const std::wstring name = file("long", "x\n" + std::string((1 << 24) + 1, 'y'));
  ztStringReader reader(name.c_str());
  expectMessage(L"Line at byte 2 of file " + name + L" is longer than 16777216 bytes", [&] { rest(reader); });
  ztStringReader again(name.c_str()), twin(name.c_str());
  EXPECT_EQ(ztStringReader::SkipEqualLines(again, twin), 2);
  EXPECT_EQ(again.GetPosition(), (1 << 24) + 3);
  const std::wstring other = file("other", "x\n" + std::string((1 << 24) + (1 << 20), 'y') + "z");
  ztStringReader a(name.c_str()), b(other.c_str());
  EXPECT_ANY_THROW(ztStringReader::SkipEqualLines(a, b));
  // Told once; what its writer adds to it is no line either.
  EXPECT_TRUE(reader.WasTooLong());
  EXPECT_EQ(rest(reader), L"");
  folder_.append("long", std::string(1 << 24, 'y') + "\nnext\n");
  EXPECT_EQ(rest(reader), L"[next\n]");
  EXPECT_FALSE(reader.WasTooLong());
  const std::wstring wide = file("wide", "\xFF\xFE" + utf16(std::wstring((1 << 23) + 1, L'y') + L"\nz\n"));
  ztStringReader units(wide.c_str());
  EXPECT_ANY_THROW(rest(units));
  EXPECT_EQ(rest(units), L"[z\n]");
}

TEST_F(Lines, WhatCannotBeOpenedIsNamed) {
  for (const std::wstring& name : {path("missing"), path("")}) {
    expectMessage(L"Unable to open file " + name, [&] { ztStringReader reader(name.c_str()); });
  }
  expectMessage(L"Unable to open file (null)",
                [&] { ztStringReader reader(static_cast<const wchar_t*>(nullptr)); });
}

}  // namespace
