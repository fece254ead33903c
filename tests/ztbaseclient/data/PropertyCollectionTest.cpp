#include "ztbaseclient/data/CPropertyCollection.h"

#include "tests/support/Bytes.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"

namespace {

using namespace testsupport;

class Collection : public testing::Test {
 protected:
  std::wstring names() const {
    std::wstring all;
    for (unsigned i = 0; i < properties_->getSize(); ++i) ((all += properties_->get(i)->getName()) += L' ');
    return all;
  }
  tovin::Ptr<CPropertyCollection> properties_{CPropertyCollection::allocate()};
};

TEST_F(Collection, OnlySevenBitsOfTheFlagsReachAProperty) {
  EXPECT_EQ(properties_->define(L"a", 0x82)->getInfo()->getMetaDataFlags().getBits(), 0x02u);
  EXPECT_EQ(properties_->define(L"b", L"text", 0xFF)->getInfo()->getMetaDataFlags().getBits(), 0x7Fu);
  EXPECT_TRUE(properties_->find(L"a")->hasNullValue());
  EXPECT_STREQ(properties_->find(L"B")->getValue().getText(), L"text");
}

TEST_F(Collection, DefiningTwiceIsRefused) {
  properties_->define(L"a", 1.5, 0);
  expectMessage(L"Property A already exists\n", [&] { properties_->define(L"A", 0); });
  expectMessage(L"Property a already exists\n", [&] { properties_->define(L"a", tovin::NullValue(), 0); });
  EXPECT_EQ(trailOf([&] { properties_->define(L"a", 2.0, 0); }), "CPropertyCollection.define(double) ");
}

TEST_F(Collection, WithoutANodeASlashIsALetter) {
  properties_->define(L"/x/y", L"here", 0);
  EXPECT_TRUE(properties_->isDefined(L"/X/Y"));
  EXPECT_EQ(properties_->find(L"/x/z"), nullptr);
  EXPECT_EQ(properties_->findIndex(L"//y"), -1);
  EXPECT_FALSE(properties_->remove(L"/x/z"));
  properties_->rename(L"/x/y", L"/a");
  EXPECT_EQ(names(), L"/a ");
  expectMessage(L"Cannot perform lookup on property collection without node owner",
                [&] { properties_->define(L"/x/y", tovin::iPropertyCollection::hierarchical); });
}

TEST_F(Collection, MissingPropertiesAreErrorsWhereTheyAreRequired) {
  EXPECT_THROW(properties_->get(0u), tovin::InvalidIndexException);
  EXPECT_THROW(properties_->remove(0u), tovin::InvalidIndexException);
  EXPECT_FALSE(properties_->remove(L"x"));
}

TEST_F(Collection, KeepingNothingChangesNothing) {
  for (const wchar_t* name : {L"a", L"b", L"c"}) properties_->define(name, 0);
  properties_->keep({}, true);
  EXPECT_EQ(names(), L"a b c ");
  properties_->reorder({L"c"}, false);
  EXPECT_EQ(names(), L"c b a ");
  properties_->keep({L"A", L"new"}, true);
  EXPECT_EQ(names(), L"a new ");
}

TEST_F(Collection, CopiesFromAnotherOne) {
  const tovin::Ptr<CPropertyCollection> source(CPropertyCollection::allocate());
  source->define(L"a", 1.5, 0x02);
  source->define(L"b", tovin::IntegerValue(7), 0);
  for (bool whole : {true, false}) {
    properties_->define(L"gone", 0);
    properties_->assignFrom(source.get(), whole);
    EXPECT_EQ(names(), L"a b ");
    EXPECT_EQ(properties_->find(L"a")->getInfo()->getMetaDataFlags().getBits() & 0x02, 0x02u);
    EXPECT_TRUE(properties_->find(L"b")->getValue().equals(tovin::IntegerValue(7)));
    properties_->assignFrom(nullptr, whole);
    properties_->assignFrom(properties_.get(), whole);
    EXPECT_EQ(names(), L"a b ");
  }
  expectMessage(L"Property a already exists\n", [&] { properties_->appendFrom(source.get()); });
  source->removeAll();
  source->define(L"c", 0);
  properties_->appendFrom(source.get());
  EXPECT_EQ(names(), L"a b c ");
}

TEST_F(Collection, APropertyKnowsItsCollection) {
  auto* property = properties_->define(L"a", 0);
  EXPECT_EQ(property->getParent(), properties_.get());
  const tovin::Ptr<tovin::iProperty> held(property);
  properties_->removeAll();
  EXPECT_EQ(property->getParent(), nullptr);
  EXPECT_STREQ(property->getName(), L"a") << "it outlives its removal for who holds it";
}

}  // namespace
