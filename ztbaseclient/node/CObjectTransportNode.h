#pragma once

#include "tovin/FrameworkClass.h"
#include "ztbaseclient/node/NodeImpl.h"

/// A node that carries one framework object, so that the object can ride inside a tree.
///
/// - Ownership: one reference to a counted object; any other object is owned outright and given back when it
///   goes.
/// - Shape: record as in docs/formats.md. Carried objects that hold carriers again go 1,000 deep and no
///   further.
/// - Irregular on purpose: cloneNode copies by way of the record when an object is carried, always deep, and
///   copies nothing at all when none is; operator= and reading leave the object held before as it was.
class ZTBASECLIENT_API CObjectTransportNode
    : public tovin::FrameworkClass<CObjectTransportNode, NodeImpl<CObjectTransportNode, tovin::iNode>,
                                   tovin::PooledObject> {
 public:
  static constexpr const char* ClassName = "CObjectTransportNode";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::PooledClassImp<CObjectTransportNode> m_class;

  /// What the record begins with; the older one is read too.
  static const int OBJECT_TRANSPORT_NODE_VERSION;
  static const int OLD_OBJECT_TRANSPORT_NODE_VERSION;

  CObjectTransportNode() = default;
  CObjectTransportNode(const CObjectTransportNode& other);
  CObjectTransportNode& operator=(const CObjectTransportNode& other);
  ~CObjectTransportNode() override;

  /// Takes over the object, or a reference to it; null for none. The object before is released.
  void SetObject(tovin::Object* object);
  /// Borrowed; null if none.
  tovin::Object* GetObject() const noexcept { return object_; }
  void ReleaseObject();

  tovin::iNode* cloneNode(bool deep) const override;
  void serialize(tovin::iByteOutputStream& stream) const override;
  void deserialize(tovin::iByteInputStream& stream) override;

  void onActivate() override;
  void onDeactivate() override;

 protected:
  const std::type_info& WalkedClass() const override { return typeid(CObjectTransportNode); }
  void WriteClassRecord(tovin::iByteOutputStream& stream) const override;
  void ReadClassRecord(tovin::iByteInputStream& stream) override;
  bool HoldsNode() const override;
  tovin::iNode* SurrenderObject() override;

  template <class, class>
  friend class NodeImpl;

 private:
  void hold(tovin::Object* object);
  using OwnedObject = tovin::MemPtr<tovin::Object, tovin::InstanceDeallocator>;
  OwnedObject copyFor(const CObjectTransportNode& source) const;
  void takeCopy(const CObjectTransportNode& source, OwnedObject copy);
  void readObject(tovin::iByteInputStream& stream);

  tovin::Object* object_ = nullptr;
};
