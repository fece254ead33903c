#include "tovinCore/platform/Paths.h"

#include "tovinCore/Units.h"

namespace tovin::platform {
namespace {

constexpr wchar_t firstStray = 0xDC80;
constexpr wchar_t lastStray = 0xDCFF;
constexpr wchar_t toByte = 0xDC00;

}  // namespace

std::wstring fileName(std::string_view bytes) {
  bool cutShort = false;
  if (isValidUtf8(bytes, cutShort)) return utf8ToWide(bytes);
  std::wstring name;
  for (size_t at = 0; at < bytes.size();) {
    unsigned length = 0;
    decodeUtf8(bytes, at, length);
    const std::string_view sequence = bytes.substr(at, length);
    if (length > 0 && isValidUtf8(sequence, cutShort)) {
      name += utf8ToWide(sequence);
      at += length;
    } else {
      name += static_cast<wchar_t>(toByte + static_cast<unsigned char>(bytes[at++]));
    }
  }
  return name;
}

std::string fileNameBytes(std::wstring_view name) {
  std::string bytes;
  for (size_t at = 0; at < name.size();) {
    const bool paired = at > 0 && isHighSurrogate(static_cast<char16_t>(name[at - 1]));
    if (name[at] >= firstStray && name[at] <= lastStray && !paired) {
      bytes += static_cast<char>(name[at++] - toByte);
      continue;
    }
    size_t end = at + 1;
    while (end < name.size() && !(name[end] >= firstStray && name[end] <= lastStray &&
                                  !isHighSurrogate(static_cast<char16_t>(name[end - 1]))))
      ++end;
    appendUtf8(bytes, name.substr(at, end - at));
    at = end;
  }
  return bytes;
}

}  // namespace tovin::platform
