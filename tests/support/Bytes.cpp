#include "tests/support/Bytes.h"

#include <cctype>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace testsupport {

std::string hex(const unsigned char* bytes, size_t count) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) text += ' ';
    text += {digits[bytes[i] >> 4], digits[bytes[i] & 15]};
  }
  return text;
}

std::string unhex(const std::string& text) {
  std::string digits;
  bool comment = false;
  for (char c : text) {
    comment = c == '#' || (comment && c != '\n');
    if (comment || std::isspace(static_cast<unsigned char>(c))) continue;
    if (!std::isxdigit(static_cast<unsigned char>(c)))
      throw std::invalid_argument("not hexadecimal: " + text);
    digits += c;
  }
  if (digits.size() % 2) throw std::invalid_argument("half a byte: " + text);
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  return bytes;
}

std::string unhexFile(const std::string& name) {
  std::ifstream in(std::string(ZTB_TEST_DATA "/") + name);
  if (!in) throw std::invalid_argument("no such file: " + name);
  return unhex(std::string(std::istreambuf_iterator<char>(in), {}));
}

std::string utf16(const std::wstring& text, bool bigEndian) {
  std::string bytes;
  for (wchar_t c : text) {
    const char low = static_cast<char>(c & 0xFF), high = static_cast<char>(c >> 8 & 0xFF);
    bytes += bigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

tovin::Array<unsigned char> arrayOf(const std::string& bytes) {
  return tovin::Array<unsigned char>(std::vector<unsigned char>(bytes.begin(), bytes.end()));
}

}  // namespace testsupport
