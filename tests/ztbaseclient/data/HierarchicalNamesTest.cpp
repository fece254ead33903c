#include "tests/tovin/xpath/Trees.h"
#include "tovin/values/StringValue.h"
#include "ztbaseclient/data/CPropertyCollection.h"

namespace {

using namespace testsupport;
using tovin::iNode;
using tovin::iPropertyCollection;
using tovin::MetaDataFlags;
using tovin::Ptr;

class HierarchicalName : public testing::Test {
 protected:
  const Ptr<iNode> root_ = treeOf("<r a='1' b='2'><x p='3' q='4'/><x p='5'/><y my='6'><z p='7'/></y></r>");
  iPropertyCollection& own_ = *root_->getProperties();
  iPropertyCollection& firstX_ = *root_->getChildAt(0)->getProperties();
  iPropertyCollection& secondX_ = *root_->getChildAt(1)->getProperties();
  iPropertyCollection& y_ = *root_->getChildAt(2)->getProperties();

  static std::string names(const iPropertyCollection& properties) {
    std::string names;
    for (unsigned i = 0; i < properties.getSize(); ++i)
      names += (i ? " " : "") + tovin::wideToUtf8(properties.get(i)->getName());
    return names;
  }
  static std::string textOf(const tovin::iProperty* property) {
    return property ? tovin::wideToUtf8(property->getValue().getText()) : "none";
  }
};

TEST_F(HierarchicalName, FindsTheFirstNodeThatCarriesTheLeaf) {
  y_.define(L"my prop", L"8", 0);
  root_->getChildAt(0)->setValue(tovin::StringValue(L"text"));
  for (const wchar_t* name : {L"50 %", L"u:v:w", L":", L"p:*"}) y_.define(name, L"9", 0);
  const std::wstring colons = L"/r/y/" + std::wstring(1'000'000, L':');
  const struct {
    const wchar_t* name;
    const char* text;
  } rows[] = {{L"/r/x/p", "3"},
              {L"/r/x[2]/p", "5"},
              {L"/R/X[2]/P", "5"},
              {L"/r/x/q", "4"},
              {L"/r/x[2]/q", "none"},
              {L"//p", "3"},
              {L"//z/p", "7"},
              {L"/a", "1"},
              {L"/p", "none"},
              {L"/r/a", "1"},
              {L"/r/y/my prop", "8"},
              {L"/none/p", "none"},
              {L"/r/y/50 %", "9"},
              {L"/r/x/50 %", "none"},
              {L"/r/y/", "none"},
              {L"/r/y/:", "9"},
              {L"/r/y/u:v:w", "9"},
              {L"/r/y/p:*", "9"},
              {L"/r/y/*", "none"},
              {L"/r/y/u:v", "none"},
              {colons.c_str(), "none"},
              {L"p", "none"},
              {L"r/x/p", "none"},
              {L"/*[1]/*[3]/*[1]/p", "7"},
              {L"/r/x/text-content", "text"}};
  for (const auto& row : rows) {
    const std::string shown = tovin::wideToUtf8(row.name);
    const bool defined = std::string(row.text) != "none";
    EXPECT_EQ(textOf(own_.find(row.name)), row.text) << shown;
    EXPECT_EQ(own_.isDefined(row.name), defined) << shown;
    EXPECT_EQ(own_.findIndex(row.name) >= 0, defined) << shown;
    if (!defined) {
      expectMessage(tovin::format(L"Property %ls does not exist", row.name), [&] { own_.get(row.name); });
      expectMessage(tovin::format(L"Property %ls does not exist", row.name),
                    [&] { own_.getIndex(row.name); });
    }
  }
  EXPECT_EQ(own_.findIndex(L"/r/x/q"), 1);
  EXPECT_EQ(own_.find(L"/r/x[2]/p"), secondX_.find(L"p"));
  // From any node of the tree alike.
  EXPECT_EQ(textOf(y_.find(L"/r/x/q")), "4");
  expectMessage(L"Query \"/r/[[@p]\": the query should end here at position 4",
                [&] { own_.find(L"/r/[/p"); });
}

TEST_F(HierarchicalName, DefinesElsewhereOnlyWhenTheFlagsSaySo) {
  own_.define(L"/r/x/p", L"here", 0);
  EXPECT_EQ(names(own_), "a b /r/x/p");
  EXPECT_EQ(textOf(own_.find(L"/r/x/p")), "here");

  const tovin::iProperty* there =
      own_.define(L"/r/x[2]/new", L"there", iPropertyCollection::hierarchical | 0x82);
  EXPECT_EQ(names(secondX_), "p new");
  EXPECT_EQ(textOf(there), "there");
  EXPECT_EQ(
      there->getInfo()->getMetaDataFlags().getBits() & MetaDataFlags::definable & ~MetaDataFlags::sharedName,
      MetaDataFlags::readOnly);
  own_.define(L"/own", 2.5, iPropertyCollection::hierarchical);
  EXPECT_EQ(textOf(own_.find(L"own")), "2.5");

  expectMessage(L"Property p already exists\n",
                [&] { own_.define(L"/r/x/p", iPropertyCollection::hierarchical); });
  expectMessage(L"Failed to find hierarchical location \"/r/none\"\n",
                [&] { own_.define(L"/r/none/p", iPropertyCollection::hierarchical); });
}

TEST_F(HierarchicalName, RemovesOwnPropertiesFirst) {
  own_.define(L"/r/x/p", L"here", 0);
  EXPECT_TRUE(own_.remove(L"/r/x/p"));
  EXPECT_EQ(names(firstX_), "p q");
  EXPECT_TRUE(own_.remove(L"/r/x/p"));
  EXPECT_EQ(names(firstX_), "q");
  // The first node that still carries it.
  EXPECT_TRUE(own_.remove(L"/r/x/p"));
  EXPECT_FALSE(own_.remove(L"/r/x/p"));
  EXPECT_FALSE(own_.remove(L"/none/p"));
  EXPECT_EQ(names(secondX_), "");
}

TEST_F(HierarchicalName, RenamesWithinAndBetweenCollections) {
  own_.rename(L"a", L"a");
  own_.rename(L"none", L"none");  // equal names: nothing is looked up
  own_.rename(L"a", L"A");
  EXPECT_EQ(names(own_), "A b");
  own_.rename(L"/r/x/p", L"/r/x/P");
  own_.rename(L"/r/x/q", L"/r/x/r");
  EXPECT_EQ(names(firstX_), "P r");
  own_.rename(L"/r/x[2]/p", L"moved");
  EXPECT_EQ(names(own_), "A b moved");
  EXPECT_EQ(names(secondX_), "");
  own_.define(L"fixed", L"text", MetaDataFlags::readOnly);
  own_.rename(L"fixed", L"/r/y/fixed");
  EXPECT_EQ(textOf(y_.find(L"fixed")), "text");
  EXPECT_TRUE(y_.find(L"fixed")->getInfo()->getMetaDataFlags().has(MetaDataFlags::readOnly));
  own_.rename(L"/r/y/my", L"/r/x[2]/yours");
  EXPECT_EQ(textOf(secondX_.find(L"yours")), "6");
  EXPECT_EQ(names(y_), "fixed");
}

TEST_F(HierarchicalName, IsRenamedWhereItIsFoundAndNotOntoWhatIsFound) {
  own_.rename(L"//my", L"//MY");
  EXPECT_EQ(names(y_), "MY");
  own_.rename(L"/r/x/q", L"/r/x/Q");
  secondX_.define(L"s", L"6", 0);
  own_.rename(L"/r/x/s", L"/r/x/S");
  own_.rename(L"/r/x/s", L"/r/x/t");
  EXPECT_EQ(names(firstX_), "p Q");
  EXPECT_EQ(names(secondX_), "p t");
  for (const wchar_t* to : {L"/r/x/T", L"//q", L"//t"}) {
    expectMessage(
        tovin::format(L"Destination property %ls already exists, cannot rename source property a", to),
        [&] { own_.rename(L"a", to); });
  }
  expectMessage(L"Destination property //t already exists, cannot rename source property //q",
                [&] { own_.rename(L"//q", L"//t"); });
  EXPECT_EQ(names(own_) + " " + names(firstX_) + " " + names(secondX_), "a b p Q p t");
}

TEST_F(HierarchicalName, IsNotRenamedOntoAnotherOrToNothing) {
  const struct {
    const wchar_t* from;
    const wchar_t* to;
    const wchar_t* message;
  } rows[] = {
      {L"none", L"c", L"Source property none not found to rename"},
      {L"a", L"/r/x/q", L"Destination property /r/x/q already exists, cannot rename source property a"},
      {L"a", L"B", L"Destination property B already exists, cannot rename source property a"},
      {L"a", L"", L"Source property a cannot be renamed to empty text"},
      {L"a", nullptr, L"Source property a cannot be renamed to empty text"},
      {L"a", L"/none/", L"Source property a cannot be renamed to empty text"},
      {L"a", L"/r/x/", L"Source property a cannot be renamed to empty text"},
      {L"a", L"/none/c", L"Failed to find hierarchical location \"/none\"\n"}};
  for (const auto& row : rows) expectMessage(row.message, [&] { own_.rename(row.from, row.to); });
  EXPECT_EQ(names(own_), "a b");
  EXPECT_EQ(names(firstX_), "p q");
}

TEST_F(HierarchicalName, ReordersAndKeepsInOneCollection) {
  own_.reorder({L"b", L"/r/a"}, false);
  EXPECT_EQ(names(own_), "b a");
  own_.reorder({L"/r/x/q", L"/r/x/made"}, true);
  EXPECT_EQ(names(firstX_), "q made p");
  EXPECT_TRUE(firstX_.find(L"made")->hasNullValue());
  own_.keep({L"/r/x/made"}, false);
  EXPECT_EQ(names(firstX_), "made");
  own_.keep({}, false);
  EXPECT_EQ(names(own_), "b a");
  const wchar_t* missing = L"Cannot find hierarchical location \"/none\"";
  expectMessage(missing, [&] { own_.reorder({L"a", L"/none/c"}, false); });
  expectMessage(missing, [&] { own_.keep({L"/none/c"}, false); });
  expectMessage(L"All properties for reorder must be on the same property list", [&] {
    own_.reorder({L"a", L"/r/y/my"}, false);
  });
  expectMessage(L"All properties for keep must be on the same property list", [&] {
    own_.keep({L"/r/x/made", L"/r/y/my"}, false);
  });
}

}  // namespace
