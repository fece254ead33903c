// The node core record, written and read without recursion over the tree.
#include "tovinCore/Guard.h"
#include "ztbaseclient/framework/RecordVersion.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztbaseclient/node/CNodeImplBase.h"
#include "ztbaseclient/node/NestedCall.h"
#include "ztcore/ztUniqueStrings.h"

using tovin::guarded;
using tovin::iNode;

namespace {

// The version that is written; every later one is read with the same layout.
constexpr int32_t nodeCoreVersion = 126;

}  // namespace

void CNodeImplBase::writeCore(tovin::iByteOutputStream& stream) const {
  WriteCompactInt(stream, nodeCoreVersion);
  if (const RarePart* part = rarePart())
    part->name.serialize(stream);
  else
    cppNodeQName::WriteTexts(stream, name_, nullptr, nullptr);
  const tovin::iPropertyCollection* collection = FindPropCollection();
  WriteBool(stream, collection);
  if (collection) collection->serialize(stream);
}

void CNodeImplBase::readCore(tovin::iByteInputStream& stream) {
  CleanOutNodeData(false);
  RecordVersion::requireFrom(stream, nodeCoreVersion);
  ztUniqueString texts[3];
  cppNodeQName::ReadTexts(stream, texts);
  if (texts[1] || texts[2]) ensureRarePart();
  SetUniqueNodeName(texts[0]);
  if (RarePart* part = rarePart()) part->name.share(texts[0], texts[1], texts[2]);
  if (ReadBool(stream)) EnsurePropCollectionExists()->deserialize(stream);
}

void CNodeImplBase::SerializeNode(tovin::iByteOutputStream& stream, bool withChildren) const {
  guarded({ClassName, "SerializeNode"}, [&] {
    struct Step {
      const CNodeImplBase* node;
      unsigned next;
    };
    std::vector<Step> steps;
    const auto begin = [&](const CNodeImplBase& node) {
      node.writeCore(stream);
      if (!withChildren) return;
      WriteCompactInt(stream, static_cast<int32_t>(node.NumChildNodes()));
      if (node.NumChildNodes() > 0) steps.push_back({&node, 0});
    };
    begin(*this);
    while (!steps.empty()) {
      Step& step = steps.back();
      iNode* child = step.node->children_.view()[step.next];
      if (++step.next == step.node->NumChildNodes()) steps.pop_back();
      WriteNarrowString(stream, child->getClassTag());
      const CNodeImplBase* core = coreOf(child);
      if (core && core->isWalked()) {
        core->WriteClassRecord(stream);
        begin(*core);
      } else {
        const NestedCall deeper;
        child->serialize(stream);
      }
    }
  });
}

int32_t CNodeImplBase::readChildCount(tovin::iByteInputStream& stream) {
  int32_t count = 0;
  ReadCompactInt(stream, count);
  if (count < 0) throw tovin::Exception(L"A node cannot have %d children", count);
  return count;
}

// Reads a child's class and attaches a new instance of it.
iNode* CNodeImplBase::readChildInstance(tovin::iByteInputStream& stream, tovin::NarrowString& room) {
  ReadNarrowString(stream, room);
  tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator> made(
      tovin::Class::requireClass(tovin::ClassTag(room.c_str())).newInstance());
  auto* child = tovin::seek<iNode>(made.get());
  if (!child) throw tovin::Exception(L"Class %hs is not a node class", room);
  made.detach();
  const tovin::Ptr<iNode> held(child);
  AddChildNode(child, NumChildNodes());
  return child;
}

void CNodeImplBase::DeserializeNode(tovin::iByteInputStream& stream, bool withChildren) {
  guarded({ClassName, "DeserializeNode"}, [&] {
    struct Step {
      CNodeImplBase* node;
      int32_t missing;
    };
    std::vector<Step> steps;
    tovin::NarrowString className;
    const auto begin = [&](CNodeImplBase& node) {
      node.readCore(stream);
      const int32_t count = withChildren ? node.readChildCount(stream) : 0;
      if (count > 0) steps.push_back({&node, count});
    };
    begin(*this);
    while (!steps.empty()) {
      Step& step = steps.back();
      CNodeImplBase* parent = step.node;
      if (--step.missing == 0) steps.pop_back();
      iNode* child = parent->readChildInstance(stream, className);
      CNodeImplBase* core = coreOf(child);
      if (core && core->isWalked()) {
        core->ReadClassRecord(stream);
        begin(*core);
      } else {
        const NestedCall deeper;
        child->deserialize(stream);
      }
      child->setParent(parent->GetINode());
    }
  });
}
