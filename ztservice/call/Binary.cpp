#include "ztservice/call/Binary.h"

#include "tovinCore/Base64.h"

namespace ztservice::call {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

namespace {

int base64Digit(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  return c == '+' ? 62 : c == '/' ? 63 : -1;
}

}  // namespace

void Base64Decoder::decode(std::string_view text, std::string& out) {
  for (const char c : text) {
    const int digit = base64Digit(c);
    if (digit < 0) continue;
    bits_ = bits_ << 6 | static_cast<uint32_t>(digit);
    count_ += 6;
    if (count_ < 8) continue;
    count_ -= 8;
    out += static_cast<char>(bits_ >> count_ & 0xFF);
  }
}

std::string base64Of(std::string_view bytes) {
  std::string text;
  tovin::base64::encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), text);
  return text;
}

std::string bytesOfBase64(std::string_view text) {
  std::string out;
  out.reserve(text.size() / 4 * 3);
  Base64Decoder().decode(text, out);
  return out;
}

std::string hexOf(std::string_view bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    out += digits[static_cast<unsigned char>(c) >> 4];
    out += digits[static_cast<unsigned char>(c) & 15];
  }
  return out;
}

std::string bytesOfHex(std::string_view text) {
  std::string out;
  int high = -1;
  for (const char c : text) {
    const int digit = hexDigit(c);
    if (digit < 0) continue;
    if (high >= 0) out += static_cast<char>(high * 16 + digit);
    high = high >= 0 ? -1 : digit;
  }
  return out;
}

std::string idOf(std::string_view reference) {
  if (!reference.starts_with("cid:")) return {};
  reference.remove_prefix(4);
  std::string id;
  for (size_t at = 0; at < reference.size(); ++at) {
    const bool isEscape = reference[at] == '%' && at + 2 < reference.size() &&
                          hexDigit(reference[at + 1]) >= 0 && hexDigit(reference[at + 2]) >= 0;
    if (!isEscape) {
      id += reference[at];
      continue;
    }
    id += static_cast<char>(hexDigit(reference[at + 1]) * 16 + hexDigit(reference[at + 2]));
    at += 2;
  }
  return id;
}

}  // namespace ztservice::call
