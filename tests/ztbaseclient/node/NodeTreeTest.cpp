#include <gtest/gtest.h>

#include "tests/support/Bytes.h"
#include "tovin/Constants.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringValue.h"
#include "ztbaseclient/data/CPropertyCollectionData.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

using testsupport::expectMessage;

constexpr const wchar_t* nullNode = L"Error: attempting to add a null node.";
constexpr const wchar_t* ownParent = L"Error: attempting to set a data node to be its own parent.";

tovin::Ptr<CBaseNode> node(const wchar_t* name) {
  tovin::Ptr<CBaseNode> made(CBaseNode::allocate());
  made->setName(name);
  return made;
}

// A root with one child a letter.
class Children : public testing::Test {
 protected:
  Children() {
    for (size_t i = 0; i < 3; ++i) {
      children_[i] = node(std::wstring(1, static_cast<wchar_t>(L'a' + i)).c_str());
      root_->appendChild(children_[i].get());
    }
  }
  static std::wstring order(const tovin::iNode& parent) {
    std::wstring names;
    for (unsigned i = 0; i < parent.getNumberOfChildren(); ++i) names += parent.getChildAt(i)->getName();
    return names;
  }
  tovin::Ptr<CBaseNode> root_ = node(L"root");
  tovin::Ptr<CBaseNode> children_[3];
};

TEST(NodeValue, IsAPropertyMarkedAsSuch) {
  const tovin::Ptr<CBaseNode> fresh(CBaseNode::allocate());
  EXPECT_STREQ(fresh->getName(), tovin::DRV_NODE_Generic);
  EXPECT_TRUE(fresh->hasNullValue());
  EXPECT_FALSE(fresh->hasProperties());
  fresh->setValue(tovin::IntegerValue(5));
  EXPECT_TRUE(fresh->hasProperties());
  tovin::iProperty* property = fresh->getProperties()->find(L"text-content");
  EXPECT_EQ(property->getInfo()->getMetaDataFlags().getBits() & 8u, 8u);
  const tovin::Value* value = &fresh->getValue();
  fresh->setValue(tovin::IntegerValue(6));
  EXPECT_EQ(fresh->getProperties()->find(L"text-content"), property);
  EXPECT_EQ(&fresh->getValue(), value);
  fresh->setValue(fresh->getValue());
  fresh->setValue(tovin::StringValue(L"now a text"));
  EXPECT_STREQ(fresh->getValue().getText(), L"now a text");
  EXPECT_EQ(fresh->getProperties()->getSize(), 1u);
}

TEST(NodeValue, ReplacesAnAttributeOfItsName) {
  const tovin::Ptr<CBaseNode> fresh(CBaseNode::allocate());
  fresh->getProperties()->define(L"TEXT-content", L"attribute", 0x02);
  fresh->setValue(tovin::StringValue(L"value"));
  EXPECT_EQ(fresh->getProperties()->getSize(), 1u);
  EXPECT_STREQ(fresh->getValue().getText(), L"value");
}

TEST_F(Children, AppendingMovesFromTheOldParent) {
  const auto other = node(L"other");
  other->appendChild(children_[0].get());
  EXPECT_EQ(order(*root_), L"bc");
  EXPECT_EQ(order(*other), L"a");
  EXPECT_EQ(children_[0]->findParent(), other.get());
  root_->appendChild(children_[1].get());
  EXPECT_EQ(order(*root_), L"cb");
}

TEST_F(Children, AppendingAnAncestorIsRefused) {
  children_[0]->appendChild(node(L"deep").get());
  expectMessage(nullNode, [&] { root_->appendChild(nullptr); });
  expectMessage(ownParent, [&] { children_[0]->getChildAt(0)->appendChild(root_.get()); });
  expectMessage(ownParent, [&] { root_->appendChild(root_.get()); });
  expectMessage(ownParent, [&] { children_[1]->appendChild(children_[1].get()); });
  expectMessage(ownParent, [&] { root_->insertChildBefore(root_.get(), children_[0].get()); });
  EXPECT_EQ(order(*root_), L"abc");
}

TEST_F(Children, InsertingAnEarlierSiblingLandsBehindTheReference) {
  root_->insertChildBefore(children_[0].get(), children_[1].get());
  EXPECT_EQ(order(*root_), L"bac");
  root_->insertChildBefore(children_[2].get(), children_[1].get());
  EXPECT_EQ(order(*root_), L"cba");
  root_->insertChildBefore(children_[2].get(), children_[2].get());
  EXPECT_EQ(order(*root_), L"cba");
  const auto x = node(L"x");
  root_->insertChildBefore(x.get(), children_[0].get());
  EXPECT_EQ(order(*root_), L"cbxa");
}

TEST_F(Children, InsertingAndReplacingNeedAChildOfThisNode) {
  const auto stranger = node(L"stranger"), lone = node(L"lone");
  expectMessage(nullNode, [&] { root_->insertChildBefore(nullptr, children_[0].get()); });
  expectMessage(nullNode, [&] { root_->replaceChild(children_[0].get(), nullptr); });
  expectMessage(L"Node has no child nodes",
                [&] { lone->insertChildBefore(stranger.get(), children_[0].get()); });
  expectMessage(L"Node has no child nodes", [&] { lone->replaceChild(children_[0].get(), stranger.get()); });
  expectMessage(L"The specified node (stranger) is not a child of this node (root)",
                [&] { root_->insertChildBefore(lone.get(), stranger.get()); });
  expectMessage(L"The specified node (null) is not a child of this node (root)",
                [&] { root_->getChildIndex(nullptr); });
  expectMessage(L"Error detected: trying to replace a node with a sibling node",
                [&] { root_->replaceChild(children_[0].get(), children_[1].get()); });
}

TEST_F(Children, ReplacingDetachesTheOldChild) {
  const auto other = node(L"other"), x = node(L"x");
  other->appendChild(x.get());
  root_->replaceChild(children_[1].get(), x.get());
  EXPECT_EQ(order(*root_), L"axc");
  EXPECT_EQ(children_[1]->findParent(), nullptr);
  EXPECT_EQ(x->findParent(), root_.get());
  EXPECT_FALSE(other->hasChildren());
  root_->replaceChild(x.get(), x.get());
  EXPECT_EQ(order(*root_), L"axc");
}

TEST_F(Children, RemovingIsByIdentity) {
  const auto stranger = node(L"a");
  EXPECT_FALSE(root_->removeChild(stranger.get()));
  EXPECT_TRUE(root_->removeChild(children_[1].get()));
  EXPECT_EQ(children_[1]->findParent(), nullptr);
  for (unsigned index : {2u, 3u, 99u}) {
    try {
      root_->removeChildAt(index);
      FAIL();
    } catch (const tovin::InvalidIndexException& e) {
      EXPECT_EQ(e.getIndex(), index);
      EXPECT_EQ(e.getLastIndex(), 1);
    }
  }
  root_->removeChildAt(0);
  EXPECT_EQ(order(*root_), L"c");
}

TEST_F(Children, AreFoundByNameWithAsciiFolded) {
  root_->appendChild(node(L"ITEM").get());
  root_->appendChild(node(L"item").get());
  root_->appendChild(node(nullptr).get());
  tovin::NodeReferenceSet found;
  root_->findChildrenByName(L"Item", found);
  EXPECT_EQ(found.getSize(), 2u);
  root_->findChildrenByName(nullptr, found);
  ASSERT_EQ(found.getSize(), 1u);
  EXPECT_EQ(found[0], root_->getChildAt(5));
}

TEST_F(Children, HaveIndexPathsFromTheTopOrAnAncestor) {
  const auto deep = node(L"deep");
  children_[0]->appendChild(node(L"x").get());
  children_[0]->appendChild(deep.get());
  tovin::WideString text(L"?");
  deep->getIndexPathExpression(text, nullptr);
  EXPECT_STREQ(text, L"/*[1]/*[2]");
  deep->getIndexPathExpression(text, children_[0].get());
  EXPECT_STREQ(text, L"/*[2]");
  for (tovin::iNode* ancestor :
       {static_cast<tovin::iNode*>(nullptr), static_cast<tovin::iNode*>(root_.get())}) {
    root_->getIndexPathExpression(text, ancestor);
    EXPECT_STREQ(text, L"");
  }
  expectMessage(L"Relative ancestor node not found.",
                [&] { deep->getIndexPathExpression(text, children_[1].get()); });
  try {
    deep->getIndexPathExpression(text, children_[1].get());
  } catch (const tovin::Exception& e) {
    EXPECT_STREQ(e.getTrail()[1].method, "GetNodeIndexPathDescription");
  }
}

TEST_F(Children, ADeepCopyIsNotChangedWithItsSource) {
  children_[0]->appendChild(node(L"deep").get());
  children_[0]->getProperties()->define(L"p", 1.5, 0);
  const tovin::Ptr<tovin::iNode> deep(root_->cloneNode(true)), shallow(root_->cloneNode(false));
  root_->removeAllChildren();
  EXPECT_EQ(order(*deep), L"abc");
  EXPECT_EQ(order(*deep->getChildAt(0)), L"deep");
  EXPECT_EQ(deep->getChildAt(0)->findParent(), deep.get());
  EXPECT_TRUE(deep->getChildAt(0)->getProperties()->isDefined(L"p"));
  EXPECT_FALSE(shallow->hasChildren());
  const CBaseNode copy(*children_[0]);
  EXPECT_EQ(order(copy), L"deep");
  EXPECT_EQ(copy.getChildAt(0)->findParent(), &copy);
}

TEST_F(Children, AssigningFromRelativesEnds) {
  children_[0]->appendChild(node(L"deep").get());
  children_[0]->assignFromNode(root_.get(), true);
  EXPECT_EQ(order(*children_[0]), L"rootbc");  // its own name was assigned before it was copied
  EXPECT_EQ(order(*children_[0]->getChildAt(0)), L"deep");
  root_->assignFromNode(root_->getChildAt(0)->getChildAt(0), true);
  EXPECT_EQ(order(*root_), L"deep");
  root_->assignFromNode(root_.get(), true);
  EXPECT_EQ(order(*root_), L"deep");
}

TEST_F(Children, AssignmentIsShallowAndSharesThem) {
  root_->getProperties()->define(L"p", 0);
  const auto other = node(L"other");
  other->appendChild(node(L"gone").get());
  *other = *root_;
  EXPECT_EQ(order(*other), L"abc");
  EXPECT_EQ(children_[0]->getRefCount(), 2);
  EXPECT_EQ(children_[0]->findParent(), root_.get());
  EXPECT_EQ(other->getProperties(), root_->getProperties());
  root_->appendChild(node(L"d").get());
  EXPECT_EQ(order(*other), L"abcd");
  root_.reset();
  EXPECT_EQ(other->getProperties()->findOwner(), nullptr);
  EXPECT_FALSE(other->hasChildren());
}

TEST_F(Children, ClearingLeavesNameAndParent) {
  children_[0]->setValue(tovin::IntegerValue(1));
  children_[0]->appendChild(node(L"x").get());
  children_[0]->clear();
  EXPECT_FALSE(children_[0]->hasChildren());
  EXPECT_FALSE(children_[0]->hasProperties());
  EXPECT_STREQ(children_[0]->getName(), L"a");
  EXPECT_EQ(children_[0]->getRoot(), root_.get());
  children_[0]->addNamespaceDeclaration(L"p", L"http://example.org");
  EXPECT_FALSE(children_[0]->hasProperties());
}

TEST(TransportNode, HoldsACountedObjectByReferenceAndOwnsAnyOther) {
  const tovin::Ptr<CObjectTransportNode> carrier(CObjectTransportNode::allocate());
  const auto counted = node(L"counted");
  carrier->SetObject(counted.get());
  EXPECT_EQ(counted->getRefCount(), 2);
  carrier->SetObject(counted.get());
  EXPECT_EQ(counted->getRefCount(), 2);
  carrier->SetObject(tovin::DoubleValue::allocate());
  EXPECT_EQ(counted->getRefCount(), 1);
  carrier->SetObject(nullptr);
  EXPECT_EQ(carrier->GetObject(), nullptr);
}

TEST(TransportNode, ClonesDeepWithAnObjectAndEmptyWithoutOne) {
  const tovin::Ptr<CObjectTransportNode> carrier(CObjectTransportNode::allocate());
  carrier->setName(L"carrier");
  carrier->appendChild(node(L"child").get());
  const tovin::Ptr<tovin::iNode> empty(carrier->cloneNode(true));
  EXPECT_STREQ(empty->getName(), tovin::DRV_ObjectTransportClassName);
  EXPECT_FALSE(empty->hasChildren());
  carrier->SetObject(tovin::DoubleValue(2.5).clone());
  const tovin::Ptr<tovin::iNode> deep(carrier->cloneNode(false));
  EXPECT_STREQ(deep->getName(), L"carrier");
  EXPECT_EQ(deep->getNumberOfChildren(), 1u);
}

TEST(TransportNode, AssignmentClonesTheObjectAndLeavesTheOldOneAlone) {
  const tovin::Ptr<CObjectTransportNode> from(CObjectTransportNode::allocate()),
      to(CObjectTransportNode::allocate());
  const auto carried = node(L"carried"), old = node(L"old");
  from->SetObject(carried.get());
  to->SetObject(old.get());
  *to = *from;
  EXPECT_NE(to->GetObject(), from->GetObject());
  EXPECT_STREQ(tovin::seek<tovin::iNode>(to->GetObject())->getName(), L"carried");
  EXPECT_EQ(old->getRefCount(), 2);
  old->release();
  from->SetObject(nullptr);
  *to = *from;
  EXPECT_EQ(to->GetObject(), nullptr);
}

TEST(Node, AnswersForItsIdentities) {
  const auto base = node(L"n");
  tovin::Object* object = base.get();
  EXPECT_EQ(tovin::seek<CBaseNode>(object), base.get());
  EXPECT_EQ(tovin::seek<tovin::iNode>(object), base.get());
  EXPECT_NE(tovin::seek<CNodeImplBase>(object), nullptr);
  EXPECT_EQ(tovin::seek<CObjectTransportNode>(object), nullptr);
  EXPECT_EQ(tovin::Class::getClass(CNodeImplBase::Tag), nullptr);
  expectMessage(L"Tried to deleteInstance() an object with nonzero ref count: 1\n",
                [&] { object->deleteInstance(); });
}

// As they come from allocate(): nobody counts them, and nobody but their maker gives them back.
TEST(UncountedNode, OutlivesWhatIsAskedOfIt) {
  CBaseNode* root = CBaseNode::allocate();
  root->setName(L"root");
  root->getProperties()->define(L"p", 1.5, 0);
  root->appendChild(node(L"kid").get());
  tovin::iNode* copies[] = {root->cloneNode(true), tovin::seek<tovin::iNode>(root->clone())};
  for (tovin::iNode* copy : copies) {
    EXPECT_STREQ(copy->getName(), L"root");
    EXPECT_EQ(copy->getNumberOfChildren(), 1u);
    copy->deleteInstance();
  }
  EXPECT_TRUE(root->getProperties()->find(L"/root/p"));
  EXPECT_TRUE(root->getProperties()->isDefined(L"//p"));
  root->getProperties()->define(L"/root/kid/q", 2.0, 0x10000);
  EXPECT_EQ(root->getChildAt(0)->getProperties()->getSize(), 1u);
  {
    tovin::NodeReferenceSet found;
    EXPECT_TRUE(root->query(L"//*", 1, found));
    EXPECT_EQ(found.getSize(), 2u);
  }
  EXPECT_STREQ(root->getName(), L"root");
  EXPECT_EQ(root->getRefCount(), 0);
  root->deleteInstance();
}

TEST_F(Children, AssignsFromItsOwnSubtree) {
  children_[1]->appendChild(node(L"grandchild").get());
  CBaseNode* below = tovin::seek<CBaseNode>(children_[1]->getChildAt(0));
  for (tovin::Ptr<CBaseNode>& child : children_) child.reset();
  *root_ = *below;
  EXPECT_STREQ(root_->getName(), L"grandchild");
  EXPECT_EQ(root_->findParent(), nullptr);
}

TEST(NodeValue, ReplacesEveryPropertyOfItsName) {
  const tovin::Ptr<CBaseNode> twice(node(L"n"));
  // No storage refuses a name that it has, so a record may hold one twice.
  CPropertyCollectionData* storage = CPropertyCollectionData::allocate();
  const tovin::IntegerValue one(1);
  storage->MakeNewPropertyWithCopiedValue(L"text-content", &one);
  storage->MakeNewPropertyWithCopiedValue(L"Text-Content", &one);
  ztMemoryByteOutputStream record;
  WriteCompactInt(record, 100);
  storage->serialize(record);
  storage->deleteInstance();
  ztMemoryByteInputStream stream(record.GetBytes(), record.GetSize());
  twice->getProperties()->deserialize(stream);
  ASSERT_EQ(twice->getProperties()->getSize(), 2u);
  twice->setValue(tovin::IntegerValue(3));
  EXPECT_EQ(twice->getProperties()->getSize(), 1u);
  EXPECT_STREQ(twice->getValue().getText(), L"3");
}

}  // namespace
