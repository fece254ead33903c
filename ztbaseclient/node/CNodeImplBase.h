#pragma once

#include <typeinfo>
#include <vector>

#include "tovin/AttributeView.h"
#include "tovin/Ptr.h"
#include "tovin/iXPathParser.h"
#include "tovin/values/NullValue.h"
#include "tovinCore/Guard.h"
#include "ztbaseclient/Export.h"
#include "ztbaseclient/data/AttributeBlock.h"
#include "ztbaseclient/data/CPropertyCollection.h"
#include "ztbaseclient/node/ChildList.h"
#include "ztbaseclient/node/cppNodeQName.h"

/// The core of every node class: it owns the node's state and does all the work that NodeImpl forwards to it.
///
/// - Value: the property "text-content" of the node's collection, marked by flag 0x8.
/// - Ownership: one reference to each child and to the collection; the parent is a back pointer.
/// - Depth: building, writing, reading, copying and releasing take no stack by the depth of the tree.
/// - Record: docs/formats.md, "Node core".
class ZTBASECLIENT_API CNodeImplBase {
 public:
  static const wchar_t* const DefaultValueName;
  static const wchar_t* const NullNodeMsg;
  static const wchar_t* const OwnParentErrMsg;
  /// The value of a node that has none.
  static const tovin::NullValue nullNodeValue;
  static const tovin::ClassTagDecl Tag;
  static constexpr const char* ClassName = "CNodeImplBase";
  static tovin::LeakDetector m_leakDetector;

  virtual ~CNodeImplBase();
  virtual tovin::iNode* GetINode() = 0;
  virtual bool CanHaveParentNode() const { return true; }
  virtual void OnActivateDefault();
  virtual void OnDeactivateDefault();

 protected:
  CNodeImplBase();
  /// Copies nothing: NodeImpl follows it with a deep AssignFrom, once there is a node.
  CNodeImplBase(const CNodeImplBase& other);
  /// Shallow, on purpose: both nodes then share parser, child array and collection, and no child gets a
  /// reference. A node class holds the other one meanwhile, until its last base is assigned.
  CNodeImplBase& operator=(const CNodeImplBase& other);

  // The class that vouches for its objects: their record is what WriteClassRecord writes and ReadClassRecord
  // reads, and then the core record, so that a tree of them is written and read without recursion. An object
  // of a class derived from it is asked by its own serialize and deserialize, unless that class vouches too.
  virtual const std::type_info& WalkedClass() const { return typeid(void); }
  virtual void WriteClassRecord(tovin::iByteOutputStream&) const {}
  virtual void ReadClassRecord(tovin::iByteInputStream&) {}
  // True where WalkedClass also vouches that cloneNode is a new instance and AssignFrom.
  virtual bool ClonesByAssignment() const { return false; }
  // Whether SurrenderObject would give something.
  virtual bool HoldsNode() const { return false; }
  // A node that only this one holds, besides its children, to be released after them; null if none.
  virtual tovin::iNode* SurrenderObject() { return nullptr; }
  // Whether the object is asked nowhere else for its properties and its value than here, so that they may be
  // read where they lie.
  virtual bool IsPlain() const { return false; }
  // Gives up a reference to a node that has no parent, and what dies with it. Needs no memory, and no stack
  // by the depth; what one node throws comes out when all are released.
  static void ReleaseNode(tovin::iNode* node);

  const wchar_t* GetNodeName() const { return name_ || !rarePart() ? name_ : joinName(); }
  void SetNodeName(const wchar_t* name);
  /// SetNodeName for a text that ztUniqueStrings handed out: no look-up.
  void SetUniqueNodeName(const wchar_t* name) noexcept;
  const wchar_t* GetNodeNamePrefix() const;
  const wchar_t* GetNodeLocalName() const;
  const tovin::Value& GetNodeValue() const;
  void SetValue(const tovin::Value& value);

  unsigned NumProperties() const {
    if (const AttributeBlock* attributes = packed()) return attributes->getCount();
    return collection() ? collection()->getSize() : 0;
  }
  tovin::AttributeView ViewProperty(unsigned index) const;
  tovin::AttributeView ViewNodeValue() const;
  /// Null if there is none; one is made of what is packed.
  tovin::iPropertyCollection* FindPropCollection() const {
    return properties() ? EnsurePropCollectionExists() : nullptr;
  }
  tovin::iPropertyCollection* EnsurePropCollectionExists() const {
    CPropertyCollection* present = collection();
    return present ? present : makeCollection();
  }
  void DeletePropCollection() {
    if (properties()) dropProperties();
  }
  void ClearCollection() {
    if (properties()) removeProperties();
  }

  unsigned NumChildNodes() const { return children_.getSize(); }
  std::span<tovin::iNode* const> GetChildNodes() const { return children_.view(); }
  tovin::iNode* GetChildNode(unsigned index) const;
  unsigned GetChildNodeIndex(const tovin::iNode* child) const;
  void FindChildNodesByName(const wchar_t* name, tovin::NodeReferenceSet& out) const;
  /// Appends for an index at or beyond the end.
  void AddChildNode(tovin::iNode* child, unsigned index);
  void ReplaceChildNode(tovin::iNode* child, unsigned index);
  void RemoveChildNode(unsigned index);
  void ClearChildren() {
    if (NumChildNodes() > 0) dropChildren();
  }
  void AppendChildNode(tovin::iNode* child);
  void InsertChildNodeBefore(tovin::iNode* newChild, const tovin::iNode* refChild);
  void ReplaceChildNodeBy(tovin::iNode* oldChild, tovin::iNode* newChild);
  bool RemoveChildNode(const tovin::iNode* child);

  void CleanOutNodeData(bool clearParent);
  tovin::iNode* GetParentNode() const { return const_cast<tovin::iNode*>(parent_); }
  void SetParentNode(const tovin::iNode* parent) { parent_ = parent; }
  tovin::iNode* GetRootNode() const;
  bool IsAncestorNode(const tovin::iNode* node) const;
  void GetNodeIndexPath(tovin::IntegerArrayValue& out, const tovin::iNode* ancestor) const;
  void GetNodeIndexPathExpression(tovin::WideString& out, const tovin::iNode* ancestor) const;

  bool RunXPathQuery(const tovin::iNode* context, const wchar_t* expression, unsigned flags,
                     bool& result) const;
  bool RunXPathQuery(const tovin::iNode* context, const wchar_t* expression, unsigned flags,
                     int& result) const;
  bool RunXPathQuery(const tovin::iNode* context, const wchar_t* expression, unsigned flags,
                     tovin::PropertyReferenceSet& result) const;
  bool RunXPathQuery(const tovin::iNode* context, const wchar_t* expression, unsigned flags,
                     tovin::NodeReferenceSet& result) const;
  bool RunXPathQuery(const tovin::iNode* context, const wchar_t* expression, unsigned flags,
                     tovin::WideString& result) const;
  /// Borrowed; made on first use and kept until the node is cleaned out.
  tovin::iXPathParser* GetXPathParser() const;

  void SerializeNode(tovin::iByteOutputStream& stream, bool withChildren) const;
  /// A failure leaves the nodes that were read before it.
  void DeserializeNode(tovin::iByteInputStream& stream, bool withChildren);

  /// Name, value and properties; deep also the children, each by its own cloneNode. As it was after a
  /// failure; where the source is an ancestor only the children are.
  void AssignFrom(const tovin::iNode* source, bool deep);
  void AssignFrom(const CNodeImplBase& source, bool deep);

 private:
  // What few nodes have.
  struct RarePart {
    // What the state is where there is no rare part.
    uintptr_t properties = 0;
    // False where another node's collection is shared, which keeps that one as its owner.
    bool ownsCollection = true;
    tovin::Ptr<tovin::iXPathParser> parser;
    // Local name and prefix; its qualified name is the node's.
    cppNodeQName name;
  };

  // Null for a node of another making.
  static CNodeImplBase* coreOf(tovin::iNode* node);
  tovin::iNode* inode() const { return const_cast<CNodeImplBase*>(this)->GetINode(); }
  void writeCore(tovin::iByteOutputStream& stream) const;
  struct RecordReader;
  void readCore(RecordReader& reader);
  void readProperties(RecordReader& reader);
  void takeProperties(RecordReader& reader);
  int32_t readChildCount(tovin::iByteInputStream& stream);
  tovin::iNode* readChildInstance(RecordReader& reader);
  void assignOwn(const tovin::iNode* source, AttributePacker& packer);
  AttributeBlock* packedCopy(AttributePacker& packer) const;
  static tovin::iNode* cloneOf(const tovin::iNode* child);
  void cloneChildren(const tovin::iNode* source, std::vector<tovin::Ptr<tovin::iNode>>& copies,
                     AttributePacker& packer) const;
  bool isWalked() const { return typeid(*this) == WalkedClass(); }
  void makeRoomForChild();
  static CNodeImplBase* releaseOrEnter(tovin::iNode* node, CNodeImplBase* above, tovin::Releasing& releasing);
  static void releaseWhole(tovin::iNode* node, tovin::Releasing& releasing);
  tovin::iNode* takeLastHeld();
  void requireAttachable(tovin::iNode* child) const;
  void requireChildren() const;
  friend class NodeBuilder;
  template <class Result>
  bool runQuery(const tovin::iNode* context, const wchar_t* expression, unsigned flags, Result& result) const;

  // The lowest bits of the state: it points to the rare part, which then has what the state is otherwise; to
  // the block of what is packed; or, without either, to the collection, one reference of which is the node's.
  static constexpr uintptr_t rareBit = 1;
  static constexpr uintptr_t packedBit = 2;
  RarePart* rarePart() const noexcept {
    return state_ & rareBit ? reinterpret_cast<RarePart*>(state_ & ~rareBit) : nullptr;
  }
  RarePart& ensureRarePart() const;
  void dropRarePart() noexcept;
  uintptr_t& properties() const noexcept {
    RarePart* part = rarePart();
    return part ? part->properties : state_;
  }
  AttributeBlock* packed() const noexcept {
    return properties() & packedBit ? reinterpret_cast<AttributeBlock*>(properties() & ~packedBit) : nullptr;
  }
  CPropertyCollection* collection() const noexcept {
    return properties() & packedBit ? nullptr : reinterpret_cast<CPropertyCollection*>(properties());
  }
  void setPacked(AttributeBlock* attributes) const noexcept;
  void setCollection(CPropertyCollection* counted) const noexcept;
  int valueIndex() const;
  CPropertyCollection* makeCollection() const;
  void dropProperties();
  void removeProperties();
  void dropChildren();
  bool ownsCollection() const noexcept { return !rarePart() || rarePart()->ownsCollection; }
  const wchar_t* joinName() const;
  void assignName(const CNodeImplBase& other);

  mutable const wchar_t* name_ = nullptr;
  const tovin::iNode* parent_ = nullptr;
  ChildList children_;
  mutable uintptr_t state_ = 0;
};
