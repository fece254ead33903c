#pragma once

#include <filesystem>
#include <string>

namespace tovin::platform {

/// A file's name from UTF-8. Not every system takes a narrow text for that.
inline std::filesystem::path pathOf(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

}  // namespace tovin::platform
