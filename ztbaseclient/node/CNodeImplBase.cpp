#include "ztbaseclient/node/CNodeImplBase.h"

#include "tovinCore/Guard.h"
#include "tovinCore/Numbers.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/data/CPropertyCollection.h"

using tovin::guarded;
using tovin::iNode;
using tovin::MetaDataFlags;

const wchar_t* const CNodeImplBase::DefaultValueName = L"text-content";
const wchar_t* const CNodeImplBase::NullNodeMsg = L"Error: attempting to add a null node.";
const wchar_t* const CNodeImplBase::OwnParentErrMsg =
    L"Error: attempting to set a data node to be its own parent.";
const tovin::NullValue CNodeImplBase::nullNodeValue;
const tovin::ClassTagDecl CNodeImplBase::Tag("DraVolin.node.CNodeImplBase");
tovin::LeakDetector CNodeImplBase::m_leakDetector(CNodeImplBase::ClassName);

namespace {

constexpr unsigned atEnd = 0xFFFFFFFF;

}  // namespace

CNodeImplBase* CNodeImplBase::coreOf(iNode* node) {
  return tovin::seek<CNodeImplBase>(static_cast<tovin::Object*>(node));
}

CNodeImplBase::CNodeImplBase() { m_leakDetector.Add(this, ClassName); }

CNodeImplBase::CNodeImplBase(const CNodeImplBase&) : CNodeImplBase() {}

CNodeImplBase& CNodeImplBase::operator=(const CNodeImplBase& other) {
  if (this == &other) return *this;
  // First: the other may be below the children that go, and they leave it without a parent.
  if (children_ != other.children_ && children_.use_count() == 1) ClearChildren();
  parser_ = other.parser_;
  classTag_ = other.classTag_;
  name_ = other.name_;
  parent_ = other.parent_;
  children_ = other.children_;
  if (properties_ != other.properties_) {
    DeletePropCollection();
    properties_ = other.properties_;
    ownsCollection_ = false;
  }
  return *this;
}

CNodeImplBase::~CNodeImplBase() {
  tovin::guardedDestruction(
      ClassName,
      [&] {
        CleanOutNodeData(true);
        DeletePropCollection();
      },
      "~CNodeImplBase");
  m_leakDetector.Sub(this);
}

void CNodeImplBase::OnActivateDefault() {
  guarded({ClassName, "OnActivateDefault"}, [&] {
    CleanOutNodeData(true);
    name_.onActivate();
  });
}

void CNodeImplBase::OnDeactivateDefault() {
  guarded({ClassName, "OnDeactivateDefault"}, [&] {
    ClearChildren();
    DeletePropCollection();
    parser_.reset();
    // The next hand-out forgets the names without giving them up, so they are given up here.
    name_.onDeactivate();
  });
}

bool CNodeImplBase::WriteClassRecord(tovin::iByteOutputStream&) const { return false; }

bool CNodeImplBase::ReadClassRecord(tovin::iByteInputStream&) { return false; }

const tovin::Value& CNodeImplBase::GetNodeValue() const {
  const tovin::iProperty* property = properties_ ? properties_->find(DefaultValueName) : nullptr;
  return property ? property->getValue() : nullNodeValue;
}

void CNodeImplBase::SetValue(const tovin::Value& value) {
  guarded({ClassName, "SetValue"}, [&] {
    tovin::iProperty* property = properties_ ? properties_->find(DefaultValueName) : nullptr;
    if (property && property->getInfo()->getMetaDataFlags().has(MetaDataFlags::nodeValue) &&
        property->getValue().getClassTag() == value.getClassTag()) {
      const_cast<tovin::Value&>(property->getValue()).copyFrom(value);
      return;
    }
    // The value may lie in the property that goes.
    const tovin::MemPtr<tovin::Value, tovin::InstanceDeallocator> copy(value.cloneValue());
    tovin::iPropertyCollection* collection = EnsurePropCollectionExists();
    while (collection->remove(DefaultValueName)) continue;  // a record may hold several
    tovin::iPropertyInfo* info = collection->define(DefaultValueName, *copy, 0)->getInfo();
    MetaDataFlags flags = info->getMetaDataFlags();
    flags.set(MetaDataFlags::nodeValue);
    info->setMetaDataFlags(flags);
  });
}

tovin::iPropertyCollection* CNodeImplBase::EnsurePropCollectionExists() const {
  if (!properties_) {
    properties_ = tovin::Ptr<tovin::iPropertyCollection>(CPropertyCollection::allocate());
    properties_->_setOwner(inode());
    ownsCollection_ = true;
  }
  return properties_.get();
}

void CNodeImplBase::DeletePropCollection() {
  if (!properties_) return;
  // Another node may share the collection; it must not look for this one any more.
  if (ownsCollection_ && properties_->getRefCount() > 1) properties_->_setOwner(nullptr);
  properties_.reset();
}

void CNodeImplBase::ClearCollection() {
  if (properties_) properties_->removeAll();
}

iNode* CNodeImplBase::GetChildNode(unsigned index) const {
  if (index >= NumChildNodes()) {
    throw tovin::InvalidIndexException(index, static_cast<long long>(NumChildNodes()) - 1);
  }
  return children_->data()[index];
}

unsigned CNodeImplBase::GetChildNodeIndex(const iNode* child) const {
  for (unsigned i = 0; i < NumChildNodes(); ++i) {
    if (child && children_->data()[i] == child) return i;
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
    if (!children_) children_ = std::make_shared<ChildArray>();
    if (index < children_->getSize())
      children_->insert(index, child);
    else
      children_->add(child);
    child->setParent(inode());
    child->addRef();
  });
}

void CNodeImplBase::ReplaceChildNode(iNode* child, unsigned index) {
  guarded({ClassName, "ReplaceChildNode"}, [&] {
    iNode* old = GetChildNode(index);
    children_->data()[index] = child;
    child->setParent(inode());
    child->addRef();
    old->setParent(nullptr);
    old->release();
  });
}

void CNodeImplBase::RemoveChildNode(unsigned index) {
  guarded({ClassName, "RemoveChildNode"}, [&] {
    iNode* child = GetChildNode(index);
    children_->removeAt(index);
    child->setParent(nullptr);
    child->release();
  });
}

bool CNodeImplBase::RemoveChildNode(const iNode* child) {
  for (unsigned i = 0; i < NumChildNodes(); ++i) {
    if (children_->data()[i] != child) continue;
    RemoveChildNode(i);
    return true;
  }
  return false;
}

// Moves the children, without parent but with their references, to the end of a list.
void CNodeImplBase::surrender(std::vector<iNode*>& released) {
  for (unsigned i = 0; i < NumChildNodes(); ++i) {
    children_->data()[i]->setParent(nullptr);
    released.push_back(children_->data()[i]);
  }
  if (children_) children_->clear();
  if (iNode* object = SurrenderObject()) released.push_back(object);
}

void CNodeImplBase::ClearChildren() {
  if (NumChildNodes() == 0) return;
  guarded({ClassName, "ClearChildren"}, [&] {
    std::vector<iNode*> released;
    for (iNode* child : *children_) child->setParent(nullptr);
    released.swap(children_->items());
    ReleaseNodes(released);
  });
}

// The last one first. A node about to die hands what it holds over, so depth costs no stack.
void CNodeImplBase::ReleaseNodes(std::vector<iNode*>& released) {
  while (!released.empty()) {
    iNode* node = released.back();
    released.pop_back();
    if (node->getRefCount() == 1) {
      if (CNodeImplBase* core = coreOf(node)) core->surrender(released);
    }
    node->release();
  }
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
    parser_.reset();
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
    out.clear();
    out.reserve(path.getSize() * 7);
    for (int position : path.getArray()) out += tovin::format(L"/*[%d]", position + 1);
  });
}

tovin::iXPathParser* CNodeImplBase::GetXPathParser() const {
  if (!parser_) {
    tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator> made(
        tovin::newInstance("DraVolin.CXPathParser"));
    auto* parser = tovin::seek<tovin::iXPathParser>(made.get());
    if (!parser) throw tovin::Exception(L"Cannot dereference a NULL pointer");
    made.detach();
    parser_ = tovin::Ptr<tovin::iXPathParser>(parser);
    parser_->setNode(inode());
  }
  return parser_.get();
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
    assignOwn(source);
    if (!deep) return;
    // All copies are made before one is attached: this node may lie in the tree that is copied.
    std::vector<tovin::Ptr<iNode>> copies;
    cloneChildren(source, copies);
    ClearChildren();
    for (const tovin::Ptr<iNode>& copy : copies) AddChildNode(copy.get(), atEnd);
  });
}

void CNodeImplBase::assignOwn(const iNode* source) {
  SetNodeName(source->getName());
  // The value is among the properties. The collection is there afterwards even when the source has none.
  tovin::iPropertyCollection* collection = EnsurePropCollectionExists();
  if (source->hasProperties())
    collection->assignFrom(source->getProperties(), true);
  else
    collection->removeAll();
}

void CNodeImplBase::cloneChildren(const iNode* source, std::vector<tovin::Ptr<iNode>>& copies) const {
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
      const bool stepwise = core && core->ClonesByAssignment();
      const tovin::Ptr<iNode> copy(stepwise ? tovin::seek<iNode>(child->newInstance())
                                            : child->cloneNode(true));
      if (step.to)
        step.to->AddChildNode(copy.get(), atEnd);
      else
        copies.push_back(copy);
      if (!stepwise) continue;
      CNodeImplBase* copyCore = coreOf(copy.get());
      copyCore->assignOwn(child);
      if (child->hasChildren()) steps.push_back({child, copyCore});
    }
  }
}
