#include "ztcore/ztFile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tovinCore/Utf8.h"

namespace {

// A file name of its own for each test, gone afterwards.
class Files : public testing::Test {
 protected:
  Files() { std::filesystem::create_directory(folder_); }
  ~Files() override { std::filesystem::remove_all(folder_); }
  std::wstring name(const wchar_t* leaf) const { return tovin::utf8ToWide((folder_ / "").string()) + leaf; }

  std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() /
      (std::string("ztb_") + testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(Files, WhatIsWrittenIsReadBack) {
  const std::wstring path = name(L"\x20ACuro \xE9.txt");
  ztFile file;
  ASSERT_TRUE(file.Open(path.c_str(), ztFile::ForWriting));
  file.Write("abcdef", 6);
  file.Close();
  ASSERT_TRUE(file.Open(path.c_str(), ztFile::ForAppending));
  file.Write("gh", 2);
  ASSERT_TRUE(file.Open(path.c_str(), ztFile::ForReading));
  EXPECT_EQ(file.GetLength(), 8);
  unsigned char bytes[10];
  file.Seek(5);
  EXPECT_EQ(file.Read(bytes, 10), 3u);
  EXPECT_EQ(std::string(bytes, bytes + 3), "fgh");
  EXPECT_EQ(file.Read(bytes, 10), 0u);
}

TEST_F(Files, AskingWhetherAFileCanBeOpenedChangesNothing) {
  const std::wstring path = name(L"probe");
  EXPECT_FALSE(ztFile::CanOpen(path.c_str(), ztFile::ForWriting));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "probe"));
  ztFile file;
  ASSERT_TRUE(file.Open(path.c_str(), ztFile::ForWriting));
  file.Write("x", 1);
  file.Close();
  EXPECT_TRUE(ztFile::CanOpen(path.c_str(), ztFile::ForWriting));
  EXPECT_EQ(std::filesystem::file_size(folder_ / "probe"), 1u);
}

TEST_F(Files, AFolderIsNoFile) {
  EXPECT_FALSE(ztFile::CanOpen(name(L"").c_str(), ztFile::ForReading));
  EXPECT_FALSE(ztFile::CanOpen(name(L"missing").c_str(), ztFile::ForReading));
  EXPECT_FALSE(ztFile::CanOpen(nullptr, ztFile::ForReading));
}

}  // namespace
