#include "tovinCore/Utf8.h"

#include <cstdint>
#include <cstring>

#include "tovinCore/Units.h"

namespace tovin {
namespace {

// Lead byte to sequence length and the smallest value that the length may carry; 0 for a byte that leads
// nothing.
struct Lead {
  unsigned length;
  uint32_t smallest;
  uint32_t bits;
};

Lead classify(unsigned char byte) {
  if (byte < 0x80) return {1, 0, byte};
  if (byte < 0xC2) return {0, 0, 0};
  if (byte < 0xE0) return {2, 0x80, byte & 0x1Fu};
  if (byte < 0xF0) return {3, 0x800, byte & 0x0Fu};
  if (byte < 0xF5) return {4, 0x10000, byte & 0x07u};
  return {0, 0, 0};
}

constexpr size_t lengthOf(uint32_t value) {
  return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

// For a value of two bytes or more.
char* putUtf8(char* out, uint32_t value) {
  const auto put = [&](uint32_t byte) { *out++ = static_cast<char>(byte); };
  const auto putRest = [&](unsigned shift) { put(0x80 | (value >> shift & 0x3F)); };
  switch (lengthOf(value)) {
    case 2:
      put(0xC0 | value >> 6);
      putRest(0);
      break;
    case 3:
      put(0xE0 | value >> 12);
      putRest(6);
      putRest(0);
      break;
    default:
      put(0xF0 | value >> 18);
      putRest(12);
      putRest(6);
      putRest(0);
  }
  return out;
}

// Calls body(value) for each character: a surrogate pair joined, a lone surrogate as itself.
template <class Body>
void forCharacters(std::wstring_view text, Body&& body) {
  uint32_t high = 0;
  const auto flush = [&] {
    if (high) body(high);
    high = 0;
  };
  const auto take = [&](char16_t unit) {
    if (high && isLowSurrogate(unit)) {
      body(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00u));
      high = 0;
      return;
    }
    flush();
    if (isHighSurrogate(unit))
      high = unit;
    else
      body(uint32_t{unit});
  };
  for (wchar_t c : text) {
    const auto element = static_cast<uint32_t>(c);
    if (element < 0x80 && !high)
      body(element);
    else
      forUnits(element, take);
  }
  flush();
}

// The element count of the ASCII that a text begins with, in whole blocks of a size that compilers work on at
// once.
constexpr size_t asciiBlock = 8;
size_t asciiPrefix(std::wstring_view text) noexcept {
  size_t at = 0;
  for (; at + asciiBlock <= text.size(); at += asciiBlock) {
    uint32_t seen = 0;
    for (size_t i = 0; i < asciiBlock; ++i) seen |= static_cast<uint32_t>(text[at + i]);
    if (seen >= 0x80) break;
  }
  return at;
}

}  // namespace

size_t asciiPrefix(std::string_view bytes) noexcept {
  constexpr size_t step = 64;
  size_t at = 0;
  for (; bytes.size() - at >= step; at += step) {
    uint64_t words[step / sizeof(uint64_t)], bits = 0;
    std::memcpy(words, bytes.data() + at, step);
    for (uint64_t word : words) bits |= word;
    if (bits & 0x8080808080808080) break;
  }
  uint64_t word;
  for (; bytes.size() - at >= sizeof word; at += sizeof word) {
    std::memcpy(&word, bytes.data() + at, sizeof word);
    if (word & 0x8080808080808080) break;
  }
  if (bytes.size() >= sizeof word && bytes.size() - at < sizeof word) {  // the rest, with some once more
    std::memcpy(&word, bytes.data() + bytes.size() - sizeof word, sizeof word);
    if (!(word & 0x8080808080808080)) return bytes.size();
  }
  while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80) ++at;
  return at;
}

uint32_t decodeUtf8(std::string_view bytes, size_t at, unsigned& length) noexcept {
  const Lead lead = classify(static_cast<unsigned char>(bytes[at]));
  length = 0;
  if (lead.length == 0 || bytes.size() - at < lead.length) return 0;
  uint32_t value = lead.bits;
  for (unsigned i = 1; i < lead.length; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[at + i]);
    if ((byte & 0xC0) != 0x80) return 0;
    value = value << 6 | (byte & 0x3Fu);
  }
  if (value < lead.smallest || value > 0x10FFFF) return 0;
  length = lead.length;
  return value;
}

size_t utf8ToWide(std::string_view bytes, wchar_t* out) noexcept {
  wchar_t* to = out;
  for (size_t at = 0; at < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    if (byte < 0x80) {
      *to++ = static_cast<wchar_t>(byte);
      ++at;
      continue;
    }
    unsigned length = 0;
    const uint32_t value = decodeUtf8(bytes, at, length);
    forUnits(length ? value : 0xFFFD, [&](char16_t unit) { *to++ = static_cast<wchar_t>(unit); });
    at += length ? length : 1;
  }
  return static_cast<size_t>(to - out);
}

std::wstring utf8ToWide(std::string_view bytes) {
  std::wstring out(bytes.size(), L'\0');
  out.resize(utf8ToWide(bytes, out.data()));
  return out;
}

size_t wideToUtf8(std::wstring_view text, char* out) noexcept {
  const size_t ascii = asciiPrefix(text);
  for (size_t at = 0; at < ascii; at += asciiBlock) {
    for (size_t i = 0; i < asciiBlock; ++i) out[at + i] = static_cast<char>(text[at + i]);
  }
  char* to = out + ascii;
  text.remove_prefix(ascii);
  forCharacters(text, [&](uint32_t value) {
    if (value < 0x80)
      *to++ = static_cast<char>(value);
    else
      to = putUtf8(to, value);
  });
  return static_cast<size_t>(to - out);
}

size_t utf8Length(std::wstring_view text) noexcept {
  size_t length = asciiPrefix(text);
  text.remove_prefix(length);
  forCharacters(text, [&](uint32_t value) { length += lengthOf(value); });
  return length;
}

void appendUtf8(std::string& out, std::wstring_view text) {
  const size_t before = out.size();
  out.resize(before + utf8Length(text));
  wideToUtf8(text, out.data() + before);
}

std::string wideToUtf8(std::wstring_view text) {
  std::string out;
  appendUtf8(out, text);
  return out;
}

std::string wideToUtf8(const wchar_t* text) {
  return text ? wideToUtf8(std::wstring_view(text)) : std::string();
}

bool isValidUtf8(std::string_view bytes, bool& cutShort) {
  cutShort = false;
  for (size_t at = asciiPrefix(bytes); at < bytes.size(); at += asciiPrefix(bytes.substr(at))) {
    unsigned length = 0;
    const uint32_t value = decodeUtf8(bytes, at, length);
    if (length == 0) {
      const Lead lead = classify(static_cast<unsigned char>(bytes[at]));
      cutShort = lead.length > bytes.size() - at;
      for (size_t i = at + 1; i < bytes.size(); ++i) {
        if ((static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80) cutShort = false;
      }
      return false;
    }
    if (value >= 0xD800 && value < 0xE000) return false;
    at += length;
  }
  return true;
}

std::wstring charactersOfBytes(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (const wchar_t c : text) {
    if (static_cast<uint32_t>(c) > 0xFF) return std::wstring(text);
    bytes += static_cast<char>(c);
  }
  bool cutShort = false;
  return isValidUtf8(bytes, cutShort) ? utf8ToWide(bytes) : std::wstring(text);
}

}  // namespace tovin
