#include <gcrypt.h>

#include <random>

#include "tests/support/Bytes.h"
#include "ztcore/ztBlowFish.h"

namespace {

// Null where the peer refuses ciphers that are no federal standard.
gcry_cipher_hd_t openPeer() {
  gcry_check_version(nullptr);
  gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
  gcry_cipher_hd_t peer = nullptr;
  return gcry_cipher_open(&peer, GCRY_CIPHER_BLOWFISH, GCRY_CIPHER_MODE_ECB, 0) ? nullptr : peer;
}

TEST(BlowFish, AgreesWithAPeer) {
  const gcry_cipher_hd_t peer = openPeer();
  if (!peer) GTEST_SKIP() << "the peer offers no Blowfish";
  std::mt19937 random(1);
  const auto letters = [&](size_t count) {
    std::string text;
    while (text.size() < count) text += static_cast<char>(1 + random() % 255);
    return text;
  };
  for (size_t keyLength = 1; keyLength <= 56; ++keyLength) {
    const std::string key = letters(keyLength), text = letters(random() % 200);
    tovin::Array<unsigned char> cipher;
    ztBlowFish::Encrypt(key.c_str(), text.c_str(), cipher);
    std::string expected = text;
    expected.resize(cipher.getSize());
    ASSERT_EQ(gcry_cipher_setkey(peer, key.data(), key.size()), 0u);
    ASSERT_EQ(gcry_cipher_encrypt(peer, expected.data(), expected.size(), nullptr, 0), 0u);
    EXPECT_EQ(testsupport::hex(cipher.data(), cipher.getSize()), testsupport::hex(expected)) << keyLength;
    tovin::NarrowString back;
    EXPECT_TRUE(ztBlowFish::Decrypt(key.c_str(), cipher, back));
    EXPECT_EQ(back.view(), text);
  }
  gcry_cipher_close(peer);
}

}  // namespace
