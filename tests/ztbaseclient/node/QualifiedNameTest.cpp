#include "tests/support/Bytes.h"
#include "ztbaseclient/node/cppNodeQName.h"
#include "ztcore/ztUniqueStrings.h"

namespace {

using namespace testsupport;

TEST(QualifiedName, SplitsAtItsFirstColon) {
  const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> rows[] = {
      {L"ns:item", L"item", L"ns"}, {L"a:b:c", L"b:c", L"a"}, {L"plain", L"plain", nullptr},
      {L":x", L":x", nullptr},      {L"a:", L"", L"a"},       {L"", L"", nullptr},
      {nullptr, nullptr, nullptr}};
  for (const auto& [text, local, prefix] : rows) {
    const cppNodeQName name(text);
    EXPECT_STREQ(name.getUriName(), prefix);
    EXPECT_STREQ(name.getLocalName(), local);
    EXPECT_STREQ(name.getQName(), text);
  }
}

TEST(QualifiedName, KeepsTheLocalNameOfTheEarlierNameAfterARename) {
  cppNodeQName name(L"x:y");
  EXPECT_STREQ(name.getLocalName(), L"y");
  name.setName(L"z");
  EXPECT_STREQ(name.getLocalName(), L"y");
  EXPECT_STREQ(name.getUriName(), L"x");
  EXPECT_STREQ(name.getQName(), L"z");
}

TEST(QualifiedName, IsBuiltAnewFromALocalName) {
  cppNodeQName name(L"a:c");
  name.getUriName();
  name.setLocalName(L"b");
  EXPECT_STREQ(name.getQName(), L"a:b");
  name.setUriName(L"other");
  EXPECT_STREQ(name.getQName(), L"a:b");
  name.setUriName(L"");
  name.setLocalName(L"d");
  EXPECT_STREQ(name.getQName(), L"d");
}

TEST(QualifiedName, GivesUpItsTexts) {
  const size_t before = ztUniqueStrings::GetCount();
  {
    cppNodeQName name(L"given:up");
    name.getLocalName();
    const cppNodeQName copy(name);
    EXPECT_EQ(copy.getQName(), name.getQName());
    name.onDeactivate();
    EXPECT_EQ(name.getQName(), nullptr);
    EXPECT_STREQ(copy.getUriName(), L"given");
  }
  EXPECT_EQ(ztUniqueStrings::GetCount(), before);
}

}  // namespace
