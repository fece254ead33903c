#include "ztclient/answers/Json.h"

#include <algorithm>
#include <cmath>

#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"

namespace {

// The three bytes of a surrogate: ED, A0 to BF, any continuation.
bool isSurrogate(const std::string& text, size_t at) {
  return at + 2 < text.size() && text[at] == '\xED' && static_cast<unsigned char>(text[at + 1]) >= 0xA0;
}

// The library refuses surrogates, so each travels through it as a character of the last private plane. Real
// characters from there travel as the pair of surrogates that they are in UTF-16.
constexpr unsigned stand = 0x10F800;

// The four bytes of a character from U+10F800 on: F4, 8F, A0 to BF, any continuation.
bool isStandIn(const std::string& text, size_t at) {
  return at + 3 < text.size() && text[at] == '\xF4' && text[at + 1] == '\x8F' &&
         static_cast<unsigned char>(text[at + 2]) >= 0xA0;
}

// The low eleven bits of the character whose last two bytes stand there.
unsigned lowBits(const std::string& text, size_t at) {
  return (text[at] & 0x1Fu) << 6 | (text[at + 1] & 0x3Fu);
}

void appendStandIn(std::string& out, unsigned low) {
  const unsigned code = stand + low;
  out += {static_cast<char>(0xF4), static_cast<char>(0x80 | (code >> 12 & 0x3F)),
          static_cast<char>(0x80 | (code >> 6 & 0x3F)), static_cast<char>(0x80 | (code & 0x3F))};
}

std::string withStandIns(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size(); ++at) {
    if (isSurrogate(text, at)) {
      appendStandIn(out, lowBits(text, at + 1));
      at += 2;
    } else if (isStandIn(text, at)) {
      const unsigned low = lowBits(text, at + 2);
      appendStandIn(out, low < 0x400 ? 0x3FE : 0x3FF);
      appendStandIn(out, 0x400 | (low & 0x3FF));
      at += 3;
    } else {
      out += text[at];
    }
  }
  return out;
}

std::string withEscapes(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size(); ++at) {
    if (!isStandIn(text, at)) {
      out += text[at];
      continue;
    }
    out += tovin::wideToUtf8(tovin::format(L"\\u%04x", 0xD800 + lowBits(text, at + 2)));
    at += 3;
  }
  return out;
}

void replaceSurrogates(Json& json) {
  if (json.is_string()) {
    json = withStandIns(json.get_ref<const std::string&>());
  } else if (json.is_structured()) {
    for (Json& item : json) replaceSurrogates(item);
  }
}

}  // namespace

std::string toText(const Json& json, int indent) {
  Json prepared = json;
  replaceSurrogates(prepared);
  return withEscapes(prepared.dump(indent, ' ', false, Json::error_handler_t::replace));
}

std::string onOneLine(std::string name) {
  const bool plain =
      std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
  if (plain) return name;
  const std::string escaped = toText(Json(name));
  return escaped.substr(1, escaped.size() - 2);
}

Json numberOf(double number) {
  if (std::isfinite(number)) return number;
  return std::isnan(number) ? "NaN" : number > 0 ? "Infinity" : "-Infinity";
}

Json bitsOn(const tovin::BitsetValue& bits) {
  Json on = Json::array();
  for (unsigned bit = bits.getNextNoCheck(0); bit < bits.getNumBits(); bit = bits.getNextNoCheck(bit + 1)) {
    on.push_back(bit);
  }
  return on;
}
