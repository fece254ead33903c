#include "ztcore/ztLineBytes.h"

#include <algorithm>
#include <cstdint>

#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"

namespace lines {
namespace {

using Encoding = ztFile::Encoding;

constexpr wchar_t brokenByte = 0xDC00;

unsigned char byteAt(std::string_view bytes, size_t at) { return static_cast<unsigned char>(bytes[at]); }

// Which byte of a unit is the low one.
size_t lowByte(Encoding encoding) { return encoding == Encoding::Utf16 ? 0 : 1; }

char16_t unitAt(std::string_view bytes, size_t at, size_t low) {
  return static_cast<char16_t>(byteAt(bytes, at + low) | byteAt(bytes, at + 1 - low) << 8);
}

size_t count16Bit(std::string_view bytes, size_t low) {
  size_t count = 0;
  for (size_t at = 0; at + 1 < bytes.size(); at += 2) count += unitAt(bytes, at, low) == u'\n';
  return count;
}

// In blocks of a size that the compiler knows, so that it counts many bytes at once.
size_t count8Bit(std::string_view bytes) {
  constexpr size_t lanes = 32, rounds = 255;
  size_t count = 0, at = 0;
  while (bytes.size() - at >= lanes) {
    uint8_t sums[lanes] = {};
    for (size_t round = 0; round < rounds && bytes.size() - at >= lanes; ++round, at += lanes) {
      const char* block = bytes.data() + at;
      for (size_t lane = 0; lane < lanes; ++lane)
        sums[lane] = static_cast<uint8_t>(sums[lane] + (block[lane] == '\n'));
    }
    for (uint8_t sum : sums) count += sum;
  }
  return count +
         static_cast<size_t>(std::count(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(), '\n'));
}

// The beginning in blocks of a size that the compiler knows, so that it widens many bytes at once.
wchar_t* widen(std::string_view bytes, wchar_t* out) {
  constexpr size_t lanes = 8;
  size_t at = 0;
  for (; bytes.size() - at >= lanes; at += lanes) {
    for (size_t lane = 0; lane < lanes; ++lane)
      out[at + lane] = static_cast<wchar_t>(byteAt(bytes, at + lane));
  }
  for (; at < bytes.size(); ++at) out[at] = static_cast<wchar_t>(byteAt(bytes, at));
  return out + bytes.size();
}

wchar_t* decodeUtf8Text(std::string_view bytes, wchar_t* out) {
  for (size_t at = 0; at < bytes.size();) {
    const size_t ascii = tovin::asciiPrefix(bytes.substr(at));
    out = widen(bytes.substr(at, ascii), out);
    at += ascii;
    if (at == bytes.size()) break;
    unsigned length = 0;
    const uint32_t character = tovin::decodeUtf8(bytes, at, length);
    if (length == 0)
      *out++ = static_cast<wchar_t>(brokenByte + byteAt(bytes, at++));
    else
      tovin::forUnits(character, [&](char16_t unit) { *out++ = static_cast<wchar_t>(unit); });
    at += length;
  }
  return out;
}

wchar_t* decode16Bit(std::string_view bytes, size_t low, wchar_t* out) {
  size_t at = 0;
  for (; at + 1 < bytes.size(); at += 2) *out++ = static_cast<wchar_t>(unitAt(bytes, at, low));
  if (at < bytes.size()) *out++ = static_cast<wchar_t>(brokenByte + byteAt(bytes, at));
  return out;
}

wchar_t* decodeInto(std::string_view bytes, Encoding encoding, wchar_t* out) {
  if (is16Bit(encoding)) return decode16Bit(bytes, lowByte(encoding), out);
  return encoding == Encoding::Bytes ? widen(bytes, out) : decodeUtf8Text(bytes, out);
}

}  // namespace

void refuseLong(const wchar_t* fileName, int64_t position) {
  throw tovin::Exception(L"Line at byte %d of file %ls is longer than %d bytes", position, fileName,
                         maxBytes);
}

size_t findLineFeed(std::string_view bytes, size_t from, Encoding encoding) {
  if (!is16Bit(encoding)) return bytes.find('\n', from);
  const size_t low = lowByte(encoding);
  for (size_t at = bytes.find('\n', from); at != none; at = bytes.find('\n', at + 1)) {
    const size_t unit = at - at % 2;
    if (unit + 1 < bytes.size() && unitAt(bytes, unit, low) == u'\n') return unit;
  }
  return none;
}

size_t wholeLines(std::string_view bytes, Encoding encoding) {
  // The search from the front is the faster one, so that a long line costs little.
  if (bytes.find('\n') == none) return 0;
  if (!is16Bit(encoding)) return bytes.rfind('\n') + 1;
  const size_t low = lowByte(encoding);
  size_t end = bytes.size() - bytes.size() % 2;
  while (end > 0 && unitAt(bytes, end - 2, low) != u'\n') end -= 2;
  return end;
}

size_t countLineFeeds(std::string_view bytes, Encoding encoding) {
  return is16Bit(encoding) ? count16Bit(bytes, lowByte(encoding)) : count8Bit(bytes);
}

// In blocks of a size that the compiler knows, so that it looks at many bytes at once.
size_t plainPrefix(std::string_view bytes) {
  constexpr size_t lanes = 32;
  const auto isPlain = [](char c) { return static_cast<signed char>(c) > 0 && c != '\r'; };
  size_t at = 0;
  for (; bytes.size() - at >= lanes; at += lanes) {
    uint8_t strange = 0;
    for (size_t lane = 0; lane < lanes; ++lane)
      strange = static_cast<uint8_t>(strange | (isPlain(bytes[at + lane]) ? 0 : 1));
    if (strange != 0) break;
  }
  while (at < bytes.size() && isPlain(bytes[at])) ++at;
  return at;
}

void dropReturn(std::string_view& bytes, Encoding encoding) {
  if (!is16Bit(encoding)) {
    if (bytes.ends_with('\r')) bytes.remove_suffix(1);
  } else if (bytes.size() >= 2 && unitAt(bytes, bytes.size() - 2, lowByte(encoding)) == u'\r') {
    bytes.remove_suffix(2);
  }
}

void decode(std::string_view bytes, Encoding encoding, tovin::WideString& line) {
  line.setLength(bytes.size() + 1);
  wchar_t* end = decodeInto(bytes, encoding, line.data());
  *end++ = L'\n';
  line.setLength(static_cast<size_t>(end - line.data()));
}

}  // namespace lines
