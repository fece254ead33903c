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

void appendUtf8(std::string& out, uint32_t value) {
  if (value < 0x80) {
    out += static_cast<char>(value);
  } else if (value < 0x800) {
    out += static_cast<char>(0xC0 | value >> 6);
    out += static_cast<char>(0x80 | (value & 0x3F));
  } else if (value < 0x10000) {
    out += static_cast<char>(0xE0 | value >> 12);
    out += static_cast<char>(0x80 | (value >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (value & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | value >> 18);
    out += static_cast<char>(0x80 | (value >> 12 & 0x3F));
    out += static_cast<char>(0x80 | (value >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (value & 0x3F));
  }
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

std::wstring utf8ToWide(std::string_view bytes) {
  std::wstring out;
  out.reserve(bytes.size());
  for (size_t at = 0; at < bytes.size();) {
    unsigned length = 0;
    const uint32_t value = decodeUtf8(bytes, at, length);
    if (length == 0) {
      out += L'\uFFFD';
      ++at;
      continue;
    }
    at += length;
    forUnits(value, [&](char16_t unit) { out += static_cast<wchar_t>(unit); });
  }
  return out;
}

std::string wideToUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  // Most texts are ASCII from end to end.
  while (out.size() < text.size() && static_cast<uint32_t>(text[out.size()]) < 0x80) {
    out += static_cast<char>(text[out.size()]);
  }
  text.remove_prefix(out.size());
  uint32_t high = 0;
  const auto flush = [&] {
    if (high) appendUtf8(out, high);
    high = 0;
  };
  for (wchar_t c : text) {
    forUnits(static_cast<uint32_t>(c), [&](char16_t unit) {
      if (high && isLowSurrogate(unit)) {
        appendUtf8(out, 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00u));
        high = 0;
        return;
      }
      flush();
      if (isHighSurrogate(unit))
        high = unit;
      else
        appendUtf8(out, unit);
    });
  }
  flush();
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

}  // namespace tovin
