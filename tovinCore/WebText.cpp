#include "tovinCore/WebText.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"

namespace tovin::util {
namespace {

constexpr auto unreserved = [] {
  std::array<bool, 128> table{};
  for (char c = 'a'; c <= 'z'; ++c) table[static_cast<size_t>(c)] = table[static_cast<size_t>(c - 32)] = true;
  for (char c : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '-', '.', '_', '~'}) {
    table[static_cast<size_t>(c)] = true;
  }
  return table;
}();

bool isUnreserved(wchar_t c) {
  const auto code = static_cast<uint32_t>(c);
  return code < unreserved.size() && unreserved[code];
}

void percentEncode(std::string_view bytes, std::wstring& out) {
  constexpr wchar_t digits[] = L"0123456789ABCDEF";
  for (char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    const wchar_t code[] = {L'%', digits[byte >> 4], digits[byte & 15]};
    out.append(code, 3);
  }
}

constexpr uint32_t noCharacter = 0x110000;

struct Reference {
  size_t length;  // 0: no reference
  uint32_t character;
};

struct Name {
  std::wstring_view text;
  uint32_t character;
};
constexpr Name names[] = {
    {L"&amp;", U'&'}, {L"&lt;", U'<'}, {L"&gt;", U'>'}, {L"&quot;", U'"'}, {L"&apos;", U'\''}};

uint32_t digitOf(wchar_t c) {
  if (c >= L'0' && c <= L'9') return static_cast<uint32_t>(c - L'0');
  const wchar_t letter = foldAscii(c);
  return letter >= L'a' && letter <= L'f' ? static_cast<uint32_t>(letter - L'a') + 10 : 16;
}

bool isCharacter(uint32_t code) { return code > 0 && code < noCharacter && (code < 0xD800 || code > 0xDFFF); }

// '&#' digits ';' | '&#x' hexadecimal digits ';'
Reference readNumeric(std::wstring_view text) {
  if (text.size() < 3) return {0, 0};
  const bool hexadecimal = text[2] == L'x' || text[2] == L'X';
  const uint32_t base = hexadecimal ? 16 : 10;
  const size_t first = hexadecimal ? 3 : 2;
  uint32_t code = 0;
  size_t at = first;
  for (; at < text.size() && digitOf(text[at]) < base; ++at) {
    code = std::min(noCharacter, code * base + digitOf(text[at]));
  }
  const bool complete = at > first && at < text.size() && text[at] == L';';
  return complete && isCharacter(code) ? Reference{at + 1, code} : Reference{0, 0};
}

Reference readReference(std::wstring_view text) {
  if (text.substr(0, 2) == L"&#") return readNumeric(text);
  for (const Name& name : names) {
    if (text.substr(0, name.text.size()) == name.text) return {name.text.size(), name.character};
  }
  return {0, 0};
}

}  // namespace

// A surrogate pair is never cut: both of its units belong to the run that is encoded.
void urlEncode(std::wstring_view text, std::wstring& out) {
  auto at = text.begin();
  while (at != text.end()) {
    const auto plainEnd = std::find_if_not(at, text.end(), isUnreserved);
    out.append(at, plainEnd);
    at = std::find_if(plainEnd, text.end(), isUnreserved);
    if (at != plainEnd) percentEncode(wideToUtf8(std::wstring_view(plainEnd, at)), out);
  }
}

std::wstring urlEncode(std::wstring_view text) {
  std::wstring out;
  urlEncode(text, out);
  return out;
}

std::wstring XMLDecode(std::wstring_view text) {
  std::wstring out;
  for (size_t at = 0; at < text.size();) {
    const size_t mark = std::min(text.find(L'&', at), text.size());
    out += text.substr(at, mark - at);
    if (mark == text.size()) break;
    const Reference reference = readReference(text.substr(mark));
    if (reference.length == 0)
      out += L'&';
    else
      forUnits(reference.character, [&](char16_t unit) { out += static_cast<wchar_t>(unit); });
    at = mark + std::max<size_t>(reference.length, 1);
  }
  return out;
}

}  // namespace tovin::util
