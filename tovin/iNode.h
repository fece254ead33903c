#pragma once

#include <span>

#include "tovin/AttributeView.h"
#include "tovin/ReferenceSet.h"
#include "tovin/iPropertyCollection.h"
#include "tovin/values/IntegerArrayValue.h"

namespace tovin {

/// Something that may carry properties.
class TOVIN_API iHaveProperties : public virtual CountedObject {
 public:
  /// A collection exists and holds something; looking never makes one.
  virtual bool hasProperties() const = 0;
  /// The collection, made if missing.
  virtual iPropertyCollection* getProperties() = 0;
  virtual iPropertyCollection* getProperties() const = 0;
};

/// One element of a data tree: a qualified name, a value, properties, ordered children, a parent.
///
/// - Ownership: counted; a parent holds one reference to each child, the way up is a back pointer.
/// - Threads: a tree is used by one thread at a time, even for reading.
class TOVIN_API iNode : public iHaveProperties {
 public:
  static const ClassTagDecl Tag;

  void* _SeekClassIdentity(const ClassTag& tag) override;

  /// Borrowed: stays where it is as long as the node keeps the name.
  virtual const wchar_t* getName() const = 0;
  virtual const wchar_t* getNamePrefix() const = 0;
  virtual void setName(const wchar_t* name) = 0;
  virtual const Value& getValue() const = 0;
  virtual void setValue(const Value& value) = 0;
  virtual bool hasNullValue() const = 0;

  virtual const iNode* findParent() const = 0;
  virtual iNode* findParent() = 0;
  virtual const iNode* getRoot() const = 0;
  virtual iNode* getRoot() = 0;
  virtual void clear() = 0;

  virtual bool hasChildren() const = 0;
  virtual unsigned getNumberOfChildren() const = 0;
  virtual unsigned getChildIndex(const iNode* child) const = 0;
  virtual iNode* getChildAt(unsigned index) = 0;
  virtual const iNode* getChildAt(unsigned index) const = 0;
  virtual void findChildrenByName(const wchar_t* name, NodeReferenceSet& out) const = 0;
  virtual void insertChildBefore(iNode* newChild, const iNode* refChild) = 0;
  virtual void appendChild(iNode* child) = 0;
  virtual bool removeChild(iNode* child) = 0;
  virtual void removeChildAt(unsigned index) = 0;
  virtual void removeAllChildren() = 0;
  virtual void replaceChild(iNode* oldChild, iNode* newChild) = 0;

  virtual iNode* cloneNode(bool deep) const = 0;
  virtual void assignFromNode(const iNode* source, bool deep) = 0;

  /// Path queries with this node as context; true when anything was selected. The flags are those of
  /// iXPathParser.
  virtual bool query(const wchar_t* expression, unsigned flags, bool& result) const = 0;
  virtual bool query(const wchar_t* expression, unsigned flags, int& result) const = 0;
  virtual bool query(const wchar_t* expression, unsigned flags, PropertyReferenceSet& result) const = 0;
  virtual bool query(const wchar_t* expression, unsigned flags, NodeReferenceSet& result) const = 0;
  virtual bool query(const wchar_t* expression, unsigned flags, WideString& result) const = 0;

  virtual void addNamespaceDeclaration(const wchar_t* prefix, const wchar_t* uri) = 0;
  virtual void getIndexPath(IntegerArrayValue& out, iNode* ancestor) const = 0;
  virtual void getIndexPathExpression(WideString& out, iNode* ancestor) const = 0;
  virtual void setParent(const iNode* parent) = 0;

  /// All children at once, for walks over whole trees: borrowed until a child comes or goes.
  virtual std::span<iNode* const> getChildren() const = 0;

  /// The properties one by one, and the value, as they stand: to look at one makes no object of it.
  virtual unsigned attributeCount() const;
  /// \param index below attributeCount(), unchecked.
  virtual AttributeView viewAttribute(unsigned index) const;
  virtual AttributeView viewValue() const;
};

}  // namespace tovin
