#pragma once

#include <cstdint>

#include "tovin/Array.h"
#include "tovin/values/Value.h"

namespace tovin {

/// A row of bits. Record: compact bit count, then ⌈bits/8⌉ bytes, bit n in byte n/8 as bit n mod 8.
///
/// - Shape: 32-bit words, bit n in word n/32 as bit n mod 32. A bit beyond the end is off.
/// - Errors: InvalidIndexException(bit, bits - 1) when a bit beyond the end is switched.
class TOVIN_API BitsetValue : public ValueClass<BitsetValue> {
 public:
  static constexpr const char* ClassName = "BitsetValue";
  static const ClassTagDecl Tag;
  static PooledClassImp<BitsetValue> m_class;
  static LeakDetector m_leakDetector;

  BitsetValue() = default;
  explicit BitsetValue(unsigned bits) { resize(bits); }

  unsigned getNumBits() const noexcept { return content_.bits; }
  unsigned getNumBitsOn() const noexcept;
  bool isOn(unsigned bit) const noexcept;
  /// The first bit from `from` on that is on, getNumBits() if there is none. No bound is checked.
  unsigned getNextNoCheck(unsigned from) const noexcept;
  void setOn(unsigned bit);
  void setOff(unsigned bit);
  void setAll(bool on);
  /// New bits are off; bits beyond a smaller size are gone.
  void resize(unsigned bits);

  const Array<uint32_t>& getArray() const noexcept { return content_.words; }
  /// The bytes of the record, little-endian words cut to ⌈bits/8⌉.
  std::string getBytes() const;
  /// Takes over ⌈bits/8⌉ bytes; the bits of the last byte beyond the count are dropped.
  void setBytes(const unsigned char* bytes, unsigned bits);

  struct Content {
    unsigned bits = 0;
    Array<uint32_t> words;
    friend bool operator==(const Content& a, const Content& b) {
      return a.bits == b.bits && a.words.items() == b.words.items();
    }
  };
  void reset() override;
  WideString getText() const override;
  void serialize(iByteOutputStream& stream) const override;
  void deserialize(iByteInputStream& stream) override;

  Content& content() noexcept { return content_; }
  const Content& content() const noexcept { return content_; }

 private:
  uint32_t& wordOf(unsigned bit);
  void clearBeyondEnd() noexcept;

  Content content_;
};

}  // namespace tovin
