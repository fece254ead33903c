#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/System.h"
#include "tovinCore/Utf8.h"

namespace testsupport {

/// A folder of its own for each test, gone afterwards.
class TemporaryFolder : public testing::Test {
 protected:
  TemporaryFolder() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    folder_ = std::filesystem::temp_directory_path() /
              (std::string("ztb_") + test->test_suite_name() + "_" + test->name());
    std::filesystem::create_directory(folder_);
  }
  ~TemporaryFolder() override { std::filesystem::remove_all(folder_); }

  std::wstring path(const std::string& leaf) const {
    return tovin::utf8ToWide((folder_ / pathOf(leaf)).string());
  }

  /// Writes the bytes and gives the path.
  std::wstring file(const std::string& leaf, const std::string& bytes) const {
    std::ofstream(folder_ / pathOf(leaf), std::ios::binary) << bytes;
    return path(leaf);
  }
  void append(const std::string& leaf, const std::string& bytes) const {
    std::ofstream(folder_ / pathOf(leaf), std::ios::binary | std::ios::app) << bytes;
  }

  std::filesystem::path folder_;
};

/// The units of a text in the byte order of a file.
inline std::string utf16(const std::wstring& text, bool bigEndian = false) {
  std::string bytes;
  for (wchar_t c : text) {
    const char low = static_cast<char>(c & 0xFF), high = static_cast<char>(c >> 8 & 0xFF);
    bytes += bigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

}  // namespace testsupport
