#include "ztcore/ztFile.h"

#include "tests/support/TempFolder.h"

namespace {

class Files : public testsupport::FolderTest {};

TEST_F(Files, WhatIsWrittenIsReadBack) {
  const std::wstring name = path("\xE2\x82\xAC \xC3\xA9.txt");
  ztFile file;
  ASSERT_TRUE(file.Open(name.c_str(), ztFile::ForWriting));
  file.Write("abcdef", 6);
  file.Close();
  ASSERT_TRUE(file.Open(name.c_str(), ztFile::ForAppending));
  file.Write("gh", 2);
  ASSERT_TRUE(file.Open(name.c_str(), ztFile::ForReading));
  EXPECT_EQ(file.GetLength(), 8);
  unsigned char bytes[10];
  file.Seek(5);
  EXPECT_EQ(file.Read(bytes, 10), 3u);
  EXPECT_EQ(std::string(bytes, bytes + 3), "fgh");
  EXPECT_EQ(file.Read(bytes, 10), 0u);
}

TEST_F(Files, AskingWhetherAFileCanBeOpenedChangesNothing) {
  const std::wstring name = path("probe");
  EXPECT_FALSE(ztFile::CanOpen(name.c_str(), ztFile::ForWriting));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("probe")));
  ztFile file;
  ASSERT_TRUE(file.Open(name.c_str(), ztFile::ForWriting));
  file.Write("x", 1);
  file.Close();
  EXPECT_TRUE(ztFile::CanOpen(name.c_str(), ztFile::ForWriting));
  EXPECT_EQ(std::filesystem::file_size(folder_.path("probe")), 1u);
}

TEST_F(Files, AFolderIsNoFile) {
  EXPECT_FALSE(ztFile::CanOpen(path("").c_str(), ztFile::ForReading));
  EXPECT_FALSE(ztFile::CanOpen(path("missing").c_str(), ztFile::ForReading));
  EXPECT_FALSE(ztFile::CanOpen(nullptr, ztFile::ForReading));
}

}  // namespace
