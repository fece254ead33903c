// A credentials string from anybody. The first byte says what the rest is: 0 the string itself, 1 its bytes
// before Base64, anything else a format version and the clear body, which no mutation would reach through the
// cipher.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tovinCore/Base64.h"
#include "tovinCore/Exception.h"
#include "ztbaseclient/auth/CCredentials.h"
#include "ztcore/ztBlowFish.h"

namespace base64 = tovin::base64;

namespace {

std::wstring sealed(uint8_t version, const uint8_t* body, size_t size) {
  std::string inner;
  base64::encode(body, size, inner);
  tovin::Array<unsigned char> cipher;
  ztBlowFish::Encrypt("7m4q90215x8d36vtk", inner.c_str(), cipher);
  std::vector<unsigned char> bytes(12);
  bytes[0] = version;
  bytes[2] = static_cast<uint8_t>(cipher.getSize() & 0xFF);
  bytes[3] = static_cast<uint8_t>(cipher.getSize() >> 8);
  bytes.insert(bytes.end(), cipher.begin(), cipher.end());
  std::wstring text;
  base64::encode(bytes.data(), bytes.size(), text);
  return text;
}

std::wstring stringOf(const uint8_t* data, size_t size) {
  if (data[0] == 0) return {data + 1, data + size};
  std::wstring text;
  if (data[0] == 1)
    base64::encode(data + 1, size - 1, text);
  else
    text = sealed(static_cast<uint8_t>(data[0] - 2), data + 1, size - 1);
  return text;
}

// Bad input is answered by the record itself: an exception of any other kind would be severe.
void requireFramework(const tovin::Exception& e) {
  for (const tovin::CatchEntry& entry : e.getTrail()) {
    if (entry.catchClass != tovin::CatchClass::framework) std::abort();
  }
}

// What was read can be written, and the string made of it verifies.
void requireWritable(CCredentials& credentials) {
  tovin::WideString text;
  credentials.GenerateCredentialsString(text);
  if (!credentials.VerifyChecksum()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  CCredentials credentials;
  try {
    credentials.SetCredentialsString(stringOf(data, size).c_str());
    static_cast<void>(credentials.VerifyChecksum());
    credentials.DecryptBody();
    requireWritable(credentials);
  } catch (const tovin::Exception& e) {
    requireFramework(e);
  }
  return 0;
}
