#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tovinCore/Export.h"
#include "tovinCore/Utf8.h"

namespace tovin::platform {

/// A file's name out of the system's bytes, which are UTF-8 or, where the system does not ask, anything: a
/// byte that is no UTF-8 becomes a lone surrogate from U+DC80 to U+DCFF, from which fileNameBytes() makes it
/// again.
TOVINCORE_API std::wstring fileName(std::string_view bytes);
TOVINCORE_API std::string fileNameBytes(std::wstring_view name);

/// A file's name from UTF-8. Not every system takes a narrow text for that.
inline std::filesystem::path pathOf(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

/// The name of a file as wide text.
inline std::wstring wideOf(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return fileName(std::string(text.begin(), text.end()));
}

}  // namespace tovin::platform
