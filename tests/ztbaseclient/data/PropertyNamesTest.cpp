#include <gtest/gtest.h>

#include "tovin/Ptr.h"
#include "ztbaseclient/data/CProperty.h"
#include "ztcore/ztUniqueStrings.h"

namespace {

using tovin::MetaDataFlags;

TEST(PropertyName, BeginningWithUnderscoreIsKeptPrivate) {
  const size_t shared = ztUniqueStrings::GetCount();
  CProperty property;
  property.SetName(L"_private name");
  EXPECT_TRUE(property.HasAllocatedName());
  EXPECT_EQ(ztUniqueStrings::GetCount(), shared);
  property.SetName(L"shared after private");
  EXPECT_FALSE(property.HasAllocatedName());
  EXPECT_TRUE(property.getMetaDataFlags().has(MetaDataFlags::sharedName));
  property.SetName(L"_again");
  EXPECT_STREQ(property.getName(), L"_again");
  EXPECT_FALSE(property.getMetaDataFlags().has(MetaDataFlags::sharedName));
}

TEST(PropertyName, MayBeGivenOutOfTheNameItself) {
  CProperty property;
  property.SetName(L"_abc");
  property.SetName(property.getName());
  EXPECT_STREQ(property.getName(), L"_abc");
  property.SetName(property.getName() + 1);
  EXPECT_STREQ(property.getName(), L"abc");
  property.SetName(L"a_b");
  property.SetName(property.getName() + 1);
  EXPECT_STREQ(property.getName(), L"_b");
}

TEST(PropertyName, MayBeMadePrivateDirectly) {
  const size_t shared = ztUniqueStrings::GetCount();
  CProperty property;
  property.SetAllocatedMName(L"plain");
  property.SetAllocatedMName(property.getName() + 1);
  EXPECT_STREQ(property.getName(), L"lain");
  EXPECT_EQ(ztUniqueStrings::GetCount(), shared);
  property.SetAllocatedMName(nullptr);
  EXPECT_EQ(property.getName(), nullptr);
  property.SetName(L"_x");
  property.ClearAllocatedMName();
  EXPECT_EQ(property.getName(), nullptr);
}

// The first ten thousand names that properties bring in stay; later ones go with their last property.
TEST(PropertyName, NamesWithoutEndAreGivenBack) {
  const auto use = [](int serial) {
    CProperty property;
    property.SetName((L"endless " + std::to_wstring(serial)).c_str());
    return property.getMetaDataFlags().has(MetaDataFlags::sharedName);
  };
  int serial = 0;
  while (CProperty::GetNewNameCount() < 9'999) EXPECT_TRUE(use(serial++));
  const size_t kept = ztUniqueStrings::GetCount();
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(use(serial++));
  EXPECT_EQ(ztUniqueStrings::GetCount(), kept);
  EXPECT_TRUE(use(0));  // a name that was there already is never this property's to release
}

}  // namespace
