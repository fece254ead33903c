#include "ztcore/ztBlowFish.h"

#include "tests/support/Bytes.h"

namespace {

using Bytes = tovin::Array<unsigned char>;

std::string enciphered(const char* key, const std::string& text) {
  Bytes out;
  ztBlowFish::Encrypt(key, text.c_str(), out);
  return testsupport::hex(out.data(), out.getSize());
}

TEST(BlowFish, AgreesWithThePublishedVectors) {
  EXPECT_EQ(enciphered("abcdefghijklmnopqrstuvwxyz", "BLOWFISH"), "32 4E D0 FE F4 13 A2 03");
  EXPECT_EQ(enciphered("Who is John Galt?", testsupport::unhex("FEDCBA9876543210")),
            "CC 91 73 2B 80 22 F6 84");
}

TEST(BlowFish, TextsFillWholeBlocksAndComeBack) {
  for (size_t length : {0u, 1u, 7u, 8u, 9u, 16u, 1000u}) {
    const std::string text(length, 'x');
    Bytes cipher{1};
    ztBlowFish::Encrypt("key", text.c_str(), cipher);
    EXPECT_EQ(cipher.getSize(), (length + 7) / 8 * 8);
    tovin::NarrowString back("before");
    EXPECT_TRUE(ztBlowFish::Decrypt("key", cipher, back));
    EXPECT_EQ(back.view(), text);
  }
}

TEST(BlowFish, OnlyWholeBlocksAreDeciphered) {
  for (size_t length : {1u, 7u, 9u}) {
    Bytes cipher;
    cipher.setSize(length);
    tovin::NarrowString out("before");
    EXPECT_FALSE(ztBlowFish::Decrypt("key", cipher, out)) << length;
    EXPECT_TRUE(out.isNull());
  }
}

TEST(BlowFish, AKeyInUseGivesWayToTheNext) {
  const std::string first = enciphered("first key", "text"), second = enciphered("second key", "text");
  EXPECT_NE(first, second);
  EXPECT_EQ(enciphered("first key", "text"), first);
  Bytes out;
  for (size_t length : {0u, 57u}) {
    EXPECT_THROW(ztBlowFish::Encrypt(std::string(length, 'k').c_str(), "text", out), tovin::Exception);
  }
  EXPECT_EQ(enciphered("second key", "text"), second);
}

}  // namespace
