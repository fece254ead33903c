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
void encodeInto(const unsigned char* bytes, size_t count, std::basic_string<Char>& out) {
  out.resize((count + 2) / 3 * 4);
  Char* to = out.data();
  const auto put = [&](uint32_t group, int characters) {
    for (int i = 0; i < 4; ++i)
      *to++ = static_cast<Char>(i < characters ? alphabet[group >> (18 - 6 * i) & 63] : '=');
  };
  size_t at = 0;
  for (; count - at >= 3; at += 3)
    put(static_cast<uint32_t>(bytes[at] << 16 | bytes[at + 1] << 8 | bytes[at + 2]), 4);
  if (count - at == 2) put(static_cast<uint32_t>(bytes[at] << 16 | bytes[at + 1] << 8), 3);
  if (count - at == 1) put(static_cast<uint32_t>(bytes[at] << 16), 2);
}

template <class Char>
bool decodeGroups(std::basic_string_view<Char> text, std::vector<unsigned char>& out) {
  if (text.size() % 4 != 0) return false;
  size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == Char('=')) ++padding;
  out.resize(text.size() / 4 * 3);
  unsigned char* to = out.data();
  for (size_t at = 0; at < text.size(); at += 4) {
    const bool last = at + 4 == text.size();
    const size_t characters = last ? 4 - padding : 4;
    uint32_t group = 0;
    for (size_t i = 0; i < 4; ++i) {
      const uint32_t value = i < characters ? valueOf(text[at + i]) : 0;
      if (value == none) return false;
      group = group << 6 | value;
    }
    if (group & ((1u << 8 * (4 - characters)) - 1)) return false;
    *to++ = static_cast<unsigned char>(group >> 16);
    *to++ = static_cast<unsigned char>(group >> 8);
    *to++ = static_cast<unsigned char>(group);
  }
  out.resize(out.size() - padding);
  return true;
}

template <class Char>
bool decodeAll(std::basic_string_view<Char> text, std::vector<unsigned char>& out) {
  const bool decoded = decodeGroups(text, out);
  if (!decoded) out.clear();
  return decoded;
}

}  // namespace

void encode(const unsigned char* bytes, size_t count, std::string& out) { encodeInto(bytes, count, out); }
void encode(const unsigned char* bytes, size_t count, std::wstring& out) { encodeInto(bytes, count, out); }
bool decode(std::string_view text, std::vector<unsigned char>& out) { return decodeAll(text, out); }
bool decode(std::wstring_view text, std::vector<unsigned char>& out) { return decodeAll(text, out); }

}  // namespace tovin::base64
