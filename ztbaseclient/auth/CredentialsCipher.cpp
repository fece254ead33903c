#include "ztbaseclient/auth/CredentialsCipher.h"

#include "tovin/SecretString.h"
#include "tovinCore/Base64.h"
#include "tovinCore/Exception.h"
#include "ztcore/ztBlowFish.h"

namespace base64 = tovin::base64;

namespace {

constexpr char key[] = "7m4q90215x8d36vtk";

}  // namespace

size_t credentialscipher::encipheredLength(size_t count) noexcept {
  constexpr size_t block = ztBlowFish::blockSize;
  return (base64::encodedLength(count) + block - 1) / block * block;
}

void credentialscipher::encipher(const unsigned char* clear, size_t count,
                                 tovin::Array<unsigned char>& cipher) {
  tovin::SecretString<char> text;
  base64::encode(clear, count, text.allocate(base64::encodedLength(count)));
  ztBlowFish::Encrypt(key, text.text(), cipher);
}

void credentialscipher::decipher(const tovin::Array<unsigned char>& cipher, tovin::SecretBytes& clear) {
  tovin::NarrowString deciphered;
  if (!ztBlowFish::Decrypt(key, cipher, deciphered)) throw tovin::Exception(L"Decrypt failed");
  const tovin::SecretString<char> text(std::move(deciphered));
  clear.resize(base64::decodedRoom(text.text().getLength()));
  size_t count = 0;
  if (!base64::decode(text.text().view(), clear.data(), count)) throw tovin::Exception(L"Decode failed");
  clear.resize(count);
}
