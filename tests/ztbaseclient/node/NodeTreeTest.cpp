#include "tests/support/Bytes.h"
#include "tovin/Constants.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringValue.h"
#include "ztbaseclient/data/CPropertyCollectionData.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"

namespace {

using namespace testsupport;

constexpr const wchar_t* nullNode = L"Error: attempting to add a null node.";
constexpr const wchar_t* ownParent = L"Error: attempting to set a data node to be its own parent.";
constexpr const wchar_t* noChildren = L"Node has no child nodes";

tovin::Ptr<CBaseNode> node(const wchar_t* name) {
  tovin::Ptr<CBaseNode> made(CBaseNode::allocate());
  made->setName(name);
  return made;
}

std::wstring order(const tovin::iNode& parent) {
  std::wstring names;
  for (unsigned i = 0; i < parent.getNumberOfChildren(); ++i) names += parent.getChildAt(i)->getName();
  return names;
}

// A node that cannot put its things away.
class Stubborn : public tovin::FrameworkClass<Stubborn, CBaseNode> {
 public:
  static constexpr const char* ClassName = "Stubborn";
  static inline const tovin::ClassTagDecl Tag{"test.Stubborn"};
  static inline tovin::LeakDetector m_leakDetector{ClassName};
  static tovin::PooledClassImp<Stubborn> m_class;
  void onDeactivate() override {
    if (refuses) throw tovin::Exception(L"not now");
    CBaseNode::onDeactivate();
  }
  static inline bool refuses = true;
};
tovin::PooledClassImp<Stubborn> Stubborn::m_class(Stubborn::Tag, Stubborn::m_leakDetector);

// A root with the children a, b and c.
struct Children : testing::Test {
  Children() {
    for (const auto& child : {a_, b_, c_}) root_->appendChild(child.get());
  }
  const tovin::Ptr<CBaseNode> a_ = node(L"a"), b_ = node(L"b"), c_ = node(L"c"), x_ = node(L"x");
  tovin::Ptr<CBaseNode> root_ = node(L"root");
};

TEST(NodeValue, IsAPropertyMarkedAsSuch) {
  const tovin::Ptr<CBaseNode> fresh(CBaseNode::allocate());
  EXPECT_STREQ(fresh->getName(), tovin::DRV_NODE_Generic);
  EXPECT_TRUE(fresh->hasNullValue());
  EXPECT_FALSE(fresh->hasProperties());
  fresh->setValue(tovin::IntegerValue(5));
  tovin::iProperty* property = fresh->getProperties()->find(L"text-content");
  EXPECT_EQ(property->getInfo()->getMetaDataFlags().getBits() & 8u, 8u);
  const tovin::Value* value = &fresh->getValue();
  fresh->setValue(tovin::IntegerValue(6));
  EXPECT_EQ(&fresh->getValue(), value) << "a value of its class is overwritten";
  fresh->setValue(fresh->getValue());
  fresh->setValue(tovin::StringValue(L"now a text"));
  EXPECT_STREQ(fresh->getValue().getText(), L"now a text");
  EXPECT_EQ(fresh->getProperties()->getSize(), 1u);
}

TEST(NodeValue, ReplacesEveryPropertyOfItsName) {
  const tovin::Ptr<CBaseNode> twice(node(L"n"));
  // No storage refuses a name that it has, so a record may hold one twice.
  CPropertyCollectionData* storage = CPropertyCollectionData::allocate();
  const tovin::IntegerValue one(1);
  storage->MakeNewPropertyWithCopiedValue(L"text-content", &one);
  storage->MakeNewPropertyWithCopiedValue(L"Text-Content", &one);
  Writer record;
  WriteCompactInt(record, 100);
  storage->serialize(record);
  storage->deleteInstance();
  Reader in(record);
  twice->getProperties()->deserialize(in);
  ASSERT_EQ(twice->getProperties()->getSize(), 2u);
  twice->setValue(tovin::IntegerValue(3));
  EXPECT_EQ(twice->getProperties()->getSize(), 1u);
  EXPECT_STREQ(twice->getValue().getText(), L"3");
}

TEST_F(Children, AppendingMovesFromTheOldParent) {
  x_->appendChild(a_.get());
  EXPECT_EQ(order(*root_), L"bc");
  EXPECT_EQ(order(*x_), L"a");
  EXPECT_EQ(a_->findParent(), x_.get());
  root_->appendChild(b_.get());
  EXPECT_EQ(order(*root_), L"cb");
}

TEST_F(Children, InsertingAnEarlierSiblingLandsBehindTheReference) {
  const std::tuple<tovin::iNode*, tovin::iNode*, const wchar_t*> rows[] = {{a_.get(), b_.get(), L"bac"},
                                                                           {c_.get(), b_.get(), L"cba"},
                                                                           {c_.get(), c_.get(), L"cba"},
                                                                           {x_.get(), a_.get(), L"cbxa"}};
  for (const auto& [child, before, expected] : rows) {
    root_->insertChildBefore(child, before);
    EXPECT_EQ(order(*root_), expected);
  }
}

TEST_F(Children, ReplacingDetachesTheOldChild) {
  const auto other = node(L"other");
  other->appendChild(x_.get());
  root_->replaceChild(b_.get(), x_.get());
  EXPECT_EQ(order(*root_), L"axc");
  EXPECT_EQ(b_->findParent(), nullptr);
  EXPECT_EQ(x_->findParent(), root_.get());
  EXPECT_FALSE(other->hasChildren());
  root_->replaceChild(x_.get(), x_.get());
  EXPECT_EQ(order(*root_), L"axc");
}

TEST_F(Children, NeitherAncestorsNorStrangersArePutIn) {
  a_->appendChild(node(L"deep").get());
  expectMessage(nullNode, [&] { root_->appendChild(nullptr); });
  expectMessage(nullNode, [&] { root_->insertChildBefore(nullptr, a_.get()); });
  expectMessage(nullNode, [&] { root_->replaceChild(a_.get(), nullptr); });
  expectMessage(ownParent, [&] { a_->getChildAt(0)->appendChild(root_.get()); });
  expectMessage(ownParent, [&] { b_->appendChild(b_.get()); });
  expectMessage(ownParent, [&] { root_->insertChildBefore(root_.get(), a_.get()); });
  expectMessage(noChildren, [&] { x_->insertChildBefore(b_.get(), a_.get()); });
  expectMessage(noChildren, [&] { x_->replaceChild(a_.get(), b_.get()); });
  expectMessage(L"The specified node (x) is not a child of this node (root)",
                [&] { root_->insertChildBefore(a_.get(), x_.get()); });
  expectMessage(L"The specified node (null) is not a child of this node (root)",
                [&] { root_->getChildIndex(nullptr); });
  expectMessage(L"Error detected: trying to replace a node with a sibling node",
                [&] { root_->replaceChild(a_.get(), b_.get()); });
  EXPECT_EQ(order(*root_), L"abc");
}

TEST_F(Children, RemovingIsByIdentity) {
  EXPECT_FALSE(root_->removeChild(node(L"a").get()));
  EXPECT_TRUE(root_->removeChild(b_.get()));
  EXPECT_EQ(b_->findParent(), nullptr);
  expectMessage(L"Invalid index 2, the last valid index is 1", [&] { root_->removeChildAt(2); });
  root_->removeChildAt(0);
  EXPECT_EQ(order(*root_), L"c");
}

TEST_F(Children, AreFoundByNameWithAsciiFolded) {
  root_->appendChild(node(L"B").get());
  root_->appendChild(node(nullptr).get());
  tovin::NodeReferenceSet found;
  root_->findChildrenByName(L"b", found);
  EXPECT_EQ(found.getSize(), 2u);
  root_->findChildrenByName(nullptr, found);
  ASSERT_EQ(found.getSize(), 1u);
  EXPECT_EQ(found[0], root_->getChildAt(4));
}

TEST_F(Children, HaveIndexPathsFromTheTopOrAnAncestor) {
  const auto deep = node(L"deep");
  a_->appendChild(x_.get());
  a_->appendChild(deep.get());
  const std::tuple<tovin::iNode*, tovin::iNode*, const wchar_t*> rows[] = {
      {deep.get(), nullptr, L"/*[1]/*[2]"},
      {deep.get(), a_.get(), L"/*[2]"},
      {root_.get(), nullptr, L""},
      {root_.get(), root_.get(), L""}};
  tovin::WideString text(L"?");
  for (const auto& [from, ancestor, path] : rows) {
    from->getIndexPathExpression(text, ancestor);
    EXPECT_STREQ(text, path);
  }
  const auto unrelated = [&] { deep->getIndexPathExpression(text, b_.get()); };
  expectMessage(L"Relative ancestor node not found.", unrelated);
  EXPECT_EQ(trailOf(unrelated),
            "CNodeImplBase.GetNodeIndexPath CNodeImplBase.GetNodeIndexPathDescription "
            "NodeImpl.getIndexPathExpression ");
}

TEST_F(Children, ADeepCopyIsNotChangedWithItsSource) {
  a_->appendChild(node(L"deep").get());
  a_->getProperties()->define(L"p", 1.5, 0);
  const tovin::Ptr<tovin::iNode> deep(root_->cloneNode(true)), shallow(root_->cloneNode(false));
  const CBaseNode copy(*root_);
  root_->removeAllChildren();
  for (const tovin::iNode* each : std::initializer_list<const tovin::iNode*>{deep.get(), &copy}) {
    EXPECT_EQ(order(*each), L"abc");
    EXPECT_EQ(order(*each->getChildAt(0)), L"deep");
    EXPECT_EQ(each->getChildAt(0)->findParent(), each);
    EXPECT_TRUE(each->getChildAt(0)->getProperties()->isDefined(L"p"));
  }
  EXPECT_FALSE(shallow->hasChildren());
}

TEST_F(Children, AssigningFromRelativesEnds) {
  a_->appendChild(node(L"deep").get());
  a_->assignFromNode(root_.get(), true);
  EXPECT_EQ(order(*a_), L"rootbc");  // its own name was assigned before it was copied
  EXPECT_EQ(order(*a_->getChildAt(0)), L"deep");
  root_->assignFromNode(root_->getChildAt(0)->getChildAt(0), true);
  EXPECT_EQ(order(*root_), L"deep");
  root_->assignFromNode(root_.get(), true);
  EXPECT_EQ(order(*root_), L"deep");
  *root_ = *tovin::seek<CBaseNode>(root_->getChildAt(0));
  EXPECT_STREQ(root_->getName(), L"deep");
  EXPECT_EQ(root_->findParent(), nullptr);
}

TEST_F(Children, AssignmentIsShallowAndSharesThem) {
  root_->getProperties()->define(L"p", 0);
  x_->appendChild(node(L"gone").get());
  *x_ = *root_;
  EXPECT_EQ(order(*x_), L"abc");
  EXPECT_EQ(a_->getRefCount(), 2);
  EXPECT_EQ(a_->findParent(), root_.get());
  EXPECT_EQ(x_->getProperties(), root_->getProperties());
  root_->appendChild(node(L"d").get());
  EXPECT_EQ(order(*x_), L"abcd");
  root_.reset();
  EXPECT_EQ(x_->getProperties()->findOwner(), nullptr);
  EXPECT_FALSE(x_->hasChildren());
}

TEST_F(Children, OfANodeAtRestAreNobodyElses) {
  tovin::Object::m_dontUsePools = false;
  root_->removeAllChildren();
  CBaseNode* sharing = CBaseNode::allocateCopy(*root_);
  CBaseNode::deallocate(sharing);
  const tovin::Ptr<CBaseNode> next(CBaseNode::allocate());
  root_->appendChild(a_.get());
  root_->appendChild(b_.get());
  EXPECT_EQ(next->getNumberOfChildren(), 0u);
  next->removeAllChildren();
  EXPECT_EQ(order(*root_), L"ab");
}

TEST_F(Children, ThatCannotBeGivenBackLeaveNoneBehind) {
  for (bool pools : {false, true}) {
    tovin::Object::m_dontUsePools = !pools;
    tovin::Ptr<CBaseNode> parent = node(L"parent");
    const auto before = Stubborn::m_leakDetector.getLive();
    for (bool stubborn : {false, true, false}) {
      const tovin::Ptr<tovin::iNode> child(stubborn ? static_cast<tovin::iNode*>(Stubborn::allocate())
                                                    : CBaseNode::allocate());
      child->appendChild(node(L"below").get());
      parent->appendChild(child.get());
    }
    if (pools)
      expectMessage(L"not now", [&] { parent->removeAllChildren(); });
    else
      parent->removeAllChildren();  // a destructor has nobody to tell
    EXPECT_EQ(parent->getNumberOfChildren(), 0u);
    EXPECT_EQ(Stubborn::m_leakDetector.getLive(), before);
  }
  // One that rests is no living object of any of its classes.
  Stubborn::refuses = false;
  Stubborn::allocate()->deleteInstance();
}

TEST_F(Children, ClearingLeavesNameAndParent) {
  a_->setValue(tovin::IntegerValue(1));
  a_->appendChild(x_.get());
  a_->clear();
  a_->addNamespaceDeclaration(L"p", L"http://example.org");
  EXPECT_FALSE(a_->hasChildren() || a_->hasProperties());
  EXPECT_STREQ(a_->getName(), L"a");
  EXPECT_EQ(a_->getRoot(), root_.get());
}

struct TransportNode : testing::Test {
  const tovin::Ptr<CObjectTransportNode> carrier_{CObjectTransportNode::allocate()};
};

TEST_F(TransportNode, HoldsACountedObjectByReferenceAndOwnsAnyOther) {
  const auto counted = node(L"counted");
  for (int i = 0; i < 2; ++i) {
    carrier_->SetObject(counted.get());
    EXPECT_EQ(counted->getRefCount(), 2);
  }
  carrier_->SetObject(tovin::DoubleValue::allocate());
  EXPECT_EQ(counted->getRefCount(), 1);
  carrier_->SetObject(nullptr);
  EXPECT_EQ(carrier_->GetObject(), nullptr);
}

TEST_F(TransportNode, ClonesDeepWithAnObjectAndEmptyWithoutOne) {
  carrier_->setName(L"carrier");
  carrier_->appendChild(node(L"child").get());
  const tovin::Ptr<tovin::iNode> empty(carrier_->cloneNode(true));
  EXPECT_STREQ(empty->getName(), tovin::DRV_ObjectTransportClassName);
  EXPECT_FALSE(empty->hasChildren());
  carrier_->SetObject(tovin::DoubleValue(2.5).clone());
  const tovin::Ptr<tovin::iNode> deep(carrier_->cloneNode(false));
  EXPECT_STREQ(deep->getName(), L"carrier");
  EXPECT_EQ(order(*deep), L"child");
}

TEST_F(TransportNode, AssignmentClonesTheObjectAndLeavesTheOldOneAlone) {
  const tovin::Ptr<CObjectTransportNode> from(CObjectTransportNode::allocate());
  const auto carried = node(L"carried"), old = node(L"old");
  from->SetObject(carried.get());
  carrier_->SetObject(old.get());
  *carrier_ = *from;
  EXPECT_NE(carrier_->GetObject(), from->GetObject());
  EXPECT_STREQ(tovin::seek<tovin::iNode>(carrier_->GetObject())->getName(), L"carried");
  EXPECT_EQ(old->getRefCount(), 2);
  old->release();
  from->SetObject(nullptr);
  *carrier_ = *from;
  EXPECT_EQ(carrier_->GetObject(), nullptr);
}

// As they come from allocate(): nobody counts them, and nobody but their maker gives them back.
TEST(UncountedNode, OutlivesWhatIsAskedOfIt) {
  CBaseNode* root = CBaseNode::allocate();
  root->setName(L"root");
  root->getProperties()->define(L"p", 1.5, 0);
  root->appendChild(node(L"kid").get());
  for (tovin::iNode* copy : {root->cloneNode(true), tovin::seek<tovin::iNode>(root->clone())}) {
    EXPECT_STREQ(copy->getName(), L"root");
    EXPECT_EQ(order(*copy), L"kid");
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
  EXPECT_EQ(root->getRefCount(), 0);
  root->deleteInstance();
}

}  // namespace
