// Settings in a file, where there is no registry.
#include <sys/stat.h>

#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "ztcore/ztRegistry.h"

namespace {

using namespace testsupport;
using tovin::WideString;

class Settings : public testing::Test {
 protected:
  static constexpr const char* file = "dravolin/settings.ini";

  // A key that comes to be with its first value.
  ztRegistry created(const wchar_t* key) {
    ztRegistry registry;
    EXPECT_TRUE(registry.Connect(ztRegistry::CurrentUser) && registry.Create(key));
    return registry;
  }

  ztRegistry opened(const wchar_t* key) {
    ztRegistry registry;
    EXPECT_TRUE(registry.Connect(ztRegistry::CurrentUser) && registry.Open(key));
    return registry;
  }

  // "-" when there is no such value.
  static std::wstring valueOf(const ztRegistry& registry, const wchar_t* name) {
    WideString value;
    return registry.GetValue(name, value) ? std::wstring(value.view()) : L"-";
  }

  OwnSettings own_;
  const TempFolder& folder_ = own_.folder();
};

TEST_F(Settings, ValuesAreFoundUnderTheirKeys) {
  folder_.write(file,
                "\xEF\xBB\xBF[A\\b_1]\r\n# x=comment\r\n; x=too\r\n  X = one two \r\nx=second\r\nq=\" = "
                "\"\r\nempty=\r\n"
                "no setting\r\n[broken\r\n[other]\nx=2\n[a\\B_1]\nlate=\xC3\xA9");
  const ztRegistry registry = opened(L"a\\B_1");
  EXPECT_EQ(valueOf(registry, L"x"), L"one two");
  EXPECT_EQ(valueOf(registry, L"Q"), L" = ");
  EXPECT_EQ(valueOf(registry, L"empty"), L"");
  EXPECT_EQ(valueOf(registry, L"late"), L"\xE9");
  EXPECT_EQ(valueOf(registry, L"no setting"), L"-");
  EXPECT_EQ(valueOf(registry, nullptr), L"-");
  EXPECT_EQ(valueOf(opened(L"OTHER"), L"x"), L"2");
}

TEST_F(Settings, WhatIsMissingIsNoKey) {
  ztRegistry registry;
  EXPECT_FALSE(registry.Open(L"a"));
  ASSERT_TRUE(registry.Connect(ztRegistry::CurrentUser));
  EXPECT_FALSE(registry.Open(L"a"));
  EXPECT_FALSE(registry.Open(nullptr));
  folder_.write(file, "x=1\n[b]\n");
  EXPECT_FALSE(registry.Open(L"a"));
  EXPECT_FALSE(registry.Open(L""));
  EXPECT_EQ(valueOf(registry, L"x"), L"-");
}

TEST_F(Settings, WritingLeavesTheOtherLinesAlone) {
  folder_.write(file, "# mine\n[a]\nx=1\n\n[b]\n\xFF\xFE junk\n");
  ztRegistry registry = opened(L"A");
  registry.SetValue(L"y", L" padded ");
  registry.SetValue(L"X", L"\"quoted\"");
  ASSERT_TRUE(registry.Create(L"c"));
  registry.SetValue(L"z", L"\xE9");
  EXPECT_EQ(folder_.read(file),
            "# mine\n[a]\nX=\"\"quoted\"\"\ny=\" padded \"\n\n[b]\n\xFF\xFE junk\n[c]\nz=\xC3\xA9\n");
  EXPECT_EQ(valueOf(opened(L"a"), L"x"), L"\"quoted\"");
  EXPECT_EQ(valueOf(opened(L"a"), L"y"), L" padded ");
}

TEST_F(Settings, TextsThatALineCannotHoldAreRefused) {
  ztRegistry registry = created(L"k");
  registry.SetValue(L"n", nullptr);
  for (const wchar_t* name : {L"", L" n", L"#n", L"[n]", L"a=b", L"a\nb"}) {
    EXPECT_THROW(registry.SetValue(name, L"2"), tovin::Exception);
  }
  EXPECT_THROW(registry.SetValue(L"n", L"2\n[k]"), tovin::Exception);
  for (const wchar_t* key : {L" k", L"k\t", L"k\f", L"k\n"}) {
    EXPECT_THROW(created(key).SetValue(L"n", L"1"), tovin::Exception) << "would not be read back";
  }
  EXPECT_EQ(folder_.read(file), "[k]\nn=\n");
}

TEST_F(Settings, FileThatCannotBeReadIsToldAndNeverReplaced) {
  const std::string path = folder_.write(file, std::string((1 << 20) + 1, 'x'));
  ztRegistry registry;
  ASSERT_TRUE(registry.Connect(ztRegistry::CurrentUser));
  expectMessage(L"Settings file " + tovin::utf8ToWide(path) + L" is longer than 1048576 bytes",
                [&] { registry.Open(L"k"); });
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  const std::wstring unreadable = L"Unable to read settings file " + tovin::utf8ToWide(path);
  expectMessage(unreadable, [&] { registry.Open(L"k"); });
  ASSERT_TRUE(registry.Create(L"k"));
  expectMessage(unreadable, [&] { registry.SetValue(L"n", L"1"); });
  std::filesystem::remove(path);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);  // nobody writes to it
  expectMessage(unreadable, [&] { registry.Open(L"k"); });
}

TEST_F(Settings, LinkedFileIsReplacedWhereItLies) {
  const std::string real = folder_.write("elsewhere.ini", "[k]\n");
  std::filesystem::create_directory(folder_.path("dravolin"));
  std::filesystem::create_symlink(real, folder_.path(file));
  std::filesystem::permissions(real, std::filesystem::perms(0640));
  opened(L"k").SetValue(L"n", L"1");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.path(file)));
  EXPECT_EQ(folder_.read("elsewhere.ini"), "[k]\nn=1\n");
  EXPECT_EQ(std::filesystem::status(real).permissions(), std::filesystem::perms(0640));
}

TEST_F(Settings, FolderIsNeverTakenFromWhereTheProcessStands) {
  const ScopedVariable relative("XDG_CONFIG_HOME", "settings");
  const ScopedVariable home("HOME", folder_.path("home"));
  folder_.write("home/.config/dravolin/settings.ini", "[k]\nn=1\n");
  EXPECT_EQ(valueOf(opened(L"k"), L"n"), L"1");
  const ScopedVariable homeless("HOME", nullptr);
  EXPECT_FALSE(ztRegistry().Connect(ztRegistry::CurrentUser));
}

}  // namespace
