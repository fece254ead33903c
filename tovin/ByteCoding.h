#pragma once

#include <cstdint>
#include <string_view>

#include "tovin/BaseString.h"
#include "tovin/ByteStreams.h"
#include "tovin/Export.h"

/// The byte coding that every record is built from. All multi-byte fields are little-endian.
///
/// - Errors: a stream that ends early has one of the "EOF reading …" messages; a count that no writer can
///   have written is refused by name. What was read before stays read.
/// - Memory: a count never sizes an allocation by itself; room grows with the bytes that arrive.
namespace tovin::coding {

/// Compact integer: -16…15 one byte v << 2; else 01 + 1 byte, 02 + 2 bytes or 03 + 4 bytes, two's complement.
TOVIN_API void writeInt(iByteOutputStream& stream, int32_t value);
/// A header byte other than 01, 02 and 03 is the value itself, shifted left by 2; its low bits are not looked
/// at.
TOVIN_API int32_t readInt(iByteInputStream& stream);

/// One byte, 01 or 00; any byte but 00 reads as true.
TOVIN_API void writeBool(iByteOutputStream& stream, bool value);
TOVIN_API bool readBool(iByteInputStream& stream);

/// Wide string: compact count of units + 1 (0 for null), then the body: raw UTF-16 in streams of version 1,
/// one UTF-8 sequence a unit from version 2 on, surrogates each by itself.
TOVIN_API void writeWide(iByteOutputStream& stream, const wchar_t* text);
TOVIN_API void writeWide(iByteOutputStream& stream, const WideString& text);
/// Of a text whose units are all below U+0100, one byte each.
TOVIN_API void writeWide(iByteOutputStream& stream, std::string_view text);
TOVIN_API void writeWide(iByteOutputStream& stream, std::u16string_view text);
TOVIN_API void readWide(iByteInputStream& stream, WideString& text);
/// The body alone, of any length.
TOVIN_API void readWideBody(iByteInputStream& stream, WideString& text, int32_t count);
/// The same into a caller's buffer. \param buffer room for count units and, from version 2 on, the
/// terminator.
TOVIN_API void readWideChars(iByteInputStream& stream, wchar_t* buffer, int32_t count);
/// A count that a reader got from readInt: its number of units, or an exception for a negative one.
TOVIN_API int32_t checkedCount(int32_t count);

/// 8-bit string: compact count of bytes + 1 (0 for null), then the bytes.
TOVIN_API void writeNarrow(iByteOutputStream& stream, const char* text);
TOVIN_API void readNarrow(iByteInputStream& stream, NarrowString& text);

/// Exactly count bytes or the exception "EOF reading %hs".
TOVIN_API void readBytes(iByteInputStream& stream, void* bytes, size_t count, const char* what);

/// The classic UTF-8 form of up to six bytes; returns how many, 0 for a null out. \param out room for six
/// bytes.
TOVIN_API unsigned encodeUtf8Unit(uint32_t value, unsigned char* out) noexcept;
/// Decodes what the lead byte asks for; returns the length, 0 for a lead byte of no form.
/// \param bytes as many as utf8UnitLength of the first one.
TOVIN_API unsigned decodeUtf8Unit(const unsigned char* bytes, uint32_t& value) noexcept;
/// The length that a lead byte asks for, by the tests that all written records rely on; 0 for no form.
TOVIN_API unsigned utf8UnitLength(unsigned char lead) noexcept;

}  // namespace tovin::coding
