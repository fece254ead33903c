#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// The UTF-8 of a text that holds one character a byte, as the reader of XML keeps those of a document; empty
/// for null.
inline std::string bytesOf(std::wstring_view text) {
  std::string bytes(text.size(), '\0');
  std::transform(text.begin(), text.end(), bytes.begin(), [](wchar_t c) { return static_cast<char>(c); });
  return bytes;
}
inline std::string bytesOf(const wchar_t* text) {
  return text ? bytesOf(std::wstring_view(text)) : std::string();
}
