#pragma once

#include <filesystem>
#include <string>

#include "tovinCore/Utf8.h"

namespace tovin::platform {

/// A file's name from UTF-8. Not every system takes a narrow text for that.
inline std::filesystem::path pathOf(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

/// The name of a file as wide text.
inline std::wstring wideOf(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return utf8ToWide(std::string(text.begin(), text.end()));
}

}  // namespace tovin::platform
