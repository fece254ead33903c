#include "tovin/xpath/Axes.h"

namespace tovin::xpath {

// In the order of the enumeration.
const std::array<Axes::Body, 12> Axes::bodies = {
    &Axes::visitAncestors, &Axes::visitAncestorsOrSelf,   &Axes::visitNothing,
    &Axes::visitChildren,  &Axes::visitDescendants,       &Axes::visitDescendantsOrSelf,
    &Axes::visitFollowing, &Axes::visitFollowingSiblings, &Axes::visitParent,
    &Axes::visitPreceding, &Axes::visitPrecedingSiblings, &Axes::visitSelf,
};

void Allowance::refuse() { throw Exception(L"The query visits too many nodes"); }

bool parentOf(const Item& item, Item& parent) {
  if (item.isRoot()) return false;
  parent = {item.isAttribute() ? item.element : item.element->findParent()};
  return true;
}

bool Axes::visit(Axis axis, const Item& from, Visit visit) {
  const auto spending = [&](const Item& item) {
    allowance_.spend();
    return visit(item);
  };
  return (this->*bodies[static_cast<size_t>(axis)])(from, spending);
}

bool Axes::visitAncestors(const Item& from, Visit visit) {
  Item at;
  for (bool above = parentOf(from, at); above; above = parentOf(at, at)) {
    if (!visit(at)) return false;
  }
  return true;
}

bool Axes::visitAncestorsOrSelf(const Item& from, Visit visit) {
  return visit(from) && visitAncestors(from, visit);
}

bool Axes::visitParent(const Item& from, Visit visit) {
  Item parent;
  return !parentOf(from, parent) || visit(parent);
}

bool Axes::visitChildren(const Item& from, Visit visit) {
  if (from.isAttribute()) return true;
  for (const iNode* child : tree_.childrenOf(from.element)) {
    if (!visit({child})) return false;
  }
  return true;
}

bool Axes::visitDescendants(const Item& from, Visit visit) {
  if (from.isAttribute()) return true;
  for (const iNode* child : tree_.childrenOf(from.element)) {
    if (!visitSubtree(*child, visit)) return false;
  }
  return true;
}

bool Axes::visitDescendantsOrSelf(const Item& from, Visit visit) {
  return visit(from) && visitDescendants(from, visit);
}

// What begins behind the end of the item. An attribute ends before its element's children begin.
bool Axes::visitFollowing(const Item& from, Visit visit) {
  if (from.isRoot()) return true;
  if (from.isAttribute() && !visitDescendants({from.element}, visit)) return false;
  for (const iNode* at = from.element; at; at = at->findParent()) {
    allowance_.spend();
    const Children siblings = siblingsOf(*at);
    for (size_t i = indexOf(*at, siblings) + 1; i < siblings.size(); ++i) {
      if (!visitSubtree(*siblings[i], visit)) return false;
    }
  }
  return true;
}

bool Axes::visitFollowingSiblings(const Item& from, Visit visit) {
  if (!from.isElement()) return true;
  const Children siblings = siblingsOf(*from.element);
  for (size_t i = indexOf(*from.element, siblings) + 1; i < siblings.size(); ++i) {
    if (!visit({siblings[i]})) return false;
  }
  return true;
}

// What ends before the item begins: nearest first, no ancestors.
bool Axes::visitPreceding(const Item& from, Visit visit) {
  for (const iNode* at = from.element; at; at = at->findParent()) {
    allowance_.spend();
    const Children siblings = siblingsOf(*at);
    for (size_t i = std::min(indexOf(*at, siblings), siblings.size()); i-- > 0;) {
      if (!visitSubtreeBackwards(*siblings[i], visit)) return false;
    }
  }
  return true;
}

bool Axes::visitPrecedingSiblings(const Item& from, Visit visit) {
  if (!from.isElement()) return true;
  const Children siblings = siblingsOf(*from.element);
  for (size_t i = std::min(indexOf(*from.element, siblings), siblings.size()); i-- > 0;) {
    if (!visit({siblings[i]})) return false;
  }
  return true;
}

bool Axes::visitSubtree(const iNode& element, Visit visit) {
  if (!visit({&element})) return false;
  std::vector<Children> open{element.getChildren()};
  while (!open.empty()) {
    Children& children = open.back();
    if (children.empty()) {
      open.pop_back();
      continue;
    }
    const iNode* child = children.front();
    children = children.subspan(1);
    if (!visit({child})) return false;
    if (const Children below = child->getChildren(); !below.empty()) open.push_back(below);
  }
  return true;
}

bool Axes::visitSubtreeBackwards(const iNode& element, Visit visit) {
  struct Open {
    const iNode* element;
    Children children;
  };
  std::vector<Open> open{{&element, element.getChildren()}};
  while (!open.empty()) {
    Children& children = open.back().children;
    if (children.empty()) {
      const iNode* finished = open.back().element;
      open.pop_back();
      if (!visit({finished})) return false;
      continue;
    }
    const iNode* child = children.back();
    children = children.first(children.size() - 1);
    open.push_back({child, child->getChildren()});
  }
  return true;
}

Children Axes::siblingsOf(const iNode& element) const { return tree_.childrenOf(element.findParent()); }

// The size for one that is not among them, which shallow copies of nodes can bring about.
size_t Axes::indexOf(const iNode& element, Children siblings) {
  if (siblings.empty()) return 0;
  Hint& hint =
      hints_[reinterpret_cast<uintptr_t>(siblings.data()) / alignof(std::max_align_t) % hints_.size()];
  if (hint.siblings != siblings.data() || hint.index >= siblings.size()) hint = {siblings.data(), 0};
  const size_t start = hint.index;
  for (size_t i = 0; i < siblings.size(); ++i) {
    // Forwards from the hint and backwards by turns: walks go either way.
    const size_t after = start + i, before = start - i - 1;
    const bool isAfter = after < siblings.size() && siblings[after] == &element;
    if (!isAfter && !(before < siblings.size() && siblings[before] == &element)) continue;
    allowance_.spend(i);
    return hint.index = isAfter ? after : before;
  }
  allowance_.spend(siblings.size());
  return siblings.size();
}

}  // namespace tovin::xpath
