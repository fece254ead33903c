#include "ztclient/answers/Markup.h"

#include <cstdint>

#include "tovinCore/Utf8.h"

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

std::string_view referenceOf(uint32_t c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    case '\r':
      return "&#13;";  // else it is read as a line feed
    default:
      return {};
  }
}

bool isAllowed(uint32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return !(c >= 0x7F && c < 0xA0) && !(c >= 0xD800 && c < 0xE000) && c != 0xFFFE && c != 0xFFFF;
}

}  // namespace

std::string markup::escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    unsigned length = 0;
    const uint32_t c = tovin::decodeUtf8(text, at, length);
    if (length == 0 || !isAllowed(c))
      out += replacement;
    else if (const std::string_view reference = referenceOf(c); !reference.empty())
      out += reference;
    else
      out += text.substr(at, length);
    at += length > 0 ? length : 1;
  }
  return out;
}

std::string markup::scriptText(std::string_view text) {
  constexpr char digits[] = "0123456789abcdef";
  std::string out = "\"";
  bool cutShort = false;
  const bool isValid = tovin::isValidUtf8(text, cutShort);
  for (const char c : isValid ? std::string(text) : tovin::wideToUtf8(tovin::utf8ToWide(text))) {
    const auto byte = static_cast<unsigned char>(c);
    // '<' could end the element that the data stands in.
    if (byte < 0x20 || c == '"' || c == '\\' || c == '<' || byte == 0x7F)
      out += std::string("\\u00") + digits[byte >> 4] + digits[byte & 15];
    else
      out += c;
  }
  return out + '"';
}
