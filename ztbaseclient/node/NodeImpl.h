#pragma once

#include <type_traits>
#include <utility>

#include "tovinCore/Guard.h"
#include "ztbaseclient/node/CNodeImplBase.h"

/// The class name in the guards of NodeImpl.
inline constexpr const char* ClassName_NodeImpl = "NodeImpl";

/// Implements every operation of the node interface for node class T by forwarding to the core inside the
/// guard.
///
///     class CBaseNode : public tovin::FrameworkClass<CBaseNode, NodeImpl<CBaseNode, tovin::iNode>,
///     tovin::PooledObject>
template <class T, class Interface>
class NodeImpl : public CNodeImplBase, public Interface {
 public:
  using iNode = tovin::iNode;

  iNode* GetINode() override { return this; }

  void* _SeekClassIdentity(const tovin::ClassTag& tag) override {
    if (tag == CNodeImplBase::Tag) return static_cast<CNodeImplBase*>(this);
    return Interface::_SeekClassIdentity(tag);
  }

  bool hasProperties() const override { return NumProperties() > 0; }
  tovin::iPropertyCollection* getProperties() override {
    return in("getProperties", [&] { return EnsurePropCollectionExists(); });
  }
  tovin::iPropertyCollection* getProperties() const override {
    return in("getProperties", [&] { return EnsurePropCollectionExists(); });
  }

  const wchar_t* getName() const override {
    return in("getName", [&] { return GetNodeName(); });
  }
  const wchar_t* getNamePrefix() const override {
    return in("getNamePrefix", [&] { return GetNodeNamePrefix(); });
  }
  const wchar_t* getLocalName() const {
    return in("getLocalName", [&] { return GetNodeLocalName(); });
  }
  void setName(const wchar_t* name) override {
    in("setName", [&] { SetNodeName(name); });
  }
  const tovin::Value& getValue() const override {
    return in("getValue", [&]() -> const tovin::Value& { return GetNodeValue(); });
  }
  void setValue(const tovin::Value& value) override {
    in("setValue", [&] { SetValue(value); });
  }
  bool hasNullValue() const override {
    return in("hasNullValue", [&] { return GetNodeValue().isNullValue(); });
  }

  const iNode* findParent() const override { return GetParentNode(); }
  iNode* findParent() override { return GetParentNode(); }
  const iNode* getRoot() const override {
    return in("getRoot", [&] { return GetRootNode(); });
  }
  iNode* getRoot() override {
    return in("getRoot", [&] { return GetRootNode(); });
  }
  void clear() override {
    in("clear", [&] { CleanOutNodeData(false); });
  }

  bool hasChildren() const override { return NumChildNodes() > 0; }
  unsigned getNumberOfChildren() const override { return NumChildNodes(); }
  unsigned getChildIndex(const iNode* child) const override {
    return in("getChildIndex", [&] { return GetChildNodeIndex(child); });
  }
  iNode* getChildAt(unsigned index) override {
    return in("getChildAt", [&] { return GetChildNode(index); });
  }
  const iNode* getChildAt(unsigned index) const override {
    return in("getChildAt", [&] { return GetChildNode(index); });
  }
  void findChildrenByName(const wchar_t* name, tovin::NodeReferenceSet& out) const override {
    in("findChildrenByName", [&] { FindChildNodesByName(name, out); });
  }
  void insertChildBefore(iNode* newChild, const iNode* refChild) override {
    in("insertChildBefore", [&] { InsertChildNodeBefore(newChild, refChild); });
  }
  void appendChild(iNode* child) override {
    in("appendChild", [&] { AppendChildNode(child); });
  }
  bool removeChild(iNode* child) override {
    return in("removeChild", [&] { return RemoveChildNode(child); });
  }
  void removeChildAt(unsigned index) override {
    in("removeChildAt", [&] { RemoveChildNode(index); });
  }
  void removeAllChildren() override {
    in("removeAllChildren", [&] { ClearChildren(); });
  }
  void replaceChild(iNode* oldChild, iNode* newChild) override {
    in("replaceChild", [&] { ReplaceChildNodeBy(oldChild, newChild); });
  }

  /// A node of the same class from its pool, assigned from this one; its count is 0.
  T* Clone(bool deep) const {
    return in("Clone", [&] {
      tovin::Ptr<T> copy(T::m_class.allocate());
      copy->AssignFrom(static_cast<const iNode*>(this), deep);
      return copy.detachUncounted();
    });
  }
  /// Of a class derived from T too, an object of the same class.
  iNode* cloneNode(bool deep) const override {
    return in("cloneNode", [&]() -> iNode* {
      if (typeid(*this) == typeid(T)) return Clone(deep);
      tovin::Ptr<iNode> copy(tovin::seek<iNode>(this->newInstance()));
      copy->assignFromNode(this, deep);
      return copy.detachUncounted();
    });
  }
  void assignFromNode(const iNode* source, bool deep) override {
    in("assignFromNode", [&] { AssignFrom(source, deep); });
  }

  bool query(const wchar_t* expression, unsigned flags, bool& result) const override {
    return runQuery(expression, flags, result);
  }
  bool query(const wchar_t* expression, unsigned flags, int& result) const override {
    return runQuery(expression, flags, result);
  }
  bool query(const wchar_t* expression, unsigned flags, tovin::PropertyReferenceSet& result) const override {
    return runQuery(expression, flags, result);
  }
  bool query(const wchar_t* expression, unsigned flags, tovin::NodeReferenceSet& result) const override {
    return runQuery(expression, flags, result);
  }
  bool query(const wchar_t* expression, unsigned flags, tovin::WideString& result) const override {
    return runQuery(expression, flags, result);
  }

  /// Accepted and ignored: declarations are properties like any other.
  void addNamespaceDeclaration(const wchar_t*, const wchar_t*) override {}
  void getIndexPath(tovin::IntegerArrayValue& out, iNode* ancestor) const override {
    in("getIndexPath", [&] { GetNodeIndexPath(out, ancestor); });
  }
  void getIndexPathExpression(tovin::WideString& out, iNode* ancestor) const override {
    in("getIndexPathExpression", [&] { GetNodeIndexPathExpression(out, ancestor); });
  }
  void setParent(const iNode* parent) override { SetParentNode(parent); }
  std::span<iNode* const> getChildren() const override { return GetChildNodes(); }

  unsigned attributeCount() const override {
    return IsPlain() ? NumProperties() : Interface::attributeCount();
  }
  tovin::AttributeView viewAttribute(unsigned index) const override {
    return IsPlain() ? ViewProperty(index) : Interface::viewAttribute(index);
  }
  tovin::AttributeView viewValue() const override {
    return IsPlain() ? ViewNodeValue() : Interface::viewValue();
  }

  void serialize(tovin::iByteOutputStream& stream) const override {
    in("serialize", [&] { SerializeNode(stream, true); });
  }
  void deserialize(tovin::iByteInputStream& stream) override {
    in("deserialize", [&] { DeserializeNode(stream, true); });
  }

 protected:
  NodeImpl() = default;
  NodeImpl(const NodeImpl& other)
      : tovin::Object(other), tovin::CountedObject(other), CNodeImplBase(other), Interface(other) {
    in("NodeImpl", [&] { AssignFrom(static_cast<const iNode*>(&other), true); });
  }
  NodeImpl& operator=(const NodeImpl&) = default;

  // A class that derives from T, or a T that has its own way to any of these, is asked.
  bool IsPlain() const override {
    if constexpr (asksHere<T>()) {
      return typeid(*this) == typeid(T);
    } else {
      return false;
    }
  }

 private:
  // The class that a member which T names was declared in.
  template <class Declaring>
  static std::type_identity<Declaring> declaring(tovin::iPropertyCollection* (Declaring::*)() const);
  template <class Declaring>
  static std::type_identity<Declaring> declaring(bool (Declaring::*)() const);
  template <class Declaring>
  static std::type_identity<Declaring> declaring(const tovin::Value& (Declaring::*)() const);
  // Incomplete where NodeImpl is made, T is asked once the class of an object is known.
  using Here = std::type_identity<NodeImpl>;
  template <class Node>
  static constexpr bool asksHere() {
    if constexpr (requires {
                    declaring(&Node::getProperties);
                    declaring(&Node::hasProperties);
                    declaring(&Node::getValue);
                  }) {
      return std::is_same_v<decltype(declaring(&Node::getProperties)), Here> &&
             std::is_same_v<decltype(declaring(&Node::hasProperties)), Here> &&
             std::is_same_v<decltype(declaring(&Node::getValue)), Here>;
    } else {
      return false;
    }
  }

  template <class Body>
  static decltype(auto) in(const char* method, Body&& body) {
    return tovin::guarded({ClassName_NodeImpl, method}, std::forward<Body>(body));
  }
  template <class Result>
  bool runQuery(const wchar_t* expression, unsigned flags, Result& result) const {
    return in("query", [&] { return RunXPathQuery(this, expression, flags, result); });
  }
};
