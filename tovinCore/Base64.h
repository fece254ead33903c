#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tovinCore/Export.h"

/// Base64 with the standard alphabet, "=" padding and no line breaks (RFC 4648, section 4).
namespace tovin::base64 {

TOVINCORE_API void encode(const unsigned char* bytes, size_t count, std::string& out);
TOVINCORE_API void encode(const unsigned char* bytes, size_t count, std::wstring& out);

/// Decodes a whole text. Refuses (false, out empty) a character outside the alphabet, a length that is no
/// multiple of 4, padding anywhere but at the end, and bits left over in the last character.
TOVINCORE_API bool decode(std::string_view text, std::vector<unsigned char>& out);
TOVINCORE_API bool decode(std::wstring_view text, std::vector<unsigned char>& out);

/// The same into memory of the caller. encode writes encodedLength(count) characters and no terminator;
/// decode needs room for decodedRoom(text.size()) bytes, of which it writes `count`, and leaves anything
/// there when it refuses.
constexpr size_t encodedLength(size_t bytes) { return (bytes + 2) / 3 * 4; }
constexpr size_t decodedRoom(size_t characters) { return characters / 4 * 3; }
TOVINCORE_API void encode(const unsigned char* bytes, size_t count, char* out) noexcept;
TOVINCORE_API void encode(const unsigned char* bytes, size_t count, wchar_t* out) noexcept;
TOVINCORE_API bool decode(std::string_view text, unsigned char* out, size_t& count) noexcept;
TOVINCORE_API bool decode(std::wstring_view text, unsigned char* out, size_t& count) noexcept;

}  // namespace tovin::base64
