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

// What the reading of a tree uses again from node to node.
struct CNodeImplBase::RecordReader {
  tovin::iByteInputStream& stream;
  // Of the last child; the next one is of the same, as a rule.
  tovin::NarrowString className = {};
  tovin::Class* nodeClass = nullptr;
  tovin::NarrowString room = {};
  AttributePacker packer = {};
  tovin::Ptr<CPropertyCollection> spare = {};
};

void CNodeImplBase::writeCore(tovin::iByteOutputStream& stream) const {
  WriteCompactInt(stream, nodeCoreVersion);
  if (const RarePart* part = rarePart())
    part->name.serialize(stream);
  else
    cppNodeQName::WriteTexts(stream, name_, nullptr, nullptr);
  WriteBool(stream, properties());
  if (const AttributeBlock* attributes = packed())
    CPropertyCollection::SerializeBlock(stream, *attributes);
  else if (collection())
    collection()->serialize(stream);
}

void CNodeImplBase::readCore(RecordReader& reader) {
  tovin::iByteInputStream& stream = reader.stream;
  CleanOutNodeData(false);
  RecordVersion::requireFrom(stream, nodeCoreVersion);
  ztUniqueString texts[3];
  cppNodeQName::ReadTexts(stream, texts);
  if (texts[1] || texts[2]) ensureRarePart();
  SetUniqueNodeName(texts[0]);
  if (RarePart* part = rarePart()) part->name.share(texts[0], texts[1], texts[2]);
  if (ReadBool(stream)) readProperties(reader);
}

// A collection that nobody asked for reads them; the node takes the block that it leaves, or else all of it.
void CNodeImplBase::readProperties(RecordReader& reader) {
  if (CPropertyCollection* present = collection()) return present->Deserialize(reader.stream, reader.packer);
  if (!reader.spare) reader.spare = tovin::Ptr<CPropertyCollection>(CPropertyCollection::allocate());
  try {
    reader.spare->Deserialize(reader.stream, reader.packer);
  } catch (...) {
    takeProperties(reader);
    throw;
  }
  takeProperties(reader);
}

void CNodeImplBase::takeProperties(RecordReader& reader) {
  if (AttributeBlock* attributes = reader.spare->SurrenderBlock()) return setPacked(attributes);
  reader.spare->_setOwner(inode());
  reader.spare->addRef();
  setCollection(reader.spare.get());
  reader.spare.reset();
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
iNode* CNodeImplBase::readChildInstance(RecordReader& reader) {
  tovin::NarrowString& className = reader.className;
  ReadNarrowString(reader.stream, reader.room);
  if (!reader.nodeClass || reader.room != className) {
    reader.nodeClass = nullptr;
    className = reader.room;
    reader.nodeClass = &tovin::Class::requireClass(tovin::ClassTag(className.c_str()));
  }
  tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator> made(reader.nodeClass->newInstance());
  auto* child = tovin::seek<iNode>(made.get());
  if (!child) throw tovin::Exception(L"Class %hs is not a node class", className);
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
    RecordReader reader{stream};
    const auto begin = [&](CNodeImplBase& node) {
      node.readCore(reader);
      const int32_t count = withChildren ? node.readChildCount(stream) : 0;
      if (count > 0) steps.push_back({&node, count});
    };
    begin(*this);
    while (!steps.empty()) {
      Step& step = steps.back();
      CNodeImplBase* parent = step.node;
      const bool last = --step.missing == 0;
      if (last) steps.pop_back();
      iNode* child = parent->readChildInstance(reader);
      if (last) parent->children_.shrink();
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
