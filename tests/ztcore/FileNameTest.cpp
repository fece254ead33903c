#include "ztcore/ztFileName.h"

#include <gtest/gtest.h>

#include "tovinCore/Utf8.h"

namespace {

TEST(FileName, IsTakenApart) {
  struct Row {
    const wchar_t* name;
    const wchar_t* path;
    const wchar_t* leaf;
    const wchar_t* extension;
    bool absolute;
  };
  const Row rows[] = {{L"a/b.wsdl", L"a", L"b.wsdl", L"wsdl", false},
                      {L"a\\b.c\\d", L"a\\b.c", L"d", L"", false},
                      {L"b.tar.gz", L"", L"b.tar.gz", L"gz", false},
                      {L"/b", L"", L"b", L"", true},
                      {L"a/", L"a", L"", L"", false},
                      {L"a/.profile", L"a", L".profile", L"", false},
                      {L"a.", L"", L"a.", L"", false},
                      {L"?xsd=a/b.xsd", L"", L"", L"", false},
                      {L"a/?xsd=1", L"a", L"", L"", false},
                      {L"a?b.xsd", L"", L"a?b.xsd", L"xsd", false},
                      {L"C:\\x\\y.z", L"C:\\x", L"y.z", L"z", true},
                      {L"C:y.z", L"C:", L"y.z", L"z", true},
                      {L"http://h/a.xsd", L"http://h", L"a.xsd", L"xsd", true},
                      {L"\\\\server\\share\\f", L"\\\\server\\share", L"f", L"", true},
                      {L"", L"", L"", L"", false},
                      {nullptr, L"", L"", L"", false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(tovin::wideToUtf8(row.name));
    const ztFileName name(row.name);
    tovin::WideString path, leaf, extension;
    name.GetPath(path);
    name.GetLeaf(leaf);
    name.GetExtension(extension);
    EXPECT_EQ(path.view(), row.path);
    EXPECT_EQ(leaf.view(), row.leaf);
    EXPECT_EQ(extension.view(), row.extension);
    EXPECT_EQ(name.IsAbsolute(), row.absolute);
  }
}

TEST(FileName, OfAFolderHasNoLeaf) {
  tovin::WideString text;
  const ztFileName name(L"a/b.c", true);
  name.GetLeaf(text);
  EXPECT_TRUE(text.isEmpty());
  name.GetPath(text);
  EXPECT_EQ(text, L"a/b.c");
}

TEST(FileName, HasOneCanonicalForm) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {{L"/a/./b//c/../d.xsd", L"/a/b/d.xsd"},
                                                            {L"/../..//x", L"/x"},
                                                            {L"C:\\a\\..\\b", L"C:/b"},
                                                            {L"\\\\server\\share\\x", L"//server/share/x"},
                                                            {L"/", L"/"},
                                                            {L"http://h/../a", L"http://h/../a"}};
  for (const auto& [name, canonical] : rows) EXPECT_EQ(ztFileName(name).GetCanonicalName().view(), canonical);
  const tovin::WideString here = ztFileName(L".").GetCanonicalName();
  EXPECT_EQ(ztFileName(L"x/../y").GetCanonicalName().view(), std::wstring(here) + L"/y");
}

// So that a separator and another leaf may follow.
TEST(FileName, FolderOfABareNameIsTheCurrentOne) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"a.wsdl", L"."}, {L"/a.wsdl", L""}, {L"x/a.wsdl", L"x"}, {L"", L"."}, {nullptr, L"."}};
  for (const auto& [name, folder] : rows) {
    tovin::WideString path;
    ztFileName::ExtractPathname(name, path);
    EXPECT_EQ(path.view(), folder);
  }
}

}  // namespace
