// Random operations on two trees. One is made of objects and looked at by objects; the other comes out of its
// record again and again, so that its properties are packed until an operation asks for one. Neither may be
// told from the other, and what was lost on the way through a record is missing in one of them.
#include <random>

#include "tests/support/Bytes.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"

namespace {

using namespace testsupport;
using tovin::iNode;
using Kind = tovin::AttributeView::Kind;
using OwnedValue = tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator>;

std::wstring textOf(const tovin::AttributeView& view) {
  switch (view.kind) {
    case Kind::text:
      if (view.unit == 2) return {view.wide().begin(), view.wide().end()};
      return {reinterpret_cast<const unsigned char*>(view.narrow().data()),
              reinterpret_cast<const unsigned char*>(view.narrow().data()) + view.length};
    case Kind::number:
      return tovin::DoubleValue(view.number).getText().c_str();
    case Kind::integer:
      return tovin::IntegerValue(view.integer).getText().c_str();
    case Kind::nullText:
    case Kind::nullValue:
      return {};
    default: {
      const tovin::WideString text = view.object().getText();
      return std::wstring(text.view());
    }
  }
}

class TwoTrees {
 public:
  explicit TwoTrees(unsigned seed) : random_(seed) {
    for (auto& root : roots_) (root = tovin::Ptr<iNode>(CBaseNode::allocate()))->setName(L"root");
    // Who makes a name late owns it, and its flags say so: here all names are there before.
    for (int i = 0; i < mostNames; ++i) {
      for (const wchar_t* start : {L"p", L"_p"})
        names_->getProperties()->define((start + std::to_wstring(i)).c_str(), i);
    }
  }

  void step() {
    if (below(3) == 0) reread();
    iNode* nodes[2] = {roots_[0].get(), roots_[1].get()};
    while (nodes[0]->hasChildren() && below(3)) {
      const auto child = static_cast<unsigned>(below(static_cast<int>(nodes[0]->getNumberOfChildren())));
      for (iNode*& node : nodes) node = node->getChildAt(child);
    }
    const int operation = below(16), a = below(1000), b = below(1000);
    const std::wstring name = freshName(*nodes[0]);
    for (iNode* node : nodes) apply(*node, operation, a, b, name);
  }

  void expectEqual() {
    ASSERT_NO_FATAL_FAILURE(compare(*roots_[0], *roots_[1]));
    Writer records[2];
    for (int tree : {0, 1}) roots_[tree]->serialize(records[tree]);
    ASSERT_EQ(hex(records[0]), hex(records[1]));
    for (const wchar_t* query : {L"count(//*)", L"count(//@*)", L"count(//*[@p1='t\x00E9xt'])"}) {
      int found[2] = {-1, -2};
      for (int tree : {0, 1}) roots_[tree]->query(query, 0, found[tree]);
      EXPECT_EQ(found[0], found[1]) << tovin::wideToUtf8(query);
    }
  }

 private:
  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  // Looked for without asking for a collection: one that is made shows in the record.
  std::wstring freshName(const iNode& node) {
    while (true) {
      std::wstring name = (below(12) ? L"p" : L"_p") + std::to_wstring(below(mostNames));
      unsigned i = 0;
      while (i < node.attributeCount() && name != node.viewAttribute(i).name) ++i;
      if (i == node.attributeCount()) return name;
    }
  }

  template <class List, class Element>
  static OwnedValue listOf(int count, const Element& element) {
    List* list = List::allocate();
    OwnedValue owned(list);
    for (int i = 0; i < count; ++i) list->add(element);
    return owned;
  }

  // Narrow, wide and empty texts, numbers, and classes that are never packed.
  static OwnedValue value(int kind) {
    switch (kind % 10) {
      case 0:
        return OwnedValue(tovin::DoubleValue(kind / 8.0).cloneValue());
      case 1:
        return OwnedValue(tovin::IntegerValue(kind * 7919).cloneValue());
      case 2:
        return OwnedValue(tovin::NullValue::shared().cloneValue());
      case 3:
        return OwnedValue(tovin::StringValue(kind % 20 == 3 ? L"\x7F\x80\x17F"
                                                            : L"\x7FF\x800\xD800\xDBFF\xDC00\xDFFF\xFFFF")
                              .cloneValue());
      case 4:
        return listOf<tovin::IntegerArrayValue>(kind % 3, kind);
      case 5:
        return OwnedValue(tovin::StringValue(kind % 20 == 5 ? L"" : nullptr).cloneValue());
      case 6:
        return listOf<tovin::StringArrayValue>(kind % 4,
                                               tovin::WideString(kind % 20 == 6 ? L"\x20AC" : nullptr));
      case 7: {
        tovin::BitsetValue bits(static_cast<unsigned>(kind % 70));
        bits.setAll(true);
        return OwnedValue(bits.cloneValue());
      }
      default:
        return OwnedValue(tovin::StringValue(L"t\x00E9xt").cloneValue());
    }
  }

  static tovin::Ptr<iNode> made(int kind) {
    if (kind % 4 != 0) return tovin::Ptr<iNode>(CBaseNode::allocate());
    CObjectTransportNode* carrier = CObjectTransportNode::allocate();
    if (kind % 8 == 0) carrier->SetObject(value(kind).detach());
    return tovin::Ptr<iNode>(carrier);
  }

  static void apply(iNode& at, int operation, int a, int b, const std::wstring& name) {
    const unsigned size = at.attributeCount(), children = at.getNumberOfChildren();
    const unsigned first = size ? static_cast<unsigned>(a) % size : 0,
                   second = size ? static_cast<unsigned>(b) % size : 0;
    const unsigned child = children ? static_cast<unsigned>(a) % children : 0;
    if (operation < 4) {
      at.getProperties()->define(name.c_str(), *value(b), operation == 0 ? 0x10 : 0);
    } else if (operation == 4) {
      const tovin::Ptr<iNode> fresh = made(a);
      fresh->setName(name.c_str());
      at.appendChild(fresh.get());
    } else if (operation == 5) {
      at.setName(name.c_str());
    } else if (operation == 6 && children > 0) {
      at.appendChild(tovin::Ptr<iNode>(at.getChildAt(child)->cloneNode(true)).get());
    } else if (operation == 7 && children > 2) {
      at.removeChildAt(child);
    } else if (operation == 8 && children > 0) {
      at.insertChildBefore(tovin::Ptr<iNode>(at.cloneNode(false)).get(), at.getChildAt(child));
    } else if (operation == 9 && children > 0) {
      at.assignFromNode(at.getChildAt(child), false);
    } else if (size == 0) {
      return;
    } else if (operation == 10) {
      const tovin::Ptr<tovin::iProperty> held(at.getProperties()->get(first));
      EXPECT_EQ(at.getProperties()->get(held->getName()), held.get());
    } else if (operation == 11) {
      at.getProperties()->get(first)->setValue(*value(b));
    } else if (operation == 12) {
      at.getProperties()->remove(first);
    } else if (operation == 13) {
      at.getProperties()->rename(at.getProperties()->get(first)->getName(), name.c_str());
    } else if (operation == 14) {
      at.getProperties()->reorderProperty(first, second);
    } else if (a % 4 == 0) {
      at.getProperties()->removeAll();
    }
  }

  void reread() {
    Writer out(1 + below(3));
    roots_[1]->serialize(out);
    const tovin::Ptr<iNode> back(CBaseNode::allocate());
    Reader in(out);
    back->deserialize(in);
    ASSERT_EQ(in.GetRemaining(), 0u);
    roots_[1] = back;
  }

  // A tree of objects, and one that may have packed properties.
  static void compare(iNode& plain, iNode& packed) {
    ASSERT_EQ(std::wstring(plain.getName()), packed.getName());
    ASSERT_EQ(plain.attributeCount(), packed.attributeCount());
    ASSERT_EQ(packed.hasProperties(), packed.attributeCount() > 0);
    for (unsigned i = 0; i < plain.attributeCount(); ++i) {
      const tovin::iProperty* property = plain.getProperties()->get(i);
      const tovin::AttributeView view = packed.viewAttribute(i);
      ASSERT_EQ(std::wstring(property->getName()), view.name);
      ASSERT_EQ(property->getValue().getText().view(), textOf(view));
      ASSERT_EQ(property->getParent(), plain.getProperties());
      ASSERT_EQ(plain.getProperties()->findIndex(property->getName()), static_cast<int>(i));
    }
    ASSERT_EQ(plain.getNumberOfChildren(), packed.getNumberOfChildren());
    for (unsigned i = 0; i < plain.getNumberOfChildren(); ++i) {
      for (iNode* at : {&plain, &packed}) {
        ASSERT_EQ(at->getChildAt(i)->findParent(), at);
        ASSERT_EQ(at->getChildAt(i)->getRefCount(), 1);
      }
      ASSERT_NO_FATAL_FAILURE(compare(*plain.getChildAt(i), *packed.getChildAt(i)));
    }
  }

  static constexpr int mostNames = 14;

  std::mt19937 random_;
  tovin::Ptr<iNode> names_{CBaseNode::allocate()};
  tovin::Ptr<iNode> roots_[2];
};

// A node class with a way of its own to its properties.
class Watched : public tovin::FrameworkClass<Watched, NodeImpl<Watched, iNode>, tovin::PooledObject> {
 public:
  static constexpr const char* ClassName = "Watched";
  static inline const tovin::ClassTagDecl Tag{"test.Watched"};
  static inline tovin::LeakDetector m_leakDetector{ClassName};
  static tovin::PooledClassImp<Watched> m_class;

  using NodeImpl::getProperties;
  tovin::iPropertyCollection* getProperties() const override {
    ++asked;
    return NodeImpl::getProperties();
  }
  void onActivate() override { OnActivateDefault(); }
  void onDeactivate() override { OnDeactivateDefault(); }
  mutable int asked = 0;
};
tovin::PooledClassImp<Watched> Watched::m_class(Watched::Tag, Watched::m_leakDetector);

// And one that gets it from a class that has not.
class Derived : public CBaseNode {
 public:
  bool hasProperties() const override { return false; }
};

void readInto(iNode& node) {
  const tovin::Ptr<CBaseNode> source(CBaseNode::allocate());
  source->getProperties()->define(L"a", L"text", 0);
  readFrom(*source, node);
}

TEST(PackedNodes, OfClassesWithOverridesAreAsked) {
  const tovin::Ptr<Watched> watched(Watched::allocate());
  const tovin::Ptr<CBaseNode> copied(CBaseNode::allocate());
  watched->getProperties()->define(L"a", L"text", 0);
  tovin::WideString found;
  EXPECT_TRUE(watched->query(L"string(@a)", 0, found));
  EXPECT_STREQ(found, L"text");
  EXPECT_GT(std::exchange(watched->asked, 0), 0);
  copied->assignFromNode(watched.get(), false);
  EXPECT_GT(watched->asked, 0);
  EXPECT_EQ(copied->attributeCount(), 1u);

  const tovin::Ptr<CBaseNode> derived(new Derived);
  readInto(*derived);
  EXPECT_EQ(derived->attributeCount(), 0u);
  EXPECT_EQ(derived->CBaseNode::hasProperties(), true);
}

TEST(PackedNodes, ShareACollectionThatIsMadeFirst) {
  const tovin::Ptr<CBaseNode> source(CBaseNode::allocate()), other(CBaseNode::allocate());
  readInto(*source);
  *other = *source;
  EXPECT_EQ(other->getProperties(), source->getProperties());
  EXPECT_EQ(other->getProperties()->findOwner(),
            static_cast<tovin::Object*>(static_cast<iNode*>(source.get())));
  other->getProperties()->define(L"b", 1.5, 0);
  EXPECT_EQ(source->attributeCount(), 2u);
}

TEST(PackedTrees, AreLikeThoseOfObjects) {
  for (unsigned seed = 0; seed < 150; ++seed) {
    SCOPED_TRACE(seed);
    TwoTrees trees(seed);
    for (int i = 0; i < 60; ++i) {
      trees.step();
      ASSERT_NO_FATAL_FAILURE(trees.expectEqual()) << "step " << i;
    }
  }
}

}  // namespace
