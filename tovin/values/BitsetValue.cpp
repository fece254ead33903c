#include "tovin/values/BitsetValue.h"

#include <algorithm>
#include <bit>

#include "tovin/ByteCoding.h"
#include "tovinCore/Numbers.h"

namespace tovin {

const ClassTagDecl BitsetValue::Tag("DraVolin.value.Bitset");
LeakDetector BitsetValue::m_leakDetector(BitsetValue::ClassName);
PooledClassImp<BitsetValue> BitsetValue::m_class(BitsetValue::Tag, BitsetValue::m_leakDetector);

namespace {

constexpr unsigned wordBits = 32;
constexpr size_t wordsFor(unsigned bits) { return (size_t{bits} + wordBits - 1) / wordBits; }
constexpr size_t bytesFor(unsigned bits) { return (size_t{bits} + 7) / 8; }
constexpr uint32_t maskOf(unsigned bit) { return 1u << bit % wordBits; }

}  // namespace

void BitsetValue::reset() { content_ = {}; }

unsigned BitsetValue::getNumBitsOn() const noexcept {
  unsigned on = 0;
  for (uint32_t word : content_.words) on += static_cast<unsigned>(std::popcount(word));
  return on;
}

bool BitsetValue::isOn(unsigned bit) const noexcept {
  return bit < content_.bits && (content_.words.data()[bit / wordBits] & maskOf(bit)) != 0;
}

unsigned BitsetValue::getNextNoCheck(unsigned from) const noexcept {
  for (size_t word = from / wordBits; word < content_.words.getSize(); ++word, from = 0) {
    const uint32_t rest = content_.words.data()[word] & ~(maskOf(from) - 1);
    if (rest) return static_cast<unsigned>(word * wordBits) + static_cast<unsigned>(std::countr_zero(rest));
  }
  return content_.bits;
}

uint32_t& BitsetValue::wordOf(unsigned bit) {
  if (bit >= content_.bits) throw InvalidIndexException(bit, static_cast<long long>(content_.bits) - 1);
  return content_.words.data()[bit / wordBits];
}

void BitsetValue::setOn(unsigned bit) { wordOf(bit) |= maskOf(bit); }

void BitsetValue::setOff(unsigned bit) { wordOf(bit) &= ~maskOf(bit); }

void BitsetValue::setAll(bool on) {
  for (uint32_t& word : content_.words) word = on ? ~0u : 0u;
  clearBeyondEnd();
}

void BitsetValue::resize(unsigned bits) {
  content_.words.setSize(wordsFor(bits));
  content_.bits = bits;
  clearBeyondEnd();
}

// Bits beyond the end stay off, so that counting needs no look at it and growing shows none.
void BitsetValue::clearBeyondEnd() noexcept {
  if (content_.bits % wordBits)
    content_.words.data()[content_.words.getSize() - 1] &= maskOf(content_.bits) - 1;
}

std::string BitsetValue::getBytes() const {
  std::string bytes(bytesFor(content_.bits), '\0');
  for (size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<char>(content_.words.data()[i / 4] >> 8 * (i % 4));
  return bytes;
}

void BitsetValue::setBytes(const unsigned char* bytes, unsigned bits) {
  resize(bits);
  setAll(false);
  for (size_t i = 0; i < bytesFor(bits); ++i) {
    content_.words.data()[i / 4] |= static_cast<uint32_t>(bytes[i]) << 8 * (i % 4);
  }
  clearBeyondEnd();
}

WideString BitsetValue::getText() const {
  WideString text(L"");
  for (unsigned bit = getNextNoCheck(0); bit < content_.bits; bit = getNextNoCheck(bit + 1)) {
    if (!text.isEmpty()) text += L' ';
    text += util::integerToString(bit);
  }
  return text;
}

void BitsetValue::serialize(iByteOutputStream& stream) const {
  coding::writeInt(stream, static_cast<int32_t>(content_.bits));
  const std::string bytes = getBytes();
  if (!bytes.empty()) stream.put(bytes.data(), bytes.size());
}

void BitsetValue::deserialize(iByteInputStream& stream) {
  const int32_t bits = coding::readInt(stream);
  if (bits < 0) throw Exception(L"A bitset cannot have the count %d", bits);
  std::string bytes;
  // Piece by piece: the count claims no room before its bytes arrive.
  for (size_t left = bytesFor(static_cast<unsigned>(bits)); left > 0;) {
    char piece[1024];
    const size_t want = std::min(left, sizeof piece);
    coding::readBytes(stream, piece, want, "bitset");
    bytes.append(piece, want);
    left -= want;
  }
  setBytes(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bits));
}

}  // namespace tovin
