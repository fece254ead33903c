// Settings in the registry, and files of names that Windows alone knows.
#include <windows.h>

#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/WholeFile.h"
#include "ztcore/ztFile.h"
#include "ztcore/ztFileName.h"
#include "ztcore/ztRegistry.h"

namespace {

using tovin::WideString;

class Settings : public testing::Test {
 protected:
  Settings() { EXPECT_TRUE(registry_.Connect(ztRegistry::CurrentUser)); }

  // A value as another program would write it.
  static void put(const wchar_t* key, const wchar_t* name, DWORD type, std::wstring_view text) {
    EXPECT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, key, name, type, text.data(),
                                static_cast<DWORD>(text.size() * sizeof(wchar_t))),
              ERROR_SUCCESS);
  }

  // "-" when there is no such value.
  std::wstring valueOf(const wchar_t* name) const {
    WideString value;
    return registry_.GetValue(name, value) ? std::wstring(value.view()) : L"-";
  }

  testsupport::OwnSettings own_;
  ztRegistry registry_;
};

TEST_F(Settings, TextsAreReadHoweverTheyWereWritten) {
  const std::wstring large(5000, L'x');
  put(L"a\\b_1", L"ended", REG_SZ, std::wstring_view(L"one\x20AC\0", 5));
  put(L"a\\b_1", L"unended", REG_SZ, L"two");
  put(L"a\\b_1", L"empty", REG_SZ, L"");
  put(L"a\\b_1", L"large", REG_SZ, large);
  put(L"a\\b_1", L"variable", REG_EXPAND_SZ, std::wstring_view(L"<%ztb_none%>\0", 13));
  put(L"a\\b_1", L"number", REG_DWORD, std::wstring_view(L"\x1\0", 2));
  put(L"a\\b_1", nullptr, REG_SZ, L"default");
  ASSERT_TRUE(registry_.Open(L"A\\B_1"));
  const std::pair<const wchar_t*, std::wstring> rows[] = {{L"ENDED", L"one\x20AC"},
                                                          {L"unended", L"two"},
                                                          {L"empty", L""},
                                                          {L"large", large},
                                                          {L"variable", L"<%ztb_none%>"},
                                                          {L"number", L"-"},
                                                          {L"none", L"-"},
                                                          {L"", L"-"},
                                                          {nullptr, L"-"}};
  for (const auto& [name, value] : rows) EXPECT_EQ(valueOf(name), value) << tovin::wideToUtf8(value);
}

TEST_F(Settings, KeyComesToBeWithItsFirstValue) {
  EXPECT_FALSE(ztRegistry().Open(L"k"));
  EXPECT_FALSE(registry_.Open(L"k\\l"));
  EXPECT_FALSE(registry_.Open(L"") || registry_.Open(nullptr));
  testsupport::expectMessage(L"No settings key is open", [&] { registry_.SetValue(L"n", L"1"); });
  ASSERT_TRUE(registry_.Create(L"k\\l"));
  EXPECT_EQ(valueOf(L"n"), L"-");
  EXPECT_THROW(registry_.SetValue(L"", L"1"), tovin::Exception);
  EXPECT_FALSE(ztRegistry(registry_).Open(L"k\\l"));
  registry_.SetValue(L"n", L"\xE9\n2");
  registry_.SetValue(L"null", nullptr);
  ASSERT_TRUE(registry_.Open(L"K\\L"));
  EXPECT_EQ(valueOf(L"n"), L"\xE9\n2");
  EXPECT_EQ(valueOf(L"null"), L"");
}

TEST(FilesOfWindows, NamesMayBeLongAndOfEitherForm) {
  const testsupport::TempFolder folder;
  const std::wstring base = tovin::utf8ToWide(folder.path());
  const std::wstring deep = L"/" + std::wstring(120, L'\xE9') + L"\\" + std::wstring(150, L'b') + L"/./c.txt";
  const std::wstring name = base + deep;
  EXPECT_FALSE(tovin::platform::pathExists(name.c_str()));
  ASSERT_TRUE(tovin::platform::replaceFile(name.c_str(), "first"));
  ASSERT_TRUE(tovin::platform::replaceFile(name.c_str(), "second"));
  EXPECT_TRUE(tovin::platform::pathExists(name.c_str()) &&
              ztFile::CanOpen(name.c_str(), ztFile::ForReadingRegular));
  const std::wstring canonical(ztFileName(name.c_str()).GetCanonicalName().view());
  std::wstring marked = L"\\\\?\\" + canonical;
  for (wchar_t& c : marked) c = c == L'/' ? L'\\' : c;
  for (const std::wstring& form : {name, canonical, marked}) {
    ztFile file;
    ASSERT_TRUE(file.Open(form.c_str(), ztFile::ForReading)) << tovin::wideToUtf8(form);
    EXPECT_EQ(file.GetLength(), 6);
  }
  WideString leaf;
  ztFileName(marked.c_str()).GetLeaf(leaf);
  EXPECT_TRUE(leaf == L"c.txt");
  // What removes whole folders does not go so deep.
  ASSERT_TRUE(::DeleteFileW(marked.c_str()));
  for (int level = 0; level < 2; ++level) {
    marked.erase(marked.rfind(L'\\'));
    EXPECT_TRUE(::RemoveDirectoryW(marked.c_str()));
  }
}

TEST(FilesOfWindows, DevicesAreNoRegularFiles) {
  EXPECT_FALSE(ztFile::CanOpen(L"NUL", ztFile::ForReadingRegular));
  EXPECT_FALSE(ztFile::CanOpen(L"\\\\.\\pipe\\none", ztFile::ForReadingRegular));
}

}  // namespace
