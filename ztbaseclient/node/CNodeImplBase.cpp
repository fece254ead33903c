#include "ztbaseclient/node/CNodeImplBase.h"

#include <algorithm>

#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/data/CPropertyCollection.h"
#include "ztbaseclient/node/NestedCall.h"
#include "ztcore/ztUniqueStrings.h"

using tovin::guarded;
using tovin::iNode;
using tovin::iPropertyCollection;
using tovin::MetaDataFlags;

const wchar_t* const CNodeImplBase::DefaultValueName = L"text-content";
const wchar_t* const CNodeImplBase::NullNodeMsg = L"Error: attempting to add a null node.";
const wchar_t* const CNodeImplBase::OwnParentErrMsg =
    L"Error: attempting to set a data node to be its own parent.";
const tovin::NullValue CNodeImplBase::nullNodeValue{tovin::NullValue::uncounted};
const tovin::ClassTagDecl CNodeImplBase::Tag("DraVolin.node.CNodeImplBase");
tovin::LeakDetector CNodeImplBase::m_leakDetector(CNodeImplBase::ClassName);

namespace {

constexpr unsigned atEnd = 0xFFFFFFFF;
constexpr unsigned fewAttributes = 9;

}  // namespace

CNodeImplBase* CNodeImplBase::coreOf(iNode* node) {
  return tovin::seek<CNodeImplBase>(static_cast<tovin::Object*>(node));
}

CNodeImplBase::CNodeImplBase() { m_leakDetector.Add(this, ClassName); }

CNodeImplBase::CNodeImplBase(const CNodeImplBase&) : CNodeImplBase() {}

CNodeImplBase& CNodeImplBase::operator=(const CNodeImplBase& other) {
  if (this == &other) return *this;
  // What needs memory comes first.
  const RarePart* theirs = other.rarePart();
  if (other.properties()) other.EnsurePropCollectionExists();
  if (theirs || other.properties()) ensureRarePart();
  ChildList shared;
  shared.share(other.children_);
  // Before the rest: the other may be below the children that go, and they leave it without a parent.
  if (!children_.isSame(other.children_) && !children_.hasOtherUsers()) ClearChildren();
  children_.share(shared);
  if (RarePart* mine = rarePart()) mine->parser = theirs ? theirs->parser : tovin::Ptr<tovin::iXPathParser>();
  assignName(other);
  parent_ = other.parent_;
  if (properties() != other.properties()) {
    DeletePropCollection();
    if (CPropertyCollection* theirCollection = other.collection()) {
      theirCollection->addRef();
      setCollection(theirCollection);
      rarePart()->ownsCollection = false;
    }
  }
  return *this;
}

CNodeImplBase::~CNodeImplBase() {
  tovin::guardedDestruction(
      ClassName,
      [&] {
        CleanOutNodeData(true);
        DeletePropCollection();
        dropRarePart();
        SetUniqueNodeName(nullptr);
      },
      "~CNodeImplBase");
  m_leakDetector.Sub(this);
}

void CNodeImplBase::OnActivateDefault() {
  guarded({ClassName, "OnActivateDefault"}, [&] {
    CleanOutNodeData(true);
    name_ = nullptr;
    if (RarePart* part = rarePart()) part->name.onActivate();
  });
}

void CNodeImplBase::OnDeactivateDefault() {
  guarded({ClassName, "OnDeactivateDefault"}, [&] {
    ClearChildren();
    // At rest nothing is shared: a list that another node has too would give that one's children to the next
    // who is handed this node.
    children_.reset();
    DeletePropCollection();
    dropRarePart();
    // The next hand-out forgets the name without giving it up, so it is given up here.
    SetUniqueNodeName(nullptr);
  });
}

CNodeImplBase::RarePart& CNodeImplBase::ensureRarePart() const {
  if (RarePart* part = rarePart()) return *part;
  auto* part = new RarePart;
  part->properties = state_;
  part->name.setUniqueName(name_);
  state_ = reinterpret_cast<uintptr_t>(part) | rareBit;
  return *part;
}

void CNodeImplBase::dropRarePart() noexcept {
  RarePart* part = rarePart();
  if (!part) return;
  state_ = part->properties;
  delete part;
}

void CNodeImplBase::SetNodeName(const wchar_t* name) {
  const ztUniqueString shared(name);
  SetUniqueNodeName(shared);
}

void CNodeImplBase::SetUniqueNodeName(const wchar_t* name) noexcept {
  ztUniqueStrings::Assign(name_, name);
  if (RarePart* part = rarePart()) part->name.setUniqueName(name);
}

void CNodeImplBase::assignName(const CNodeImplBase& other) {
  ztUniqueStrings::Assign(name_, other.name_);
  if (RarePart* part = rarePart()) part->name = other.rarePart() ? other.rarePart()->name : cppNodeQName();
}

// A name that was read without its qualified form.
const wchar_t* CNodeImplBase::joinName() const {
  ztUniqueStrings::Assign(name_, rarePart()->name.getQName());
  return name_;
}

const wchar_t* CNodeImplBase::GetNodeNamePrefix() const {
  return name_ || rarePart() ? ensureRarePart().name.getUriName() : nullptr;
}

const wchar_t* CNodeImplBase::GetNodeLocalName() const {
  return name_ || rarePart() ? ensureRarePart().name.getLocalName() : nullptr;
}

const tovin::Value& CNodeImplBase::GetNodeValue() const {
  const int index = valueIndex();
  if (index < 0) return nullNodeValue;
  EnsurePropCollectionExists();
  return collection()->GetStorage().GetValue(static_cast<unsigned>(index));
}

// Where the value is among the properties, -1 if there is none. Among many the collection has an index.
int CNodeImplBase::valueIndex() const {
  if (const AttributeBlock* attributes = packed()) {
    if (attributes->getCount() <= fewAttributes) return attributes->find(DefaultValueName);
  } else if (properties() == 0) {
    return -1;
  }
  EnsurePropCollectionExists();
  return collection()->GetStorage().GetIndex(DefaultValueName);
}

tovin::AttributeView CNodeImplBase::ViewProperty(unsigned index) const {
  if (const AttributeBlock* attributes = packed()) return attributes->view(index);
  return collection()->GetStorage().View(index);
}

tovin::AttributeView CNodeImplBase::ViewNodeValue() const {
  const int index = valueIndex();
  return index < 0 ? tovin::AttributeView::of(nullNodeValue) : ViewProperty(static_cast<unsigned>(index));
}

void CNodeImplBase::SetValue(const tovin::Value& value) {
  guarded({ClassName, "SetValue"}, [&] {
    iPropertyCollection* present = FindPropCollection();
    tovin::iProperty* property = present ? present->find(DefaultValueName) : nullptr;
    if (property && property->getInfo()->getMetaDataFlags().has(MetaDataFlags::nodeValue) &&
        property->getValue().getClassTag() == value.getClassTag()) {
      const_cast<tovin::Value&>(property->getValue()).copyFrom(value);
      return;
    }
    // The value may lie in the property that goes.
    tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator> copy(value.cloneValue());
    EnsurePropCollectionExists();
    tovin::iPropertyInfo* info = collection()->Redefine(DefaultValueName, std::move(copy))->getInfo();
    MetaDataFlags flags = info->getMetaDataFlags();
    flags.set(MetaDataFlags::nodeValue);
    info->setMetaDataFlags(flags);
  });
}

CPropertyCollection* CNodeImplBase::makeCollection() const {
  tovin::Ptr<CPropertyCollection> made(CPropertyCollection::allocate());
  made->_setOwner(inode());
  if (AttributeBlock* attributes = packed()) made->StandOn(attributes);
  setCollection(made.get());
  made->addRef();
  return made.get();
}

void CNodeImplBase::setCollection(CPropertyCollection* counted) const noexcept {
  properties() = reinterpret_cast<uintptr_t>(counted);
  if (RarePart* part = rarePart()) part->ownsCollection = true;
}

void CNodeImplBase::setPacked(AttributeBlock* attributes) const noexcept {
  properties() = reinterpret_cast<uintptr_t>(attributes) | packedBit;
}

void CNodeImplBase::dropProperties() {
  AttributeBlock* attributes = packed();
  CPropertyCollection* present = collection();
  properties() = 0;
  AttributeBlock::destroy(attributes);
  if (!present) return;
  // Another node may share the collection; it must not look for this one any more.
  if (ownsCollection() && present->getRefCount() > 1) present->_setOwner(nullptr);
  present->release();
}

void CNodeImplBase::removeProperties() {
  if (AttributeBlock* attributes = packed()) {
    setPacked(AttributeBlock::none());
    AttributeBlock::destroy(attributes);
  } else if (CPropertyCollection* present = collection()) {
    present->removeAll();
  }
}

iNode* CNodeImplBase::GetChildNode(unsigned index) const {
  if (index >= NumChildNodes()) {
    throw tovin::InvalidIndexException(index, static_cast<long long>(NumChildNodes()) - 1);
  }
  return children_.view()[index];
}

unsigned CNodeImplBase::GetChildNodeIndex(const iNode* child) const {
  const std::span<iNode* const> children = GetChildNodes();
  for (unsigned i = 0; i < children.size(); ++i) {
    if (child && children[i] == child) return i;
  }
  throw tovin::Exception(L"The specified node (%ls) is not a child of this node (%ls)",
                         child ? child->getName() : L"null", GetNodeName());
}

void CNodeImplBase::FindChildNodesByName(const wchar_t* name, tovin::NodeReferenceSet& out) const {
  tovin::refill(out, [&](tovin::NodeReferenceSet& found) {
    for (iNode* child : GetChildNodes()) {
      if (tovin::equalFolded(child->getName(), name)) found.add(child);
    }
    return !found.isEmpty();
  });
}

void CNodeImplBase::AddChildNode(iNode* child, unsigned index) {
  guarded({ClassName, "AddChildNode"}, [&] {
    if (index < children_.getSize())
      children_.insert(index, child);
    else
      children_.add(child);
    child->setParent(inode());
    child->addRef();
  });
}

void CNodeImplBase::ReplaceChildNode(iNode* child, unsigned index) {
  guarded({ClassName, "ReplaceChildNode"}, [&] {
    iNode* old = GetChildNode(index);
    children_[index] = child;
    child->setParent(inode());
    child->addRef();
    old->setParent(nullptr);
    old->release();
  });
}

void CNodeImplBase::RemoveChildNode(unsigned index) {
  guarded({ClassName, "RemoveChildNode"}, [&] {
    iNode* child = GetChildNode(index);
    children_.removeAt(index);
    child->setParent(nullptr);
    child->release();
  });
}

bool CNodeImplBase::RemoveChildNode(const iNode* child) {
  const std::span<iNode* const> children = GetChildNodes();
  const auto found = std::find(children.begin(), children.end(), child);
  if (found == children.end()) return false;
  RemoveChildNode(static_cast<unsigned>(found - children.begin()));
  return true;
}

void CNodeImplBase::dropChildren() {
  guarded({ClassName, "ClearChildren"}, [&] {
    ChildList released = children_.takeAll();
    tovin::Releasing releasing;
    for (iNode* child : released.view()) releasing.step([&] { child->setParent(nullptr); });
    while (!released.isEmpty()) releaseWhole(released.takeLast(), releasing);
    releasing.finish();
  });
}

void CNodeImplBase::ReleaseNode(iNode* node) {
  tovin::Releasing releasing;
  releaseWhole(node, releasing);
  releasing.finish();
}

// Nodes that are about to die are the list of what is left to do: each holds what dies below it and, as its
// parent, the one that it is released from.
void CNodeImplBase::releaseWhole(iNode* node, tovin::Releasing& releasing) {
  CNodeImplBase* dying = releaseOrEnter(node, nullptr, releasing);
  while (dying) {
    if (iNode* held = dying->takeLastHeld()) {
      releasing.step([&] { held->setParent(nullptr); });
      if (CNodeImplBase* below = releaseOrEnter(held, dying, releasing)) dying = below;
      continue;
    }
    iNode* empty = dying->inode();
    dying = coreOf(const_cast<iNode*>(std::exchange(dying->parent_, nullptr)));
    releasing.step([&] { empty->release(); });
  }
}

// The core of a node that dies and holds others; any other node is released.
CNodeImplBase* CNodeImplBase::releaseOrEnter(iNode* node, CNodeImplBase* above, tovin::Releasing& releasing) {
  CNodeImplBase* core = node->getRefCount() == 1 ? coreOf(node) : nullptr;
  if (core && (core->NumChildNodes() > 0 || core->HoldsNode())) {
    core->parent_ = above ? above->inode() : nullptr;
    return core;
  }
  releasing.step([&] { node->release(); });
  return nullptr;
}

iNode* CNodeImplBase::takeLastHeld() {
  return NumChildNodes() > 0 ? children_.takeLast() : SurrenderObject();
}

void CNodeImplBase::requireAttachable(iNode* child) const {
  if (!child) throw tovin::Exception(NullNodeMsg);
  // A node without children can be nobody's ancestor; only this one itself is left to be refused.
  if (child->hasChildren() ? IsAncestorNode(child) : child == inode())
    throw tovin::Exception(OwnParentErrMsg);
}

void CNodeImplBase::requireChildren() const {
  if (NumChildNodes() == 0) throw tovin::Exception(L"Node has no child nodes");
}

void CNodeImplBase::AppendChildNode(iNode* child) {
  requireAttachable(child);
  iNode* oldParent = child->findParent();
  const tovin::Held<iNode> held(child);
  children_.makeRoom();
  if (oldParent) oldParent->removeChild(child);
  AddChildNode(child, atEnd);
}

void CNodeImplBase::InsertChildNodeBefore(iNode* newChild, const iNode* refChild) {
  requireAttachable(newChild);
  requireChildren();
  // Taken before the child is detached: an earlier sibling lands just behind the reference child, as it
  // always did.
  const unsigned index = GetChildNodeIndex(refChild);
  if (newChild == refChild) return;
  const tovin::Held<iNode> held(newChild);
  children_.makeRoom();
  if (iNode* oldParent = newChild->findParent()) oldParent->removeChild(newChild);
  AddChildNode(newChild, index);
}

void CNodeImplBase::ReplaceChildNodeBy(iNode* oldChild, iNode* newChild) {
  requireAttachable(newChild);
  requireChildren();
  const unsigned index = GetChildNodeIndex(oldChild);
  if (newChild == oldChild) return;
  iNode* oldParent = newChild->findParent();
  if (oldParent == inode())
    throw tovin::Exception(L"Error detected: trying to replace a node with a sibling node");
  const tovin::Held<iNode> held(newChild);
  if (oldParent) oldParent->removeChild(newChild);
  ReplaceChildNode(newChild, index);
}

void CNodeImplBase::CleanOutNodeData(bool clearParent) {
  guarded({ClassName, "CleanOutNodeData"}, [&] {
    ClearChildren();
    ClearCollection();
    if (RarePart* part = rarePart()) part->parser.reset();
    if (clearParent) parent_ = nullptr;
  });
}

iNode* CNodeImplBase::GetRootNode() const {
  iNode* node = inode();
  while (iNode* parent = node->findParent()) node = parent;
  return node;
}

bool CNodeImplBase::IsAncestorNode(const iNode* node) const {
  for (const iNode* at = inode(); at; at = at->findParent()) {
    if (at == node) return true;
  }
  return false;
}

void CNodeImplBase::GetNodeIndexPath(tovin::IntegerArrayValue& out, const iNode* ancestor) const {
  guarded({ClassName, "GetNodeIndexPath"}, [&] {
    std::vector<int> steps;
    const iNode* node = inode();
    while (const iNode* parent = node == ancestor ? nullptr : node->findParent()) {
      steps.push_back(static_cast<int>(parent->getChildIndex(node)));
      node = parent;
    }
    if (ancestor && node != ancestor) throw tovin::Exception(L"Relative ancestor node not found.");
    out.content().assign(steps.rbegin(), steps.rend());
  });
}

void CNodeImplBase::GetNodeIndexPathExpression(tovin::WideString& out, const iNode* ancestor) const {
  guarded({ClassName, "GetNodeIndexPathDescription"}, [&] {
    tovin::IntegerArrayValue path;
    GetNodeIndexPath(path, ancestor);
    tovin::WideString expression(L"");
    expression.reserve(path.getSize() * 7);
    for (int position : path.getArray()) expression += tovin::format(L"/*[%d]", position + 1);
    out = std::move(expression);
  });
}

tovin::iXPathParser* CNodeImplBase::GetXPathParser() const {
  tovin::Ptr<tovin::iXPathParser>& parser = ensureRarePart().parser;
  if (!parser) {
    tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator> made(
        tovin::newInstance("DraVolin.CXPathParser"));
    auto* found = tovin::seek<tovin::iXPathParser>(made.get());
    if (!found) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    made.detach();
    parser = tovin::Ptr<tovin::iXPathParser>(found);
    parser->setNode(inode());
  }
  return parser.get();
}

template <class Result>
bool CNodeImplBase::runQuery(const iNode* context, const wchar_t* expression, unsigned flags,
                             Result& result) const {
  return guarded({ClassName, "RunXPathQuery"},
                 [&] { return GetXPathParser()->evaluate(expression, context, flags, result); });
}

bool CNodeImplBase::RunXPathQuery(const iNode* context, const wchar_t* expression, unsigned flags,
                                  bool& result) const {
  return runQuery(context, expression, flags, result);
}

bool CNodeImplBase::RunXPathQuery(const iNode* context, const wchar_t* expression, unsigned flags,
                                  int& result) const {
  return runQuery(context, expression, flags, result);
}

bool CNodeImplBase::RunXPathQuery(const iNode* context, const wchar_t* expression, unsigned flags,
                                  tovin::PropertyReferenceSet& result) const {
  return runQuery(context, expression, flags, result);
}

bool CNodeImplBase::RunXPathQuery(const iNode* context, const wchar_t* expression, unsigned flags,
                                  tovin::NodeReferenceSet& result) const {
  return runQuery(context, expression, flags, result);
}

bool CNodeImplBase::RunXPathQuery(const iNode* context, const wchar_t* expression, unsigned flags,
                                  tovin::WideString& result) const {
  return runQuery(context, expression, flags, result);
}

void CNodeImplBase::AssignFrom(const CNodeImplBase& source, bool deep) { AssignFrom(source.inode(), deep); }

void CNodeImplBase::AssignFrom(const iNode* source, bool deep) {
  guarded({ClassName, "AssignFrom"}, [&] {
    if (!source) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    if (source == inode()) return;
    // The source may be one of the children that go.
    const tovin::Held<iNode> held(const_cast<iNode*>(source));
    AttributePacker packer;
    if (!deep) return assignOwn(source, packer);
    // Its copy below an ancestor is one of the node as it is then.
    const bool below = IsAncestorNode(source);
    if (below) assignOwn(source, packer);
    // All copies are made before one is attached: this node may lie in the tree that is copied.
    std::vector<tovin::Ptr<iNode>> copies;
    cloneChildren(source, copies, packer);
    ChildList children;
    if (!copies.empty()) children.makeRoom(static_cast<uint32_t>(copies.size()));
    if (!below) assignOwn(source, packer);
    tovin::Releasing releasing;
    releasing.step([&] { ClearChildren(); });
    children_.adopt(std::move(children));
    for (const tovin::Ptr<iNode>& copy : copies) AddChildNode(copy.get(), atEnd);
    releasing.finish();
  });
}

void CNodeImplBase::assignOwn(const iNode* source, AttributePacker& packer) {
  const ztUniqueString name(source->getName());
  const CNodeImplBase* core = collection() ? nullptr : coreOf(const_cast<iNode*>(source));
  if (AttributeBlock* copy = core && core->IsPlain() ? core->packedCopy(packer) : nullptr) {
    AttributeBlock::destroy(packed());
    setPacked(copy);
  } else {
    // The value is among the properties. The collection is there afterwards even when the source has none.
    iPropertyCollection* mine = EnsurePropCollectionExists();
    if (source->hasProperties())
      mine->assignFrom(source->getProperties(), true);
    else
      mine->removeAll();
  }
  SetUniqueNodeName(name);
}

// Null where not all properties can be packed.
AttributeBlock* CNodeImplBase::packedCopy(AttributePacker& packer) const {
  if (const AttributeBlock* attributes = packed()) return attributes->copy();
  packer.clear();
  if (collection() && !collection()->GetStorage().PackInto(packer)) return nullptr;
  return packer.pack();
}

iNode* CNodeImplBase::cloneOf(const iNode* child) {
  const NestedCall deeper;
  return child->cloneNode(true);
}

void CNodeImplBase::cloneChildren(const iNode* source, std::vector<tovin::Ptr<iNode>>& copies,
                                  AttributePacker& packer) const {
  struct Step {
    const iNode* from;
    CNodeImplBase* to;  // null: the list of copies
  };
  std::vector<Step> steps{{source, nullptr}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    const unsigned count = step.from->getNumberOfChildren();
    for (unsigned i = 0; i < count; ++i) {
      iNode* child = const_cast<iNode*>(step.from->getChildAt(i));
      const CNodeImplBase* core = coreOf(child);
      const bool stepwise = core && core->isWalked() && core->ClonesByAssignment();
      const tovin::Ptr<iNode> copy(stepwise ? tovin::seek<iNode>(child->newInstance()) : cloneOf(child));
      if (step.to)
        step.to->AddChildNode(copy.get(), atEnd);
      else
        copies.push_back(copy);
      if (!stepwise) continue;
      CNodeImplBase* copyCore = coreOf(copy.get());
      copyCore->assignOwn(child, packer);
      const unsigned below = child->getNumberOfChildren();
      if (below == 0) continue;
      copyCore->children_.makeRoom(below);
      steps.push_back({child, copyCore});
    }
  }
}
