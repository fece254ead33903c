#include "tests/tovin/xpath/Trees.h"
#include "tovin/iDataRecord.h"
#include "ztbaseclient/data/NodeLocations.h"

namespace {

using namespace testsupport;
using tovin::iNode;
using tovin::NodeReferenceSet;
using tovin::Ptr;

std::string locationOf(const iNode& node, bool useNames) {
  tovin::WideString path;
  DeepPropertyUtils::NodeLocation(node, useNames, path);
  return tovin::wideToUtf8(path);
}

TEST(NodeLocation, CountsOnlyWhereSiblingsShareAName) {
  const Ptr<iNode> root = treeOf("<a><b/><c><d/></c><B/><e/></a>");
  const std::tuple<const wchar_t*, const char*, const char*, unsigned, unsigned> rows[] = {
      {L"/a", "/a/", "/*[1]/", 0, 0},
      {L"/a/b[1]", "/a/b[1]/", "/*[1]/*[1]/", 0, 0},
      {L"/a/b[2]", "/a/B[2]/", "/*[1]/*[3]/", 2, 1},
      {L"/a/c/d", "/a/c/d/", "/*[1]/*[2]/*[1]/", 0, 0},
      {L"/a/e", "/a/e/", "/*[1]/*[4]/", 3, 0}};
  NodeLocations locations;
  for (const auto& [query, byName, byPosition, index, indexOfName] : rows) {
    NodeReferenceSet nodes;
    ASSERT_TRUE(root->query(query, 1, nodes));
    const iNode& node = *nodes[0];
    EXPECT_EQ(locationOf(node, true), byName);
    EXPECT_EQ(tovin::wideToUtf8(locations.get(node)), byName);
    EXPECT_EQ(locationOf(node, false), byPosition);
    EXPECT_EQ(DeepPropertyUtils::GetChildIndex(node, false), index) << byName;
    EXPECT_EQ(DeepPropertyUtils::GetChildIndex(node, true), indexOfName) << byName;
    // What it says leads back.
    for (bool useNames : {true, false}) {
      nodes.clear();
      ASSERT_TRUE(root->query(tovin::utf8ToWide(locationOf(node, useNames)).c_str(), 1, nodes));
      EXPECT_EQ(nodes[0], &node);
    }
  }
}

TEST(NodeLocation, TakesNamelessSiblingsAsNamesakes) {
  const Ptr<iNode> root(CBaseNode::allocate());
  for (int i = 0; i < 2; ++i) {
    const Ptr<iNode> child(CBaseNode::allocate());
    child->setName(nullptr);
    root->appendChild(child.get());
  }
  EXPECT_FALSE(DeepPropertyUtils::IsUniquelyNamedChild(*root->getChildAt(0)));
  EXPECT_TRUE(DeepPropertyUtils::IsUniquelyNamedChild(*root));
  EXPECT_EQ(locationOf(*root->getChildAt(1), true), "/Node/[2]/");
}

TEST(NodeLocation, OfManyChildrenCountsThemOnce) {
  std::string xml = "<r>";
  for (int i = 0; i < 200'000; ++i) xml += "<i/>";
  const Ptr<iNode> root = treeOf(xml + "</r>");
  NodeLocations locations;
  for (unsigned i = 0; i < root->getNumberOfChildren(); ++i) {
    ASSERT_EQ(locations.get(*root->getChildAt(i)).view(), L"/r/i[" + std::to_wstring(i + 1) + L"]/");
  }
}

TEST(MassagedPropertyName, HasAMarkForEachSpace) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {"a", "a"},
      {" ", "__white_space__"},
      {" a  b", "__white_space__a__white_space____white_space__b"},
      {"a\tb", "a\tb"}};
  for (const auto& [name, massaged] : rows) {
    tovin::NarrowString narrow(name);
    tovin::WideString wide(tovin::utf8ToWide(name).c_str());
    DeepPropertyUtils::MassagePropertyName(narrow);
    DeepPropertyUtils::MassagePropertyName(wide);
    EXPECT_STREQ(narrow.c_str(), massaged);
    EXPECT_EQ(tovin::wideToUtf8(wide), massaged);
  }
}

TEST(LocationLookup, FindsAllNodesOfALocation) {
  const Ptr<iNode> root = treeOf("<r a='1'><x p='3'/><x/><x p='5'/></r>");
  const tovin::iPropertyCollection* own = root->getProperties();
  const std::tuple<const wchar_t*, const wchar_t*, bool, Places> rows[] = {
      {L"/r/x", nullptr, true, {"/*[1]/*[1]/", "/*[1]/*[2]/", "/*[1]/*[3]/"}},
      {L"/r/x", L"p", true, {"/*[1]/*[1]/", "/*[1]/*[3]/"}},
      {L"/r/x[3]//", L"p", true, {"/*[1]/*[3]/"}},
      {L"/r/x/", L"no such", true, {}},
      {L"/", L"p", true, {"/*[1]/*[1]/", "/*[1]/*[3]/"}},
      {L"/", nullptr, true, {"/*[1]/", "/*[1]/*[1]/", "/*[1]/*[2]/", "/*[1]/*[3]/"}},
      {L"/r/x/@p", nullptr, true, {"/*[1]/*[1]/", "/*[1]/*[3]/"}},
      {L"/none", nullptr, true, {}},
      {L"", L"a", true, {"/*[1]/"}},
      {nullptr, nullptr, true, {"/*[1]/"}},
      {L"", L"none", false, {}}};
  for (const auto& [location, leaf, answer, found] : rows) {
    NodeReferenceSet nodes;
    nodes.add(root.get());
    EXPECT_EQ(DeepPropertyUtils::LocationLookup(own, location, leaf, nodes), answer);
    EXPECT_EQ(placesOf(nodes), found);
    EXPECT_EQ(DeepPropertyUtils::FirstAtLocation(own, location, leaf, nodes), answer);
    EXPECT_EQ(placesOf(nodes), Places(found.begin(), found.begin() + !found.empty()));
  }
  NodeReferenceSet nodes;
  expectMessage(L"Cannot perform lookup on property collection without node owner",
                [&] { DeepPropertyUtils::LocationLookup(nullptr, L"/r", nullptr, nodes); });
}

class Record : public tovin::iDataRecord {
 public:
  explicit Record(iNode* root) : root_(root) {}
  iNode* getRootNode() const override { return root_; }
  tovin::Class& getClass() const override { return CBaseNode::m_class; }
  const tovin::ClassTag& getClassTag() const override { return CBaseNode::Tag; }
  Object* newInstance() const override { return nullptr; }
  Object* clone() const override { return nullptr; }
  void deleteInstance() override {}

 private:
  iNode* root_;
};

// The context of the question may be held by nothing but the set that the answer goes into.
TEST(NodeSetOfAnAnswer, MayHoldTheOnlyReferenceToTheContext) {
  using Ask = bool (*)(NodeReferenceSet&);
  const Ask asks[] = {[](NodeReferenceSet& set) { return set[0]->query(L"x", 1, set); },
                      [](NodeReferenceSet& set) {
                        set[0]->findChildrenByName(L"x", set);
                        return true;
                      },
                      [](NodeReferenceSet& set) {
                        return DeepPropertyUtils::LocationLookup(set[0]->getProperties(), L"/r/x", nullptr,
                                                                 set);
                      },
                      [](NodeReferenceSet& set) {
                        Record record(set[0]);
                        tovin::WideString name;
                        return DeepPropertyUtils::DecodePropertyPath(&record, L"/r/x/p", false, set, name);
                      }};
  NodeReferenceSet set;
  for (const Ask& ask : asks) {
    set.clear();
    set.add(treeOf("<r><x p='1'/><y/><x p='2'/></r>").get());
    EXPECT_TRUE(ask(set));
    ASSERT_EQ(set.getSize(), 2u);
    EXPECT_EQ(tovin::wideToUtf8(set[1]->getProperties()->get(L"p")->getValue().getText()), "2");
    EXPECT_EQ(set[1]->findParent(), nullptr);
  }
  expectMessage(L"Query \"[\": a step is expected at position 1", [&] { set[0]->query(L"[", 1, set); });
  EXPECT_TRUE(set.isEmpty());
}

TEST(PropertyPathOfARecord, IsSplitAtItsLastSlash) {
  const Ptr<iNode> root = treeOf("<r a='1'><x p='3'/><x p='5'/></r>");
  root->getProperties()->define(L"my prop", L"", 0);
  Record record(root.get());
  const std::tuple<const wchar_t*, bool, const char*, Places> rows[] = {
      {L"a", true, "a", {"/*[1]/"}},
      {L"p", false, "p", {}},
      {L"/a", true, "a", {"/*[1]/"}},
      {L"/r/x/p", true, "p", {"/*[1]/*[1]/", "/*[1]/*[2]/"}},
      {L"x[2]/p", true, "p", {"/*[1]/*[2]/"}},
      {L"/r/my prop", true, "my prop", {"/*[1]/"}},
      {L"/r/none", false, "none", {}},
      {L"//p", true, "p", {"/*[1]/*[1]/", "/*[1]/*[2]/"}},
      {L"/r/x//p", true, "p", {"/*[1]/*[1]/", "/*[1]/*[2]/"}},
      {L"/", false, "", {}}};
  for (const auto& [path, found, leaf, places] : rows) {
    NodeReferenceSet nodes;
    tovin::WideString name;
    EXPECT_EQ(DeepPropertyUtils::DecodePropertyPath(&record, path, false, nodes, name), found) << leaf;
    EXPECT_EQ(tovin::wideToUtf8(name), leaf);
    EXPECT_EQ(placesOf(nodes), places) << leaf;
  }
  NodeReferenceSet nodes;
  tovin::WideString name(L"before");
  EXPECT_FALSE(DeepPropertyUtils::DecodePropertyPath(nullptr, L"a", true, nodes, name));
  EXPECT_TRUE(name.isEmpty());
}

}  // namespace
