#include "ztclient/terminal/Escaping.h"

#include <algorithm>
#include <cstdint>

#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"

namespace {

bool isControl(uint32_t c) { return (c < 0x20 && c != '\t' && c != '\n') || (c >= 0x7F && c <= 0x9F); }

bool turnsDirection(uint32_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069);
}

void append(std::string& out, const wchar_t* pattern, uint32_t number) {
  out += tovin::wideToUtf8(tovin::format(pattern, number));
}

}  // namespace

std::string escaping::shown(std::string_view utf8) {
  std::string out;
  for (size_t at = 0; at < utf8.size();) {
    unsigned length = 0;
    const uint32_t c = tovin::decodeUtf8(utf8, at, length);
    if (length == 0)
      append(out, L"\\x%02x", static_cast<unsigned char>(utf8[at]));
    else if (isControl(c) || turnsDirection(c))
      append(out, L"\\u%04x", c);
    else
      out += utf8.substr(at, length);
    at += std::max(length, 1u);
  }
  return out;
}

size_t escaping::wholeCharacters(std::string_view utf8) noexcept {
  constexpr size_t longest = 4;
  for (size_t back = 1; back < longest && back <= utf8.size(); ++back) {
    const auto byte = static_cast<unsigned char>(utf8[utf8.size() - back]);
    if (byte < 0x80) break;
    if (byte < 0xC0) continue;
    const size_t needed = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
    return back < needed ? utf8.size() - back : utf8.size();
  }
  return utf8.size();
}
