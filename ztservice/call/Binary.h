#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ztservice/Name.h"

// Bytes as messages have them: as digits inside, and as parts beside.
namespace ztservice::call {

// Of what refers to a part (XML-binary Optimized Packaging, WS-I Attachments Profile 1.0).
inline constexpr std::string_view includeSpace = "http://www.w3.org/2004/08/xop/include";
inline constexpr Name attachmentReference{"http://ws-i.org/profiles/basic/1.1/xsd", "swaRef"};

// Base64 as it comes; what is no digit is passed over (RFC 2045, section 6.8).
class Base64Decoder {
 public:
  void decode(std::string_view text, std::string& out);

 private:
  uint32_t bits_ = 0;
  unsigned count_ = 0;
};

std::string base64Of(std::string_view bytes);
std::string bytesOfBase64(std::string_view text);
std::string hexOf(std::string_view bytes);
std::string bytesOfHex(std::string_view text);

// What a "cid:" refers to, its escapes taken back (RFC 2392); empty where it is none.
std::string idOf(std::string_view reference);

int hexDigit(char c);

}  // namespace ztservice::call
