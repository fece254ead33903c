#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tovinCore/Export.h"

namespace tovin {

/// Converts UTF-8 to wide text of UTF-16 units: a character above U+FFFF becomes its surrogate pair, a
/// surrogate that was written by itself in three bytes stays itself, a byte of no sequence becomes U+FFFD.
TOVINCORE_API std::wstring utf8ToWide(std::string_view bytes);

/// Converts wide text to UTF-8: a surrogate pair becomes one four-byte sequence, a lone surrogate three
/// bytes.
TOVINCORE_API std::string wideToUtf8(std::wstring_view text);

/// Puts the same behind a text.
TOVINCORE_API void appendUtf8(std::string& out, std::wstring_view text);

/// Like wideToUtf8 for a zero-terminated text; null gives the empty text.
TOVINCORE_API std::string wideToUtf8(const wchar_t* text);

/// The same into memory of the caller; both return how many elements they wrote, without a terminator.
/// \param out room for bytes.size() units; for utf8Length(text) bytes.
TOVINCORE_API size_t utf8ToWide(std::string_view bytes, wchar_t* out) noexcept;
TOVINCORE_API size_t wideToUtf8(std::wstring_view text, char* out) noexcept;
/// How many bytes wideToUtf8 makes of a text.
TOVINCORE_API size_t utf8Length(std::wstring_view text) noexcept;

/// True when the bytes are well-formed UTF-8 as the standard has it (no surrogates, no overlong forms).
/// \param cutShort out: true when the only fault is a sequence that the end of the bytes cuts off.
TOVINCORE_API bool isValidUtf8(std::string_view bytes, bool& cutShort);

/// How many bytes from the beginning on are ASCII; found at the speed of memory.
TOVINCORE_API size_t asciiPrefix(std::string_view bytes) noexcept;

/// The character that begins at `at`, as utf8ToWide reads it.
/// \param length out: how many bytes it took; 0 where no sequence begins.
TOVINCORE_API uint32_t decodeUtf8(std::string_view bytes, size_t at, unsigned& length) noexcept;

/// Text with one character a byte, as the reader of XML keeps that of a document, as characters. What is no
/// UTF-8, or has other characters already, stays as it is.
TOVINCORE_API std::wstring charactersOfBytes(std::wstring_view text);

}  // namespace tovin
