#include <vector>

#include "tests/fault/Sweep.h"
#include "tovin/Ptr.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovin/values/ValueUtil.h"
#include "ztbaseclient/ztbaseclient.h"
#include "ztcore/ztUniqueStrings.h"

namespace {

using namespace faults;
using testsupport::bytesOf;
using testsupport::Reader;
using testsupport::readFrom;
using testsupport::Writer;
using tovin::iNode;
using tovin::Object;
using tovin::Ptr;

const std::wstring longText(300, L'x');

std::string recordOf(const Object& object) {
  Writer out;
  object.serialize(out);
  return testsupport::hex(out);
}

// ---- properties and their values

using Property = Ptr<CProperty>;

Property property() {
  Property made(CProperty::allocate());
  made->SetName(L"size");
  made->setValue(L"a text");
  return made;
}

Property listProperty() {
  Property made = property();
  tovin::StringArrayValue list;
  for (const wchar_t* text : {L"one", L"two", L"three"}) list.add(text);
  made->setValue(list);
  return made;
}

std::string lookAtProperty(const Property& property) {
  return recordOf(*property) + (property->HasAllocatedName() ? " own name" : "");
}

TEST(FailingAllocation, LeavesPropertiesAndValues) {
  const struct {
    const char* name;
    std::function<void(CProperty&)> act;
  } rows[] = {
      {"SetName", [](CProperty& p) { p.SetName(L"another name that is long"); }},
      {"SetName, private", [](CProperty& p) { p.SetName(L"_private"); }},
      {"SetAllocatedMName", [](CProperty& p) { p.SetAllocatedMName(longText.c_str()); }},
      {"setValue, text", [](CProperty& p) { p.setValue(longText.c_str()); }},
      {"setValue, number", [](CProperty& p) { p.setValue(2.5); }},
      {"setValue, value", [](CProperty& p) { p.setValue(tovin::IntegerArrayValue()); }},
      {"setValue, same class", [](CProperty& p) { p.setValue(tovin::StringValue(longText.c_str())); }},
      {"setValue, list", [](CProperty& p) { p.setValue(listProperty()->getValue()); }},
      {"appendValue, text", [](CProperty& p) { p.appendValue(longText.c_str()); }},
      {"appendValue, value", [](CProperty& p) { p.appendValue(tovin::IntegerValue(5)); }},
      {"assignFrom", [](CProperty& p) { p.assignFrom(listProperty().get()); }},
      {"AssignFrom", [](CProperty& p) { p = *listProperty(); }},
      {"CoerceToType", [](CProperty& p) { p.CoerceToType(tovin::StringArrayValue::Tag); }},
      {"getEditableValue", [](CProperty& p) { p.getEditableValue(); }},
      {"clone", [](CProperty& p) { p.clone()->deleteInstance(); }},
      {"newInstance", [](CProperty& p) { p.newInstance()->deleteInstance(); }},
  };
  for (const auto& row : rows) {
    for (Property (*make)() : {property, listProperty})
      sweep({row.name}, make, lookAtProperty, [&row](Property& p) { row.act(*p); });
  }
  sweep(
      {"serialize"}, [] { return std::pair(property(), std::string()); },
      [](auto& state) { return state.second; }, [](auto& state) { state.second = recordOf(*state.first); });
  Property fresh(CProperty::allocate());
  sweep({"deserialize", After::asBeforeOr, lookAtProperty(fresh)}, property, lookAtProperty, [](Property& p) {
    static const std::string record = [] {
      Writer out;
      listProperty()->serialize(out);
      return bytesOf(out);
    }();
    Reader in(record, tovin::currentSerializationVersion);
    p->deserialize(in);
  });
}

TEST(FailingAllocation, LeavesEveryKindOfValue) {
  tovin::BitsetValue bits;
  bits.resize(70);
  bits.setOn(69);
  tovin::StringArrayValue texts;
  for (int i = 0; i < 5; ++i) texts.add(longText.c_str());
  tovin::IntegerArrayValue numbers;
  for (int i = 0; i < 5; ++i) numbers.add(i);
  const tovin::StringValue text(L"12");
  const tovin::IntegerValue integer(3);
  const tovin::DoubleValue real(4);
  const tovin::Value* const kinds[] = {&bits, &texts, &numbers, &text, &integer, &real};
  struct Slot {
    tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator> value;
  };
  const auto look = [](const Slot& slot) {
    return std::string(slot.value->getClassTag()) + recordOf(*slot.value);
  };
  for (const tovin::Value* kind : kinds) {
    const auto make = [kind] {
      return Slot{tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator>(kind->cloneValue())};
    };
    const auto inSlot = [](Slot& slot, auto&& change) {
      tovin::Value* value = slot.value.detach();
      try {
        change(value);
      } catch (...) {
        slot.value.reset(value);
        throw;
      }
      slot.value.reset(value);
    };
    for (const tovin::Value* other : kinds) {
      sweep({"AppendToValue"}, make, look, [=](Slot& slot) {
        inSlot(slot,
               [&](tovin::Value*& value) { tovin::util::AppendToValue(value, *other, false, L"a", L","); });
      });
      if (other == kind) sweep({"copyFrom"}, make, look, [=](Slot& slot) { slot.value->copyFrom(*other); });
    }
    for (const tovin::ClassTag& tag :
         {tovin::ClassTag(tovin::StringValue::Tag), tovin::ClassTag(tovin::StringArrayValue::Tag)}) {
      sweep({"CoerceToType"}, make, look, [=](Slot& slot) {
        inSlot(slot, [&](tovin::Value*& value) { tovin::util::CoerceToType(value, tag); });
      });
    }
    sweepResult({"getText"}, [=] { return tovin::wideToUtf8(kind->getText().view()); });
    sweep({"deserialize", After::whole}, make, look, [=](Slot& slot) { readFrom(*kind, *slot.value); });
  }
}

// ---- collections

using Collection = Ptr<CPropertyCollection>;

Collection collectionOf(int size, const std::wstring& name = L"name") {
  Collection made(CPropertyCollection::allocate());
  for (int i = 0; i < size; ++i) made->define((name + std::to_wstring(i)).c_str(), L"value", 0);
  return made;
}

std::string lookAtCollection(const Collection& collection) {
  std::string text;
  for (unsigned i = 0; i < collection->getSize(); ++i) {
    const tovin::iProperty* each = collection->get(i);
    text += tovin::wideToUtf8(each->getName() ? each->getName() : L"(null)") + '=' +
            tovin::wideToUtf8(each->getValue().getText().view()) + ' ';
    EXPECT_EQ(collection->find(each->getName()), each);
    EXPECT_EQ(each->getParent(), collection.get());
  }
  EXPECT_EQ(collection->find(L"none"), nullptr);
  return text;
}

TEST(FailingAllocation, LeavesCollections) {
  const tovin::Array<tovin::WideString> order{L"name3", L"new", L"name1", L"newer"};
  const struct {
    const char* name;
    std::function<void(CPropertyCollection&)> act;
  } rows[] = {
      {"define", [](auto& c) { c.define(L"new", 0); }},
      {"define, value", [](auto& c) { c.define(L"new", tovin::IntegerValue(2), 0); }},
      {"define, text", [](auto& c) { c.define(L"new", longText.c_str(), 0); }},
      {"define, number", [](auto& c) { c.define(L"new", 1.5, 0); }},
      {"find", [](auto& c) { c.find(L"NAME3"); }},
      {"get", [](auto& c) { c.get(L"NAME3"); }},
      {"remove, name", [](auto& c) { c.remove(L"name1"); }},
      {"remove, index", [](auto& c) { c.remove(c.getIndex(L"name2")); }},
      {"removeAll", [](auto& c) { c.removeAll(); }},
      {"rename", [](auto& c) { c.rename(L"name2", L"renamed"); }},
      {"reorderProperty", [](auto& c) { c.reorderProperty(0, 3); }},
      {"reorder", [&](auto& c) { c.reorder(order, true); }},
      {"keep", [&](auto& c) { c.keep(order, true); }},
      {"appendFrom", [](auto& c) { c.appendFrom(collectionOf(3, L"other").get()); }},
      {"assignFrom, whole", [](auto& c) { c.assignFrom(collectionOf(11).get(), true); }},
      {"assignFrom", [](auto& c) { c.assignFrom(collectionOf(3).get(), false); }},
      {"operator=", [](auto& c) { c = *collectionOf(12); }},
      {"clone", [](auto& c) { c.clone()->deleteInstance(); }},
  };
  for (int size : {4, 9, 10, 24}) {
    for (const auto& row : rows)
      sweep(
          {row.name}, [=] { return collectionOf(size); }, lookAtCollection,
          [&row](Collection& c) { row.act(*c); });
    const auto read = [](Collection& c) { readFrom(*collectionOf(12), *c); };
    sweep(
        {"deserialize", After::whole}, [=] { return collectionOf(size); }, lookAtCollection, read);
  }
}

TEST(FailingAllocation, LeavesTheStorageOfProperties) {
  struct Storage {
    CPropertyCollectionData data;
  };
  const auto make = [] {
    auto storage = std::make_unique<Storage>();
    for (int i = 0; i < 12; ++i)
      storage->data.MakeNewPropertyWithCopiedValue((L"name" + std::to_wstring(i)).c_str(), nullptr);
    storage->data.GetIndex(L"name1");
    return storage;
  };
  const auto look = [](const std::unique_ptr<Storage>& storage) {
    std::string text;
    for (unsigned i = 0; i < storage->data.GetNumProperties(); ++i) {
      const wchar_t* name = storage->data.GetProperty(static_cast<int>(i))->getName();
      EXPECT_EQ(storage->data.GetIndex(name), static_cast<int>(i));
      text += tovin::wideToUtf8(name) + ' ';
    }
    return text;
  };
  const auto on = [](auto&& act) { return [act](std::unique_ptr<Storage>& storage) { act(storage->data); }; };
  sweep({"RebuildHash"}, make, look, on([](auto& data) {
          data.SetHashNeedsRebuild();
          data.RebuildHash();
        }));
  sweep({"AddToHash"}, make, look, on([](auto& data) { data.AddToHash(L"name3", 3); }));
  sweep({"NewProperty"}, make, look,
        on([](auto& data) { data.NewProperty(&CProperty::m_class)->deleteInstance(); }));
  sweep({"NewValue"}, make, look, on([](auto& data) { data.NewValue(nullptr)->deleteInstance(); }));
  sweep({"SetName"}, make, look, on([](auto& data) { data.SetName(3, L"another"); }));
  sweep({"its own SetName"}, make, look, on([](auto& data) { data.GetProperty(4)->SetName(L"another"); }));
}

// ---- nodes

using Node = Ptr<CBaseNode>;

Node nodeOf(const wchar_t* name) {
  Node node(CBaseNode::allocate());
  node->setName(name);
  node->getProperties()->define(L"id", name, 0);
  return node;
}

Node tree() {
  Node root = nodeOf(L"p:root");
  for (const wchar_t* name : {L"a", L"b", L"c"}) {
    const Node child = nodeOf(name);
    for (const wchar_t* inner : {L"x", L"y"}) child->appendChild(nodeOf(inner).get());
    root->appendChild(child.get());
  }
  Ptr<CObjectTransportNode> carrier(CObjectTransportNode::allocate());
  const Node carried = nodeOf(L"carried");
  carried->appendChild(nodeOf(L"deep").get());
  carrier->SetObject(carried.get());
  root->appendChild(carrier.get());
  return root;
}

std::string lookAtNode(const Node& node) {
  std::vector<iNode*> left{node.get()};
  while (!left.empty()) {
    iNode* at = left.back();
    left.pop_back();
    for (iNode* child : at->getChildren()) {
      EXPECT_EQ(child->findParent(), at);
      EXPECT_EQ(child->getRefCount(), 1);
      left.push_back(child);
    }
  }
  return recordOf(*node);
}

TEST(FailingAllocation, LeavesNodes) {
  const struct {
    const char* name;
    std::function<void(CBaseNode&)> act;
    After after = After::asBefore;
  } rows[] = {
      {"setName", [](auto& n) { n.setName(L"q:another"); }},
      {"getNamePrefix",
       [](auto& n) {
         n.getNamePrefix();
         n.getLocalName();
       },
       After::whole},
      {"setValue", [](auto& n) { n.setValue(tovin::StringValue(longText.c_str())); }},
      {"setValue, other class",
       [](auto& n) {
         n.setValue(tovin::IntegerValue(1));
         n.setValue(tovin::DoubleValue(1));
       },
       After::whole},
      {"appendChild", [](auto& n) { n.appendChild(nodeOf(L"new").get()); }},
      {"insertChildBefore", [](auto& n) { n.insertChildBefore(nodeOf(L"new").get(), n.getChildAt(1)); }},
      {"replaceChild", [](auto& n) { n.replaceChild(n.getChildAt(1), nodeOf(L"new").get()); }},
      {"move",
       [](auto& n) {
         if (n.getChildAt(1)->hasChildren()) n.appendChild(n.getChildAt(1)->getChildAt(0));
         if (n.getChildAt(1)->hasChildren())
           n.insertChildBefore(n.getChildAt(1)->getChildAt(0), n.getChildAt(0));
       },
       After::whole},
      {"removeChildAt", [](auto& n) { n.removeChildAt(0); }},
      {"removeAllChildren", [](auto& n) { n.removeAllChildren(); }},
      {"clear", [](auto& n) { n.clear(); }},
      {"assignFromNode", [](auto& n) { n.assignFromNode(tree()->getChildAt(1), true); }},
      {"assignFromNode, shallow", [](auto& n) { n.assignFromNode(tree()->getChildAt(1), false); }},
      {"assignFromNode, own child", [](auto& n) { n.assignFromNode(n.getChildAt(1), true); }},
      {"operator=", [](auto& n) { CBaseNode() = n; }},
      {"copy constructor", [](auto& n) { const CBaseNode copy(n); }},
      {"clone", [](auto& n) { n.clone()->deleteInstance(); }},
      {"cloneNode", [](auto& n) { n.cloneNode(false)->deleteInstance(); }},
      {"clone of a carrier", [](auto& n) { n.getChildAt(3)->clone()->deleteInstance(); }},
      {"allocate", [](auto&) { CBaseNode::allocate()->deleteInstance(); }},
      {"allocateCopy", [](auto& n) { CBaseNode::allocateCopy(n)->deleteInstance(); }, After::whole},
      {"getIndexPath",
       [](auto& n) {
         tovin::IntegerArrayValue path;
         n.getChildAt(0)->getIndexPath(path, &n);
       }},
      {"getIndexPathExpression",
       [](auto& n) {
         tovin::WideString path;
         n.getChildAt(0)->getIndexPathExpression(path, &n);
       }},
      {"findChildrenByName",
       [](auto& n) {
         tovin::NodeReferenceSet found;
         n.findChildrenByName(L"a", found);
       }},
  };
  for (const auto& row : rows)
    sweep({row.name, row.after}, tree, lookAtNode, [&row](Node& node) { row.act(*node); });
  sweep({"deserialize", After::whole}, tree, lookAtNode, [](Node& node) { readFrom(*tree(), *node); });
  sweepResult({"operator= shares"}, [] {
    const Node a = tree(), b = tree();
    *b = *a;
    return recordOf(*b);
  });
}

TEST(FailingAllocation, LeavesQueries) {
  const Node root = tree();
  for (const wchar_t* expression :
       {L"//x", L"/*/b/@id", L"count(//*[@id='y'])", L"concat(string(/*/a/@id), substring('abcdef', 2, 3))",
        L"//x | //y[last()]", L"/*/*[position() < 3 and not(@id = 'a')]/preceding-sibling::*",
        L"translate(normalize-space('  a  b '), 'ab', 'xy')", L"sum(//x/@id) + 12345678901234567890 > 2"}) {
    sweepResult({"query"}, [=] {
      tovin::NodeReferenceSet nodes;
      tovin::PropertyReferenceSet properties;
      tovin::WideString text;
      int number = 0;
      bool truth = false;
      std::string result;
      // Anew, so that the expression is compiled and not found among those of before.
      const tovin::WideString fresh(expression);
      result += root->query(fresh, 0, text) ? tovin::wideToUtf8(text.view()) : "-";
      root->query(fresh, 0, truth);
      root->query(fresh, 0, number);
      if (*expression == L'/') {  // the others select nothing
        root->query(fresh, 0, nodes);
        root->query(fresh, 0, properties);
      }
      return result + (truth ? " true " : " false ") + std::to_string(number) + ' ' +
             std::to_string(nodes.getSize()) + ' ' + std::to_string(properties.getSize());
    });
  }
}

}  // namespace
