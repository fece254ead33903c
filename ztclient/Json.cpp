#include "ztclient/Json.h"

#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"

namespace {

// The three bytes of a surrogate: ED, A0 to BF, any continuation.
bool isSurrogate(const std::string& text, size_t at) {
  return at + 2 < text.size() && text[at] == '\xED' && static_cast<unsigned char>(text[at + 1]) >= 0xA0;
}

// The library refuses surrogates, so each travels through it as a character of the last private plane.
constexpr unsigned stand = 0x10F800;

std::string withStandIns(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size(); ++at) {
    if (!isSurrogate(text, at)) {
      out += text[at];
      continue;
    }
    const unsigned low = (text[at + 1] & 0x1Fu) << 6 | (text[at + 2] & 0x3Fu);
    const unsigned code = stand + low;
    out += {static_cast<char>(0xF4), static_cast<char>(0x80 | (code >> 12 & 0x3F)),
            static_cast<char>(0x80 | (code >> 6 & 0x3F)), static_cast<char>(0x80 | (code & 0x3F))};
    at += 2;
  }
  return out;
}

std::string withEscapes(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size(); ++at) {
    const bool standIn = at + 3 < text.size() && text[at] == '\xF4' && text[at + 1] == '\x8F' &&
                         static_cast<unsigned char>(text[at + 2]) >= 0xA0;
    if (!standIn) {
      out += text[at];
      continue;
    }
    const unsigned low = (text[at + 2] & 0x1Fu) << 6 | (text[at + 3] & 0x3Fu);
    out += tovin::wideToUtf8(tovin::format(L"\\u%04x", 0xD800 + low));
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

Json bitsOn(const tovin::BitsetValue& bits) {
  Json on = Json::array();
  for (unsigned bit = bits.getNextNoCheck(0); bit < bits.getNumBits(); bit = bits.getNextNoCheck(bit + 1)) {
    on.push_back(bit);
  }
  return on;
}
