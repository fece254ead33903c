#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tovin/BaseString.h"
#include "ztcore/ztFile.h"

// Lines as bytes of a file, in any encoding. A file that is not decided yet reads like UTF-8.
namespace lines {

constexpr size_t none = std::string_view::npos;

// A line that must be looked at has no more bytes.
constexpr size_t maxBytes = size_t{1} << 24;

[[noreturn]] void refuseLong(const wchar_t* fileName, int64_t position);

inline bool is16Bit(ztFile::Encoding encoding) {
  return encoding == ztFile::Encoding::Utf16 || encoding == ztFile::Encoding::Utf16BigEndian;
}

// Where the first line feed at or behind `from` begins; none if there is none. Units of 16 bits are aligned
// with the beginning of the bytes.
size_t findLineFeed(std::string_view bytes, size_t from, ztFile::Encoding encoding);

// How many bytes at the beginning are whole lines.
size_t wholeLines(std::string_view bytes, ztFile::Encoding encoding);

size_t countLineFeeds(std::string_view bytes, ztFile::Encoding encoding);

// How many bytes at the beginning are ASCII, none of them zero or a carriage return.
size_t plainPrefix(std::string_view bytes);

// Takes away a carriage return at the end.
void dropReturn(std::string_view& bytes, ztFile::Encoding encoding);

// A byte of no character becomes U+DC00 plus the byte; one LF is put at the end.
void decode(std::string_view bytes, ztFile::Encoding encoding, tovin::WideString& line);

}  // namespace lines
