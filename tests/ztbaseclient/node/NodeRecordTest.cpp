#include "tests/support/Bytes.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerValue.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"
#include "ztbaseclient/node/NodeRecord.h"

namespace {

using namespace testsupport;

constexpr int deep = 1'000'000;

std::string golden(int version) { return unhexFile("records/tree_v" + std::to_string(version) + ".hex"); }

// The tree that the hand-written records hold.
tovin::Ptr<CBaseNode> makeTree() {
  tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
  root->setName(L"a:b");
  root->getLocalName();
  root->setValue(tovin::IntegerValue(5));
  root->getProperties()->define(L"id", L"x", 0);
  tovin::iNode* leaf = CBaseNode::allocate();
  leaf->setName(L"leaf_\xD83D");
  root->appendChild(leaf);
  CObjectTransportNode* carrier = CObjectTransportNode::allocate();
  root->appendChild(carrier);
  carrier->setName(L"carrier");
  carrier->SetObject(tovin::DoubleValue(2.5).clone());
  CBaseNode* last = CBaseNode::allocate();
  carrier->appendChild(last);
  last->setName(L"");
  last->getProperties();
  return root;
}

tovin::Ptr<CBaseNode> readBase(Reader&& in) {
  tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
  root->deserialize(in);
  EXPECT_EQ(in.GetRemaining(), 0u);
  return root;
}

TEST(NodeRecord, IsTheHandWrittenOneInEveryVersion) {
  for (int version : {1, 2, 3}) {
    Writer out(version), again(version);
    makeTree()->serialize(out);
    const std::string expected = golden(version);
    EXPECT_EQ(hex(out), hex(expected)) << version;
    const auto root = readBase(Reader(expected, version));
    root->serialize(again);
    EXPECT_EQ(bytesOf(again), expected);
    auto* carrier = tovin::seek<CObjectTransportNode>(static_cast<tovin::Object*>(root->getChildAt(1)));
    ASSERT_NE(carrier, nullptr);
    EXPECT_TRUE(tovin::seek<tovin::Value>(carrier->GetObject())->equals(tovin::DoubleValue(2.5)));
    EXPECT_EQ(carrier->findParent(), root.get());
  }
}

TEST(NodeRecord, OfAnyClassIsReadByTheVersionThatItBeginsWith) {
  Writer carrier;
  tovin::Ptr<CObjectTransportNode>(CObjectTransportNode::allocate())->serialize(carrier);
  const std::pair<std::string, const tovin::ClassTag*> rows[] = {
      {golden(3), &CBaseNode::Tag},
      {bytesOf(carrier), &CObjectTransportNode::Tag},
      {unhexFile("records/transport_7074.hex"), &CObjectTransportNode::Tag}};
  for (const auto& [record, tag] : rows) {
    Reader in(record + "behind", 3);
    const tovin::Ptr<tovin::iNode> node = ReadNodeRecord(in);
    EXPECT_TRUE(node->getClassTag() == *tag);
    EXPECT_EQ(in.GetRemaining(), 6u);
    Reader cut(record.substr(0, record.size() - 1), 3);
    EXPECT_THROW(ReadNodeRecord(cut), tovin::Exception);
  }
  Reader unknown(unhex("01 05"), 3);
  expectMessage(L"Deserialization version mismatch (5 , 9095)", [&] { ReadNodeRecord(unknown); });
}

TEST(NodeRecord, CutAnywhereIsRefusedAndCanBeReleased) {
  for (int version : {1, 2, 3}) {
    const std::string record = golden(version);
    for (size_t length = 0; length < record.size(); ++length) {
      const tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
      Reader in(record.substr(0, length), version);
      EXPECT_THROW(root->deserialize(in), tovin::Exception) << length;
      const unsigned kept = length + 1 < record.size() ? root->getNumberOfChildren() : 2;
      EXPECT_EQ(root->getNumberOfChildren(), kept) << "what was read is kept";
    }
  }
}

TEST(NodeRecord, WithAnyByteChangedIsReadOrRefused) {
  const std::string record = golden(3);
  for (size_t at = 0; at < record.size(); ++at) {
    for (char mask : {'\x01', '\x80', '\xFF', '\x10'}) {
      std::string damaged = record;
      damaged[at] = static_cast<char>(damaged[at] ^ mask);
      const tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
      Reader in(damaged, 3);
      messageOf([&] { root->deserialize(in); });
    }
  }
}

TEST(NodeRecord, RefusesOtherVersionsAndClasses) {
  const std::pair<const char*, const wchar_t*> rows[] = {
      {"02 86 23", L"Deserialization version mismatch (9094 , 9095)"},
      {"02 87 23 01 7D", L"Deserialization version mismatch (125 , 126)"},
      {"02 87 23 01 7E 00 00 00", L"EOF reading bool"},
      {"02 87 23 01 7E 00 00 00 00 FC", L"A node cannot have -1 children"},
      {"02 87 23 01 7E 00 00 00 00 03 FF FF FF 7F", L"EOF reading int header"},
      {"02 87 23 01 7E 00 00 00 00 04 0C 6E 6F", L"Unknown class no"},
      {"02 87 23 01 7E 00 00 00 00 04 00", L"Unknown class (null)"},
      {"02 87 23 01 7E 00 00 00 00 04 01 16 44 72 61 56 6F 6C 69 6E 2E 76 61 6C 75 65 2E 44 6F 75 62 6C 65",
       L"Class DraVolin.value.Double is not a node class"}};
  for (const auto& [bytes, message] : rows)
    expectMessage(message, [bytes = bytes] { readBase(Reader(bytes)); });
  EXPECT_STREQ(readBase(Reader("02 87 23 01 7F 08 61 00 00 00 00"))->getName(), L"a") << "a later core";
}

TEST(NodeRecord, TheOlderTransportVersionHasTwoMoreBytes) {
  const tovin::Ptr<CObjectTransportNode> carrier(CObjectTransportNode::allocate());
  Reader in(unhexFile("records/transport_7074.hex"), 3);
  carrier->deserialize(in);
  EXPECT_EQ(in.GetRemaining(), 0u);
  EXPECT_STREQ(carrier->getName(), L"old");
  EXPECT_TRUE(tovin::seek<tovin::Value>(carrier->GetObject())->equals(tovin::IntegerValue(16)));
  Reader wrong("02 A1 1B");
  carrier->SetObject(nullptr);
  expectMessage(L"Deserialization version mismatch (7073 , 7075)", [&] { carrier->deserialize(wrong); });
}

TEST(NodeRecord, ReadingDropsTheObjectHeldBeforeWithoutReleasingIt) {
  const tovin::Ptr<CObjectTransportNode> carrier(CObjectTransportNode::allocate());
  const tovin::Ptr<CBaseNode> held(CBaseNode::allocate());
  carrier->SetObject(held.get());
  Reader in("02 A3 1B 00 01 7E 00 00 00 00 00");
  carrier->deserialize(in);
  EXPECT_EQ(carrier->GetObject(), nullptr);
  EXPECT_EQ(held->getRefCount(), 2);
  held->release();
}

TEST(DeepTree, IsBuiltWrittenReadClonedAndReleased) {
  const tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
  tovin::iNode* at = root.get();
  for (int i = 0; i < deep; ++i) {
    CBaseNode* child = CBaseNode::allocate();
    at->appendChild(child);
    at = child;
  }
  EXPECT_EQ(at->getRoot(), root.get());
  tovin::IntegerArrayValue path;
  at->getIndexPath(path, nullptr);
  EXPECT_EQ(path.getSize(), static_cast<size_t>(deep));
  Writer out;
  root->serialize(out);
  const auto back = readBase(Reader(out));
  const tovin::Ptr<tovin::iNode> copy(back->cloneNode(true));
  Writer again;
  copy->serialize(again);
  // A copy has a collection of its own, if an empty one: 8 bytes more a node.
  EXPECT_EQ(again.GetSize(), out.GetSize() + size_t{deep + 1} * 7);
}

TEST(DeepTree, CarriersInCarriersEndAtAThousand) {
  const auto nest = [](int depth) {
    tovin::Ptr<CObjectTransportNode> outer(CObjectTransportNode::allocate());
    for (int i = 0; i < depth; ++i) {
      tovin::Ptr<CObjectTransportNode> next(CObjectTransportNode::allocate());
      next->SetObject(outer.get());
      outer = next;
    }
    return outer;
  };
  Writer out;
  nest(1000)->serialize(out);
  const tovin::Ptr<CObjectTransportNode> back(CObjectTransportNode::allocate());
  Reader in(out);
  back->deserialize(in);
  expectMessage(L"Carried objects are nested deeper than 1000", [&] { nest(1001)->serialize(out); });
  // One level more around a record that was written.
  std::string deeper = unhex("02 A3 1B 01 01 22") + "DraVolin.data.ObjectTransportNode" + bytesOf(out);
  Reader tooDeep(deeper, 3);
  back->ReleaseObject();
  expectMessage(L"Carried objects are nested deeper than 1000", [&] { back->deserialize(tooDeep); });
  nest(200'000);
}

}  // namespace
