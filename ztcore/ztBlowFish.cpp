#include "ztcore/ztBlowFish.h"

#include <gcrypt.h>

#include <cstring>
#include <memory>
#include <string>

#include "tovinCore/Exception.h"

namespace {

void require(gcry_error_t outcome) {
  if (outcome) throw tovin::Exception("Blowfish failed: %hs", gcry_strerror(outcome));
}

// A program may have set the library up for itself; if not, it is done here, once, without locked memory.
bool initialise() {
  if (gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P)) return true;
  if (!gcry_check_version(GCRYPT_VERSION)) throw tovin::Exception("Blowfish failed: libgcrypt is too old");
  gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
  gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
  return true;
}

// Blowfish with a key expanded. Closing it wipes the key.
class Cipher {
 public:
  explicit Cipher(const char* key) : key_(key) {
    static const bool initialised = initialise();
    static_cast<void>(initialised);
    if (key_.empty()) throw tovin::Exception("Blowfish failed: the key is empty");
    require(gcry_cipher_open(&handle_, GCRY_CIPHER_BLOWFISH, GCRY_CIPHER_MODE_ECB, 0));
    try {
      require(gcry_cipher_setkey(handle_, key_.data(), key_.size()));
    } catch (...) {
      gcry_cipher_close(handle_);
      throw;
    }
  }
  ~Cipher() { gcry_cipher_close(handle_); }
  Cipher(const Cipher&) = delete;
  Cipher& operator=(const Cipher&) = delete;

  bool hasKey(const char* key) const { return key_ == key; }
  void encipher(unsigned char* blocks, size_t bytes) {
    if (bytes) require(gcry_cipher_encrypt(handle_, blocks, bytes, nullptr, 0));
  }
  void decipher(void* out, const unsigned char* blocks, size_t bytes) {
    if (bytes) require(gcry_cipher_decrypt(handle_, out, bytes, blocks, bytes));
  }

 private:
  std::string key_;
  gcry_cipher_hd_t handle_ = nullptr;
};

Cipher& cipherFor(const char* key) {
  thread_local std::unique_ptr<Cipher> last;
  if (!last || !last->hasKey(key)) last = std::make_unique<Cipher>(key);
  return *last;
}

constexpr size_t wholeBlocks(size_t bytes) {
  return (bytes + ztBlowFish::blockSize - 1) / ztBlowFish::blockSize * ztBlowFish::blockSize;
}

}  // namespace

void ztBlowFish::Encrypt(const char* key, const char* text, tovin::Array<unsigned char>& out) {
  const size_t length = text ? std::strlen(text) : 0;
  out.clear();
  out.setSize(wholeBlocks(length));
  if (length) std::memcpy(out.data(), text, length);
  cipherFor(key).encipher(out.data(), out.getSize());
}

bool ztBlowFish::Decrypt(const char* key, const tovin::Array<unsigned char>& in, tovin::NarrowString& out) {
  out.setNull();
  if (in.getSize() % blockSize != 0) return false;
  Cipher& cipher = cipherFor(key);
  out.setLength(in.getSize());
  cipher.decipher(out.data(), in.data(), in.getSize());
  out.setLength(out.view().find_last_not_of('\0') + 1);
  return true;
}
