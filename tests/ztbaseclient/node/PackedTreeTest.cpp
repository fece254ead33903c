// Random operations on two trees and on a plain model of them. One tree is made of objects and looked at by
// objects; the other comes out of its record again and again, so that its properties are packed until an
// operation asks for one. Neither may be told from the other, nor from the model.
#include <random>

#include "tests/support/Bytes.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/node/CBaseNode.h"

namespace {

using namespace testsupport;
using tovin::iNode;
using Kind = tovin::AttributeView::Kind;

struct PlainProperty {
  std::wstring name;
  std::wstring text;
  unsigned flags = 0;
  // What was handed out, in each tree.
  const tovin::iProperty* held[2] = {};
};

struct PlainNode {
  std::wstring name;
  std::vector<PlainProperty> properties;
  std::vector<PlainNode> children;

  bool has(const std::wstring& wanted) const {
    for (const PlainProperty& each : properties) {
      if (tovin::equalFolded(std::wstring_view(each.name), wanted)) return true;
    }
    return false;
  }
  void forget(int tree) {
    for (PlainProperty& each : properties) each.held[tree] = nullptr;
    for (PlainNode& child : children) child.forget(tree);
  }
};

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
    model_.name = L"root";
    // Who makes a name late owns it, and its flags say so: here all names are there before.
    for (int i = 0; i < mostNames; ++i) {
      for (const wchar_t* start : {L"p", L"_p"})
        names_->getProperties()->define((start + std::to_wstring(i)).c_str(), i);
    }
  }

  void step() {
    if (below(3) == 0) reread();
    std::vector<unsigned> path;
    PlainNode* node = &model_;
    while (!node->children.empty() && below(3)) {
      path.push_back(static_cast<unsigned>(below(static_cast<int>(node->children.size()))));
      node = &node->children[path.back()];
    }
    const int operation = below(16), a = below(1000), b = below(1000);
    const std::wstring name = freshName(*node);
    for (int tree : {0, 1}) {
      iNode* at = roots_[tree].get();
      for (unsigned index : path) at = at->getChildAt(index);
      apply(*at, *node, operation, a, b, name, tree);
    }
    applyToModel(*node, operation, a, b, name);
  }

  void expectEqual() {
    Writer records[2];
    for (int tree : {0, 1}) {
      ASSERT_NO_FATAL_FAILURE(compare(*roots_[tree], model_, tree));
      roots_[tree]->serialize(records[tree]);
    }
    ASSERT_EQ(hex(records[0]), hex(records[1]));
    int nodes = 0, attributes = 0, wanted = 0;
    count(model_, nodes, attributes, wanted);
    expectCount(L"count(//*)", nodes);
    expectCount(L"count(//@*)", attributes);
    expectCount(L"count(//*[@p1='t\x00E9xt'])", wanted);
  }

 private:
  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  std::wstring freshName(const PlainNode& node) {
    while (true) {
      std::wstring name = (below(12) ? L"p" : L"_p") + std::to_wstring(below(mostNames));
      if (!node.has(name)) return name;
    }
  }

  // Narrow, wide and empty texts, numbers, and a class that is never packed.
  static tovin::Value* value(int kind) {
    switch (kind % 8) {
      case 0:
        return tovin::DoubleValue(kind / 8.0).cloneValue();
      case 1:
        return tovin::IntegerValue(kind * 7919).cloneValue();
      case 2:
        return tovin::NullValue::shared().cloneValue();
      case 3:
        return tovin::StringValue(L"\x20AC\xD800 wide").cloneValue();
      case 4: {
        auto* list = tovin::IntegerArrayValue::allocate();
        for (int i = 0; i < kind % 3; ++i) list->add(i);
        return list;
      }
      case 5:
        return tovin::StringValue(kind % 16 == 5 ? L"" : nullptr).cloneValue();
      default:
        return tovin::StringValue(L"t\x00E9xt").cloneValue();
    }
  }
  static std::wstring textOfValue(int kind) {
    const tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator> made(value(kind));
    return std::wstring(made->getText().view());
  }

  void apply(iNode& at, PlainNode& node, int operation, int a, int b, const std::wstring& name, int tree) {
    const auto size = static_cast<int>(node.properties.size());
    const auto children = static_cast<int>(node.children.size());
    const tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator> made(value(b));
    const auto first = static_cast<unsigned>(size ? a % size : 0),
               second = static_cast<unsigned>(size ? b % size : 0);
    const auto child = static_cast<unsigned>(children ? a % children : 0);
    if (operation < 4) {
      at.getProperties()->define(name.c_str(), *made, operation == 0 ? 0x10 : 0);
    } else if (operation == 4) {
      const tovin::Ptr<iNode> fresh(CBaseNode::allocate());
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
      tovin::iProperty* property = at.getProperties()->get(first);
      const tovin::iProperty*& held = node.properties[first].held[tree];
      EXPECT_EQ(property, held ? held : property);
      held = property;
    } else if (operation == 11) {
      at.getProperties()->get(node.properties[first].name.c_str())->setValue(*made);
    } else if (operation == 12) {
      at.getProperties()->remove(first);
    } else if (operation == 13) {
      at.getProperties()->rename(node.properties[first].name.c_str(), name.c_str());
    } else if (operation == 14) {
      at.getProperties()->reorderProperty(first, second);
    } else if (a % 4 == 0) {
      at.getProperties()->removeAll();
    }
  }

  static void applyToModel(PlainNode& node, int operation, int a, int b, const std::wstring& name) {
    const size_t size = node.properties.size(), children = node.children.size();
    const size_t first = size ? static_cast<size_t>(a) % size : 0,
                 second = size ? static_cast<size_t>(b) % size : 0;
    const size_t child = children ? static_cast<size_t>(a) % children : 0;
    const auto at = node.properties.begin() + static_cast<std::ptrdiff_t>(first);
    const auto below = node.children.begin() + static_cast<std::ptrdiff_t>(child);
    const auto copyOf = [](PlainNode source) {
      for (int tree : {0, 1}) source.forget(tree);
      return source;
    };
    if (operation < 4) {
      node.properties.push_back({name, textOfValue(b), operation == 0 ? 0x10u : 0u});
    } else if (operation == 4) {
      node.children.push_back({name, {}, {}});
    } else if (operation == 5) {
      node.name = name;
    } else if (operation == 6 && children > 0) {
      node.children.push_back(copyOf(*below));
    } else if (operation == 7 && children > 2) {
      node.children.erase(below);
    } else if (operation == 8 && children > 0) {
      node.children.insert(below, copyOf({node.name, node.properties, {}}));
    } else if (operation == 9 && children > 0) {
      const PlainNode source = copyOf(*below);
      node.name = source.name;
      node.properties = source.properties;
    } else if (size == 0 || operation == 10) {
      return;
    } else if (operation == 11) {
      at->text = textOfValue(b);
    } else if (operation == 12) {
      node.properties.erase(at);
    } else if (operation == 13) {
      at->name = name;
    } else if (operation == 14) {
      const PlainProperty moved = *at;
      node.properties.erase(at);
      node.properties.insert(node.properties.begin() + static_cast<std::ptrdiff_t>(second), moved);
    } else if (a % 4 == 0) {
      node.properties.clear();
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
    model_.forget(1);
  }

  static void compare(iNode& at, const PlainNode& node, int tree) {
    ASSERT_EQ(at.getName(), node.name);
    ASSERT_EQ(at.attributeCount(), node.properties.size());
    ASSERT_EQ(at.hasProperties(), !node.properties.empty());
    for (unsigned i = 0; i < node.properties.size(); ++i) {
      const PlainProperty& wanted = node.properties[i];
      const tovin::AttributeView view = at.viewAttribute(i);
      ASSERT_EQ(view.name, wanted.name);
      ASSERT_EQ(textOf(view), wanted.text);
      if (tree == 1 && view.kind != Kind::property) {
        ASSERT_EQ(view.flags & 0x3Fu, wanted.flags);
        ASSERT_EQ(wanted.held[tree], nullptr);
        continue;
      }
      const tovin::iProperty* property = at.getProperties()->get(i);
      ASSERT_EQ(property->getInfo()->getMetaDataFlags().getBits() & 0x3F, wanted.flags);
      ASSERT_EQ(property->getParent(), at.getProperties());
      ASSERT_EQ(property, wanted.held[tree] ? wanted.held[tree] : property);
      ASSERT_EQ(at.getProperties()->findIndex(wanted.name.c_str()), static_cast<int>(i));
    }
    ASSERT_EQ(at.getNumberOfChildren(), node.children.size());
    for (unsigned i = 0; i < node.children.size(); ++i) {
      ASSERT_EQ(at.getChildAt(i)->findParent(), &at);
      ASSERT_EQ(at.getChildAt(i)->getRefCount(), 1);
      ASSERT_NO_FATAL_FAILURE(compare(*at.getChildAt(i), node.children[i], tree));
    }
  }

  static void count(const PlainNode& node, int& nodes, int& attributes, int& wanted) {
    ++nodes;
    attributes += static_cast<int>(node.properties.size());
    for (const PlainProperty& each : node.properties)
      wanted += each.name == L"p1" && each.text == L"t\x00E9xt";
    for (const PlainNode& child : node.children) count(child, nodes, attributes, wanted);
  }
  void expectCount(const wchar_t* query, int wanted) {
    for (const auto& root : roots_) {
      int found = -1;
      root->query(query, 0, found);
      EXPECT_EQ(found, wanted) << tovin::wideToUtf8(query);
    }
  }

  static constexpr int mostNames = 14;

  std::mt19937 random_;
  tovin::Ptr<iNode> names_{CBaseNode::allocate()};
  tovin::Ptr<iNode> roots_[2];
  PlainNode model_;
};

// A node class with a way of its own to its properties.
class Watched : public tovin::FrameworkClass<Watched, NodeImpl<Watched, iNode>, tovin::PooledObject> {
 public:
  static constexpr const char* ClassName = "Watched";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
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
const tovin::ClassTagDecl Watched::Tag("test.Watched");
tovin::LeakDetector Watched::m_leakDetector(Watched::ClassName);
tovin::PooledClassImp<Watched> Watched::m_class(Watched::Tag, Watched::m_leakDetector);

// And one that gets it from a class that has not.
class Derived : public CBaseNode {
 public:
  bool hasProperties() const override { return false; }
};

void readInto(iNode& node) {
  const tovin::Ptr<CBaseNode> source(CBaseNode::allocate());
  source->getProperties()->define(L"a", L"text", 0);
  Writer out;
  source->serialize(out);
  Reader in(out);
  node.deserialize(in);
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
