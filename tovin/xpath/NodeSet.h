// Selected nodes, and what an evaluation knows of the tree.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tovin/iNode.h"
#include "tovin/xpath/FunctionRef.h"

namespace tovin::xpath {

/// One node of the query's model: an element, an attribute of one, or the document root above the tree.
struct Item {
  static constexpr uint32_t noAttribute = UINT32_MAX;

  const iNode* element = nullptr;  // null: the document root
  uint32_t attribute = noAttribute;

  bool isRoot() const noexcept { return !element; }
  bool isAttribute() const noexcept { return attribute != noAttribute; }
  bool isElement() const noexcept { return element && !isAttribute(); }
  friend bool operator==(const Item&, const Item&) = default;
};

/// Takes an item; false to be given no more.
using Visit = FunctionRef<bool(const Item&)>;

/// Items in document order without duplicates, wherever a function takes or gives one.
struct NodeSet {
  std::vector<Item> items;
  /// One may lie below another.
  bool nested = false;
};

using Children = std::span<iNode* const>;

/// The tree of one evaluation, with the document root on top.
class Tree {
 public:
  explicit Tree(const iNode& context) : top_(const_cast<iNode*>(topOf(context))) {}

  const iNode& top() const noexcept { return *top_; }
  Children childrenOf(const iNode* element) const {
    return element ? element->getChildren() : Children(&top_, 1);
  }

 private:
  static const iNode* topOf(const iNode& context) {
    const iNode* node = &context;
    while (const iNode* parent = node->findParent()) node = parent;
    return node;
  }
  iNode* top_;
};

/// The property of an attribute, made of what was read if it is not there yet.
inline const iProperty& propertyOf(const Item& attribute) {
  const iNode* element = attribute.element;
  return *static_cast<const iPropertyCollection*>(element->getProperties())->get(attribute.attribute);
}

/// The attribute as it stands.
inline AttributeView viewOf(const Item& attribute) {
  return attribute.element->viewAttribute(attribute.attribute);
}

/// The qualified name; null for the document root.
inline const wchar_t* nameOf(const Item& item) {
  if (item.isRoot()) return nullptr;
  return item.isAttribute() ? viewOf(item).name : item.element->getName();
}

}  // namespace tovin::xpath
