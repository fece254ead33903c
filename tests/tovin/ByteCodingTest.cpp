#include "tovin/ByteCoding.h"

#include "tests/support/Bytes.h"

namespace {

namespace coding = tovin::coding;
using namespace testsupport;

TEST(CompactInt, HasTheseBytes) {
  const std::pair<int, const char*> rows[] = {{0, "00"},
                                              {15, "3C"},
                                              {-1, "FC"},
                                              {-16, "C0"},
                                              {16, "01 10"},
                                              {-17, "01 EF"},
                                              {127, "01 7F"},
                                              {-128, "01 80"},
                                              {128, "02 80 00"},
                                              {-129, "02 7F FF"},
                                              {32767, "02 FF 7F"},
                                              {-32768, "02 00 80"},
                                              {32768, "03 00 80 00 00"},
                                              {-32769, "03 FF 7F FF FF"},
                                              {0x7FFFFFFF, "03 FF FF FF 7F"},
                                              {-0x7FFFFFFF - 1, "03 00 00 00 80"}};
  for (const auto& [value, bytes] : rows) {
    Writer out;
    coding::writeInt(out, value);
    EXPECT_EQ(hex(out), bytes);
    Reader in(bytes);
    EXPECT_EQ(coding::readInt(in), value) << bytes;
  }
}

TEST(CompactInt, AnyOtherHeaderIsAValueWhateverItsLowBits) {
  for (int header = 0; header < 256; ++header) {
    if (header >= 1 && header <= 3) continue;
    Reader in(std::string(1, static_cast<char>(header)), 3);
    EXPECT_EQ(coding::readInt(in), static_cast<signed char>(header) >> 2) << header;
  }
}

TEST(CompactInt, AShortStreamNamesWhatIsMissing) {
  const std::pair<const char*, const wchar_t*> rows[] = {{"", L"EOF reading int header"},
                                                         {"01", L"EOF reading int as byte"},
                                                         {"02 80", L"EOF reading int as short"},
                                                         {"03 FF FF FF", L"EOF reading int as int"}};
  for (const auto& [bytes, message] : rows)
    expectMessage(message, [bytes = bytes] {
      Reader in(bytes);
      coding::readInt(in);
    });
}

TEST(WideString, HasTheseBytesInEachVersion) {
  const std::tuple<int, const wchar_t*, const char*> rows[] = {
      {2, nullptr, "00"},
      {2, L"", "04"},
      {2, L"A", "08 41"},
      {2, L"\xE9", "08 C3 A9"},
      {1, L"A", "08 41 00"},
      {1, L"\x20AC", "08 AC 20"},
      {3, L"\x7FF\x800\xFFFF", "10 DF BF E0 A0 80 EF BF BF"},
      {3, L"\xD83D\xDE00", "0C ED A0 BD ED B8 80"},
      {3, L"\U0001F600", "0C ED A0 BD ED B8 80"},
      {1, L"\xD83D\xDE00", "0C 3D D8 00 DE"}};
  for (const auto& [version, text, bytes] : rows) {
    Writer out(version);
    coding::writeWide(out, text);
    EXPECT_EQ(hex(out), bytes);
    Reader in(bytes, version);
    tovin::WideString read(L"before");
    coding::readWide(in, read);
    EXPECT_TRUE(read == text) << bytes;
    EXPECT_EQ(in.GetRemaining(), 0u);
  }
}

TEST(WideString, AVersionBelowOneHasNoBody) {
  Writer out(0);
  coding::writeWide(out, L"");
  expectMessage(L"Unknown serialization version 0\n", [&] { coding::writeWide(out, L"A"); });
  EXPECT_EQ(hex(out), "04 08");
  Reader in("08 41", 0);
  tovin::WideString text;
  expectMessage(L"Unknown serialization version 0\n", [&] { coding::readWide(in, text); });
}

TEST(WideString, LeadBytesAreClassifiedByTheMaskOfOldRecords) {
  // Even bytes from F0 to FE ask for four bytes, FD for six, the other odd ones and stray continuations for
  // no form.
  for (int lead = 0x80; lead < 0x100; ++lead) {
    const unsigned expected = lead < 0xC0     ? 0
                              : lead < 0xE0   ? 2
                              : lead < 0xF0   ? 3
                              : lead % 2 == 0 ? 4
                              : lead == 0xFD  ? 6
                                              : 0;
    EXPECT_EQ(coding::utf8UnitLength(static_cast<unsigned char>(lead)), expected) << lead;
  }
  Reader four("08 FE 81 82 83");
  tovin::WideString text;
  coding::readWide(four, text);
  EXPECT_EQ(four.GetRemaining(), 0u);
  EXPECT_EQ(text[0], static_cast<wchar_t>((0xE << 18 | 1 << 12 | 2 << 6 | 3) & 0xFFFF));
  for (const char* bytes : {"08 80 80 80 80 80 80", "08 F1 80 80 80 80 80 80", "08 FF 80 80 80 80 80"}) {
    Reader in(bytes);
    expectMessage(L"EOF reading wchar_t additional bytes", [&] { coding::readWide(in, text); });
  }
}

TEST(WideString, AShortStreamNamesThePlace) {
  const std::tuple<int, const char*, const wchar_t*> rows[] = {
      {3, "10 41 42", L"EOF reading byte 3 in string of length 3"},
      {3, "10", L"EOF reading byte 1 in string of length 3"},
      {3, "10 41 E2 82", L"EOF reading wchar_t additional bytes"},
      {1, "10 41 00 42", L"EOF reading byte 2 in string of length 3"},
      {3, "03 FF FF FF 7F 41", L"EOF reading byte 2 in string of length 2147483646"},
      {1, "03 FF FF FF 7F 41 00", L"EOF reading byte 2 in string of length 2147483646"},
      {3, "FC 41", L"A string cannot have the count -1"}};
  for (const auto& [version, bytes, message] : rows) {
    Reader in(bytes, version);
    tovin::WideString text;
    expectMessage(message, [&] { coding::readWide(in, text); });
    EXPECT_LE(text.getLength(), 4096u);
  }
}

// Every length around the sizes of the inner pieces, with sequences of each length across their borders.
TEST(WideString, LongTextsComeBack) {
  for (int version : {1, 2, 3}) {
    for (size_t length : {340u, 341u, 511u, 512u, 513u, 1023u, 1024u, 1025u, 4095u, 4096u, 4097u, 10000u}) {
      std::wstring text;
      for (size_t i = 0; i < length; ++i) text += i % 7 == 0 ? L'\x20AC' : i % 3 == 0 ? L'\xE9' : L'x';
      Writer out(version);
      coding::writeWide(out, text.c_str());
      coding::writeInt(out, 77);
      Reader in(out);
      tovin::WideString back;
      coding::readWide(in, back);
      EXPECT_TRUE(back == text.c_str()) << length;
      EXPECT_EQ(coding::readInt(in), 77);
      std::vector<wchar_t> buffer(length + 1, L'?');
      Reader chars(out);
      coding::readInt(chars);
      coding::readWideChars(chars, buffer.data(), static_cast<int>(length));
      EXPECT_EQ(std::wstring(buffer.data(), length), text);
      // Only UTF-8 bodies are terminated here; callers terminate raw ones.
      EXPECT_EQ(buffer[length], version == 1 ? L'?' : L'\0');
    }
  }
}

// A stream that only implements read(), a byte at a time, gives the same as one with a window.
class DrippingReader : public tovin::iByteInputStream {
 public:
  explicit DrippingReader(std::string bytes) : bytes_(std::move(bytes)) {}
  size_t read(void* bytes, size_t count) override {
    const size_t given = std::min(count, bytes_.size() - at_);
    bytes_.copy(static_cast<char*>(bytes), given, at_);
    at_ += given;
    return given;
  }
  size_t at_ = 0;

 private:
  std::string bytes_;
};

TEST(WideString, TheReaderTakesNoByteBeyondItsText) {
  for (const char* text : {"10 41 E2 82 AC C3 A9", "0C C3 A9 41", "08 E2 82 AC"}) {
    const std::string bytes = unhex(text);
    DrippingReader in(bytes + "Z");
    tovin::WideString read;
    coding::readWide(in, read);
    EXPECT_EQ(in.at_, bytes.size()) << text;
  }
}

TEST(NarrowString, HasTheseBytes) {
  const std::pair<const char*, const char*> rows[] = {{nullptr, "00"}, {"", "04"}, {"a.B", "10 61 2E 42"}};
  tovin::NarrowString read("x");
  for (const auto& [text, bytes] : rows) {
    Writer out(0);
    coding::writeNarrow(out, text);
    EXPECT_EQ(hex(out), bytes);
    Reader in(bytes, 0);
    coding::readNarrow(in, read);
    EXPECT_TRUE(read == text);
  }
  Reader in("10 61 62");
  expectMessage(L"EOF reading byte 3 in string of length 3", [&] { coding::readNarrow(in, read); });
}

TEST(Utf8Unit, EncodesTheClassicFormsUpToSixBytes) {
  const std::pair<uint32_t, const char*> rows[] = {{0x7F, "7F"},
                                                   {0x80, "C2 80"},
                                                   {0x7FF, "DF BF"},
                                                   {0x800, "E0 A0 80"},
                                                   {0xFFFF, "EF BF BF"},
                                                   {0x10000, "F0 90 80 80"},
                                                   {0x1FFFFF, "F7 BF BF BF"},
                                                   {0x200000, "F8 88 80 80 80"},
                                                   {0x3FFFFFF, "FB BF BF BF BF"},
                                                   {0x4000000, "FC 84 80 80 80 80"},
                                                   {0xFFFFFFFF, "FF BF BF BF BF BF"}};
  for (const auto& [value, bytes] : rows) {
    unsigned char encoded[6];
    EXPECT_EQ(hex(encoded, coding::encodeUtf8Unit(value, encoded)), bytes);
  }
  EXPECT_EQ(coding::encodeUtf8Unit(65, nullptr), 0u);
}

}  // namespace
