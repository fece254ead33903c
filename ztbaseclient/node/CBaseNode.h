#pragma once

#include "tovin/FrameworkClass.h"
#include "ztbaseclient/node/NodeImpl.h"

/// The general-purpose node.
///
///     tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
///     root->setName(L"job");
///     root->appendChild(CBaseNode::allocate());
///
/// - Ownership: counted; a node that nobody holds is given back with deleteInstance().
/// - Shape: record as in docs/formats.md.
/// - Irregular on purpose: operator= is shallow (see CNodeImplBase), the copy constructor is deep.
class ZTBASECLIENT_API CBaseNode
    : public tovin::FrameworkClass<CBaseNode, NodeImpl<CBaseNode, tovin::iNode>, tovin::PooledObject> {
 public:
  static constexpr const char* ClassName = "CBaseNode";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::PooledClassImp<CBaseNode> m_class;

  /// What the record begins with.
  static const int BASE_NODE_VERSION;

  CBaseNode() = default;
  CBaseNode(const CBaseNode& other);
  CBaseNode& operator=(const CBaseNode& other);
  ~CBaseNode() override;

  void serialize(tovin::iByteOutputStream& stream) const override;
  void deserialize(tovin::iByteInputStream& stream) override;

  void onActivate() override;
  void onDeactivate() override;

 protected:
  const std::type_info& WalkedClass() const override { return typeid(CBaseNode); }
  void WriteClassRecord(tovin::iByteOutputStream& stream) const override;
  void ReadClassRecord(tovin::iByteInputStream& stream) override;
  bool ClonesByAssignment() const override { return true; }

  template <class, class>
  friend class NodeImpl;
};
