#pragma once

#include <cstdint>

namespace tovin {

/// The flags word of a property. Bits without a name here are stored and transported as they are.
class MetaDataFlags {
 public:
  static constexpr uint32_t readOnly = 0x02;
  /// The value of a node, rather than an attribute.
  static constexpr uint32_t nodeValue = 0x08;
  /// The name is a unique string whose reference the property does not own.
  static constexpr uint32_t sharedName = 0x40;
  /// The bits that a definition may set.
  static constexpr uint32_t definable = 0x7F;

  constexpr MetaDataFlags() noexcept = default;
  constexpr MetaDataFlags(uint32_t bits) noexcept : bits_(bits) {}

  constexpr uint32_t getBits() const noexcept { return bits_; }
  constexpr bool has(uint32_t bits) const noexcept { return (bits_ & bits) != 0; }
  constexpr void set(uint32_t bits) noexcept { bits_ |= bits; }
  constexpr void clear(uint32_t bits) noexcept { bits_ &= ~bits; }
  friend constexpr bool operator==(MetaDataFlags, MetaDataFlags) = default;

 private:
  uint32_t bits_ = 0;
};

}  // namespace tovin
