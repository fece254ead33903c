#include "tests/ztbaseclient/tools/DiffOutcome.h"

namespace {

using namespace testsupport;

struct DiffBinary : DiffOutcome {
  static std::string changed(std::string bytes, size_t at) {
    bytes[at] = '\xFF';
    return bytes;
  }
  std::string binary(const std::string& bytes1, const std::string& bytes2) const {
    const std::wstring file1 = file("1", bytes1), file2 = file("2", bytes2);
    return outcomeOf([&] { return CDiffFiles().CompareFilesBinary(file1.c_str(), file2.c_str()); });
  }
};

std::string sizes(const char* size1, const char* size2) {
  return std::string("error: Binary files differ in size. ") + size1 + " bytes read from file1 and " + size2 +
         " bytes read from file2.\n\tFile1: FILE1\n\tFile2: FILE2";
}

std::string bytes(const char* offset, const char* byte1, const char* byte2) {
  return std::string("error: Binary files differ at byte ") + offset + ".  Byte from file1: " + byte1 +
         ".  Byte from file2: " + byte2 + "\n\tFile1: FILE1\n\tFile2: FILE2";
}

TEST_F(DiffBinary, SizesComeBeforeBytesInEachBlock) {
  const std::string big(300'000, 'a');
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"", "", "equal"},
      {big, big, "equal"},
      {"", "a", sizes("0", "1")},
      {std::string(255, 'a'), std::string(256, 'a'), sizes("255", "256")},
      {std::string(1000, 'a'), std::string(600, 'a'), sizes("765", "600")},
      {changed(std::string(10, 'a'), 0), std::string(11, 'a'), sizes("10", "11")},
      {changed(std::string(300, 'a'), 0), std::string(400, 'a'), bytes("0", "255", "97")},
      {big, changed(changed(big, 299'999), 254), bytes("254", "97", "255")},
      {changed(big, 299'999), big, bytes("299999", "255", "97")},
      {big, big.substr(0, 261'120), sizes("261375", "261120")}};
  for (const auto& [bytes1, bytes2, expected] : cases) EXPECT_EQ(binary(bytes1, bytes2), expected);
}

TEST_F(DiffBinary, AZeroByteNearTheBeginningMakesTheFirstFileBinary) {
  struct Diff : CDiffFiles {
    using CDiffFiles::FileIsBinary;
  };
  const std::string text(1999, 'a');
  const std::pair<std::string, bool> cases[] = {{text + '\0', true},
                                                {text + "a" + '\0', false},
                                                {"", false},
                                                {utf16(L"a = 1\n"), false},
                                                {"\xE9 " + std::string(2, '\0'), true}};
  for (const auto& [bytes, binary] : cases) EXPECT_EQ(Diff().FileIsBinary(file("1", bytes).c_str()), binary);
  EXPECT_EQ(compare(text + '\0', text, 5), sizes("2000", "1999"));
  EXPECT_EQ(compare("a\n", "a\n" + std::string(1, '\0'), 5), "error: Files FILE2 is longer than FILE1");
}

TEST_F(DiffBinary, NamesBeyond8BitCannotBeShown) {
  const std::wstring file1 = file("1", "a"), euro = file("\xE2\x82\xAC", "b"), acute = file("\xC3\xA9", "b");
  CDiffFiles files;
  const auto compared = [&](const std::wstring& name) {
    return outcomeOf([&] { return files.CompareFilesBinary(file1.c_str(), name.c_str()); });
  };
  EXPECT_EQ(compared(euro), "trouble: Unable to convert character 0x20ac");
  EXPECT_TRUE(compared(acute).ends_with("\xC3\xA9")) << compared(acute);
  EXPECT_EQ(compared(path("2")), "trouble: Unable to open file FILE2");
}

}  // namespace
