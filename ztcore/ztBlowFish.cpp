#include "ztcore/ztBlowFish.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <string>

#include "tovinCore/Exception.h"
#include "ztcore/BlowFishPi.h"

// After B. Schneier, "Description of a New Variable-Length Key, 64-Bit Block Cipher (Blowfish)", 1993: 16
// rounds, a block as two words with the more significant byte first.
namespace {

constexpr size_t longestKey = 56;
constexpr size_t rounds = 16;
constexpr size_t wordSize = sizeof(uint32_t);

uint32_t bigEndian(uint32_t word) noexcept {
  return std::endian::native == std::endian::little ? __builtin_bswap32(word) : word;
}

struct Block {
  uint32_t left;
  uint32_t right;
};

Block load(const unsigned char* from) noexcept {
  Block block;
  std::memcpy(&block, from, sizeof block);
  return {bigEndian(block.left), bigEndian(block.right)};
}

void store(Block block, unsigned char* to) noexcept {
  block = {bigEndian(block.left), bigEndian(block.right)};
  std::memcpy(to, &block, sizeof block);
}

// A key expanded.
class Cipher {
 public:
  explicit Cipher(const char* key);

  bool hasKey(const char* key) const { return key_ == key; }
  void encipher(unsigned char* out, const unsigned char* in, size_t bytes) const noexcept {
    each(out, in, bytes, subkeys_);
  }
  void decipher(unsigned char* out, const unsigned char* in, size_t bytes) const noexcept {
    each(out, in, bytes, reversed_);
  }

 private:
  using Subkeys = std::array<uint32_t, rounds + 2>;

  uint32_t mixed(uint32_t word) const noexcept {
    return ((boxes_[0][word >> 24] + boxes_[1][word >> 16 & 0xFF]) ^ boxes_[2][word >> 8 & 0xFF]) +
           boxes_[3][word & 0xFF];
  }
  template <size_t count>
  void crypt(Block (&blocks)[count], const Subkeys& subkeys) const noexcept;
  template <size_t count>
  void cryptBytes(unsigned char* out, const unsigned char* in, const Subkeys& subkeys) const noexcept;
  void each(unsigned char* out, const unsigned char* in, size_t bytes, const Subkeys& subkeys) const noexcept;
  void expand();

  std::string key_;
  Subkeys subkeys_;
  // Deciphering is the same work with the subkeys from the other end.
  Subkeys reversed_;
  std::array<std::array<uint32_t, 256>, 4> boxes_;
};

Cipher::Cipher(const char* key) : key_(key) {
  if (key_.empty()) throw tovin::Exception("Blowfish failed: the key is empty");
  if (key_.size() > longestKey) {
    throw tovin::Exception("Blowfish failed: a key of %d bytes, at most %d are possible", key_.size(),
                           longestKey);
  }
  expand();
}

void Cipher::expand() {
  std::copy_n(blowfishPi.begin(), subkeys_.size(), subkeys_.begin());
  std::copy_n(blowfishPi.begin() + subkeys_.size(), blowfishPi.size() - subkeys_.size(), boxes_[0].data());
  size_t at = 0;
  for (uint32_t& subkey : subkeys_) {
    uint32_t word = 0;
    for (size_t i = 0; i < wordSize; ++i, ++at) {
      word = word << 8 | static_cast<unsigned char>(key_[at % key_.size()]);
    }
    subkey ^= word;
  }
  Block block[1] = {{0, 0}};
  const auto fill = [&](uint32_t* words, size_t count) {
    for (size_t i = 0; i < count; i += 2) {
      crypt(block, subkeys_);
      words[i] = block[0].left;
      words[i + 1] = block[0].right;
    }
  };
  fill(subkeys_.data(), subkeys_.size());
  for (auto& box : boxes_) fill(box.data(), box.size());
  std::reverse_copy(subkeys_.begin(), subkeys_.end(), reversed_.begin());
}

// Several blocks at once: each waits for its own table look-ups only.
template <size_t count>
void Cipher::crypt(Block (&blocks)[count], const Subkeys& subkeys) const noexcept {
  for (size_t round = 0; round < rounds; round += 2) {
#pragma GCC unroll 4
    for (size_t i = 0; i < count; ++i) blocks[i].left ^= subkeys[round];
#pragma GCC unroll 4
    for (size_t i = 0; i < count; ++i) blocks[i].right ^= mixed(blocks[i].left) ^ subkeys[round + 1];
#pragma GCC unroll 4
    for (size_t i = 0; i < count; ++i) blocks[i].left ^= mixed(blocks[i].right);
  }
  for (Block& block : blocks) block = {block.right ^ subkeys[rounds + 1], block.left ^ subkeys[rounds]};
}

template <size_t count>
void Cipher::cryptBytes(unsigned char* out, const unsigned char* in, const Subkeys& subkeys) const noexcept {
  Block blocks[count];
  for (size_t i = 0; i < count; ++i) blocks[i] = load(in + i * sizeof(Block));
  crypt(blocks, subkeys);
  for (size_t i = 0; i < count; ++i) store(blocks[i], out + i * sizeof(Block));
}

void Cipher::each(unsigned char* out, const unsigned char* in, size_t bytes,
                  const Subkeys& subkeys) const noexcept {
  constexpr size_t together = 4;
  const unsigned char* const end = in + bytes;
  for (; static_cast<size_t>(end - in) >= together * sizeof(Block); in += together * sizeof(Block)) {
    cryptBytes<together>(out, in, subkeys);
    out += together * sizeof(Block);
  }
  for (; in != end; in += sizeof(Block), out += sizeof(Block)) cryptBytes<1>(out, in, subkeys);
}

const Cipher& cipherFor(const char* key) {
  thread_local std::unique_ptr<Cipher> last;
  if (!last || !last->hasKey(key)) last = std::make_unique<Cipher>(key);
  return *last;
}

constexpr size_t wholeBlocks(size_t bytes) {
  return (bytes + ztBlowFish::blockSize - 1) / ztBlowFish::blockSize * ztBlowFish::blockSize;
}

}  // namespace

void ztBlowFish::Encrypt(const char* key, const char* text, tovin::Array<unsigned char>& out) {
  const Cipher& cipher = cipherFor(key);
  const size_t length = text ? std::strlen(text) : 0;
  out.clear();
  out.setSize(wholeBlocks(length));
  if (length) std::memcpy(out.data(), text, length);
  cipher.encipher(out.data(), out.data(), out.getSize());
}

bool ztBlowFish::Decrypt(const char* key, const tovin::Array<unsigned char>& in, tovin::NarrowString& out) {
  out.setNull();
  if (in.getSize() % blockSize != 0) return false;
  const Cipher& cipher = cipherFor(key);
  out.setLength(in.getSize());
  cipher.decipher(reinterpret_cast<unsigned char*>(out.data()), in.data(), in.getSize());
  out.setLength(out.view().find_last_not_of('\0') + 1);
  return true;
}
