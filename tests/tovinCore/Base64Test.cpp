#include "tovinCore/Base64.h"

#include <gtest/gtest.h>

namespace base64 = tovin::base64;

namespace {

TEST(Base64, EncodesAndDecodesTheVectorsOfTheStandard) {
  const std::pair<std::string, std::string> rows[] = {{"", ""},
                                                      {"f", "Zg=="},
                                                      {"fo", "Zm8="},
                                                      {"foo", "Zm9v"},
                                                      {"foob", "Zm9vYg=="},
                                                      {"fooba", "Zm9vYmE="},
                                                      {"foobar", "Zm9vYmFy"},
                                                      {"\xFB\xFF\xBF", "+/+/"}};
  for (const auto& [plain, text] : rows) {
    const std::vector<unsigned char> bytes(plain.begin(), plain.end());
    std::string narrow;
    std::wstring wide;
    base64::encode(bytes.data(), bytes.size(), narrow);
    base64::encode(bytes.data(), bytes.size(), wide);
    EXPECT_EQ(narrow, text);
    EXPECT_EQ(wide, std::wstring(text.begin(), text.end()));
    std::vector<unsigned char> decoded;
    EXPECT_TRUE(base64::decode(narrow, decoded)) << text;
    EXPECT_EQ(decoded, bytes);
    EXPECT_TRUE(base64::decode(wide, decoded)) << text;
    EXPECT_EQ(decoded, bytes);
  }
}

TEST(Base64, RefusesWhatIsNotBase64) {
  for (const wchar_t* text : {L"Zg=", L"Zg", L"Z===", L"====", L"Zh==", L"Zm9=", L"Zg==Zg==", L"Zm 9v",
                              L"Zm9v\n", L"Zm9-", L"Zm9\xE9", L"Zm9\x106F", L"Z=g="}) {
    std::vector<unsigned char> decoded = {1};
    EXPECT_FALSE(base64::decode(std::wstring_view(text), decoded)) << std::wstring(text).size();
    EXPECT_TRUE(decoded.empty());
  }
}

}  // namespace
