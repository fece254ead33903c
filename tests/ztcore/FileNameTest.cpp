#include "ztcore/ztFileName.h"

#include <gtest/gtest.h>

#include "tovinCore/Utf8.h"

namespace {

// "path|leaf|extension", and whether the name is absolute.
std::wstring partsOf(const ztFileName& name) {
  tovin::WideString path, leaf, extension;
  name.GetPath(path);
  name.GetLeaf(leaf);
  name.GetExtension(extension);
  const std::wstring parts = std::wstring(path) + L"|" + leaf.c_str() + L"|" + extension.c_str();
  return name.IsAbsolute() ? parts + L" absolute" : parts;
}

TEST(FileName, IsTakenApart) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"a/b.wsdl", L"a|b.wsdl|wsdl"},
      {L"a\\b.c\\d", L"a\\b.c|d|"},
      {L"b.tar.gz", L"|b.tar.gz|gz"},
      {L"/b", L"|b| absolute"},
      {L"a/", L"a||"},
      {L"a/.profile", L"a|.profile|"},
      {L"a.", L"|a.|"},
      {L"?xsd=a/b.xsd", L"||"},
      {L"a/?xsd=1", L"a||"},
      {L"a?b.xsd", L"|a?b.xsd|xsd"},
      {L"C:\\x\\y.z", L"C:\\x|y.z|z absolute"},
      {L"C:y.z", L"C:|y.z|z absolute"},
      {L"http://h/a.xsd", L"http://h|a.xsd|xsd absolute"},
      {L"\\\\server\\share\\f", L"\\\\server\\share|f| absolute"},
      {nullptr, L"||"}};
  for (const auto& [name, parts] : rows) EXPECT_EQ(partsOf(ztFileName(name)), parts);
  EXPECT_EQ(partsOf(ztFileName(L"a/b.c", true)), L"a/b.c||") << "a folder has no leaf";
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
