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

TEST(PropertyName, OfTwoPropertiesIsOneText) {
  CProperty a, b;
  a.SetName(L"one text");
  b.SetName(std::wstring(L"one text").c_str());
  EXPECT_EQ(a.getName(), b.getName());
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

}  // namespace
