#include "tovinCore/Base64.h"

#include <array>
#include <cstdint>

namespace tovin::base64 {
namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t none = 0xFF;

constexpr std::array<uint8_t, 256> makeReverse() {
  std::array<uint8_t, 256> table{};
  table.fill(none);
  for (uint8_t i = 0; i < 64; ++i) table[static_cast<unsigned char>(alphabet[i])] = i;
  return table;
}
constexpr std::array<uint8_t, 256> reverse = makeReverse();

template <class Char>
uint32_t valueOf(Char c) {
  const auto code = static_cast<uint32_t>(
      static_cast<std::make_unsigned_t<std::conditional_t<sizeof(Char) == 1, char, Char>>>(c));
  return code < 256 ? reverse[code] : none;
}

template <class Char>
void putGroup(uint32_t group, Char* to) {
  to[0] = static_cast<Char>(alphabet[group >> 18]);
  to[1] = static_cast<Char>(alphabet[group >> 12 & 63]);
  to[2] = static_cast<Char>(alphabet[group >> 6 & 63]);
  to[3] = static_cast<Char>(alphabet[group & 63]);
}

template <class Char>
void encodeTo(const unsigned char* bytes, size_t count, Char* to) {
  for (; count >= 3; bytes += 3, count -= 3, to += 4)
    putGroup(static_cast<uint32_t>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]), to);
  if (count == 0) return;
  putGroup(static_cast<uint32_t>(bytes[0] << 16 | (count == 2 ? bytes[1] << 8 : 0)), to);
  if (count == 1) to[2] = Char('=');
  to[3] = Char('=');
}

template <class Char>
void encodeInto(const unsigned char* bytes, size_t count, std::basic_string<Char>& out) {
  out.resize(encodedLength(count));
  encodeTo(bytes, count, out.data());
}

// The group of the first `characters` of four, the rest taken as zero bits; false for a foreign one.
template <class Char>
bool takeGroup(const Char* from, size_t characters, uint32_t& group) {
  group = 0;
  uint32_t seen = 0;
  for (size_t i = 0; i < characters; ++i) {
    const uint32_t value = valueOf(from[i]);
    seen |= value;
    group |= (value & 63) << (18 - 6 * i);
  }
  return seen < 64;
}

template <class Char>
bool decodeTo(std::basic_string_view<Char> text, unsigned char* to, size_t& count) {
  count = 0;
  if (text.size() % 4 != 0) return false;
  if (text.empty()) return true;
  const auto put = [&](uint32_t group, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) to[i] = static_cast<unsigned char>(group >> (16 - 8 * i));
    to += bytes;
  };
  const Char* from = text.data();
  const Char* const last = from + text.size() - 4;
  uint32_t group = 0;
  for (; from < last; from += 4) {
    if (!takeGroup(from, 4, group)) return false;
    put(group, 3);
  }
  const size_t padding = last[3] != Char('=') ? 0 : last[2] != Char('=') ? 1 : 2;
  const uint32_t leftOver = (1u << 8 * padding) - 1;
  if (!takeGroup(last, 4 - padding, group) || (group & leftOver) != 0) return false;
  put(group, 3 - padding);
  count = decodedRoom(text.size()) - padding;
  return true;
}

template <class Char>
bool decodeAll(std::basic_string_view<Char> text, std::vector<unsigned char>& out) {
  out.resize(decodedRoom(text.size()));
  size_t count = 0;
  const bool decoded = decodeTo(text, out.data(), count);
  out.resize(count);
  return decoded;
}

}  // namespace

void encode(const unsigned char* bytes, size_t count, std::string& out) { encodeInto(bytes, count, out); }
void encode(const unsigned char* bytes, size_t count, std::wstring& out) { encodeInto(bytes, count, out); }
bool decode(std::string_view text, std::vector<unsigned char>& out) { return decodeAll(text, out); }
bool decode(std::wstring_view text, std::vector<unsigned char>& out) { return decodeAll(text, out); }

void encode(const unsigned char* bytes, size_t count, char* out) noexcept { encodeTo(bytes, count, out); }
void encode(const unsigned char* bytes, size_t count, wchar_t* out) noexcept { encodeTo(bytes, count, out); }
bool decode(std::string_view text, unsigned char* out, size_t& count) noexcept {
  return decodeTo(text, out, count);
}
bool decode(std::wstring_view text, unsigned char* out, size_t& count) noexcept {
  return decodeTo(text, out, count);
}

}  // namespace tovin::base64
