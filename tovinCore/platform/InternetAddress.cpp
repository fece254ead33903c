#include "tovinCore/platform/InternetAddress.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>

namespace tovin::platform {
namespace {

using Octets = std::array<uint8_t, 4>;
static_assert(sizeof(in_addr) == sizeof(Octets));

}  // namespace

std::string toDotted(in_addr address) {
  std::string text;
  for (const uint8_t octet : std::bit_cast<Octets>(address)) {
    if (!text.empty()) text += '.';
    text += std::to_string(octet);
  }
  return text;
}

bool fromDotted(std::string_view text, in_addr& address) noexcept {
  Octets octets{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (size_t i = 0; i < octets.size(); ++i) {
    if (i > 0 && (at == end || *at++ != '.')) return false;
    const auto [rest, trouble] = std::from_chars(at, end, octets[i]);
    const bool leadingZero = rest - at > 1 && *at == '0';  // some readers would take it for octal
    if (trouble != std::errc() || leadingZero) return false;
    at = rest;
  }
  if (at != end) return false;
  address = std::bit_cast<in_addr>(octets);
  return true;
}

}  // namespace tovin::platform
